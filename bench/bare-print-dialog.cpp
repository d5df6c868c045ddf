// The yardstick for the dialog host: a Qt program that shows a bare print dialog and closes it.
#include <QApplication>
#include <QPrintDialog>
#include <QPrinter>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QPrinter printer;
    QPrintDialog dialog(&printer);
    dialog.show();
    QApplication::processEvents();
    dialog.close();
    return 0;
}
