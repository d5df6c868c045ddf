// The About dialog: what the extension is and which printer it talks to.
#include "panels/advanced/advanced-dialogs.h"

#include "device/device.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace talmo::advanced {

namespace {
constexpr char kMakeAndModelKey[] = "com.apple.print.PrinterInfo.PMMakeAndModelName";
QString text(const Bundle& bundle, const char* key, FormatArgs args = {}) { return LocalizedText(bundle, key, args); }
} // namespace

OSStatus RunModalAboutDialog(const Bundle& bundle, PrintSession* session, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setObjectName("About");
    dialog.setWindowTitle(text(bundle, "AboutTitle"));
    auto* layout = new QVBoxLayout(&dialog);

    std::string model;
    if (session)
        TicketGetString(&session->printerInfo(), kMakeAndModelKey, &model);
    const char* picture = session == GetCurrentPrintSession() ? CopyDeviceMimicFilename() : nullptr;
    if (!picture && !model.empty())
        picture = DeviceMimicFilenameForModel(model);
    if (picture)
        if (auto file = bundle.resourcePath(picture)) {
            // The printer record carries no information page, so the picture is not a link.
            auto* mimic = new QLabel;
            mimic->setObjectName("mimic");
            mimic->setPixmap(QPixmap(QString::fromStdString(*file)));
            layout->addWidget(mimic, 0, Qt::AlignHCenter);
        }

    std::string version;
    if (auto info = bundle.infoDictionary())
        version = info->getString("CFBundleShortVersionString").value_or("");
    auto* versionLabel = new QLabel(text(bundle, "AboutVersion", {version}));
    versionLabel->setObjectName("version");
    layout->addWidget(versionLabel);
    auto* modelLabel =
        new QLabel(model.empty() ? text(bundle, "AboutNoPrinterModel") : text(bundle, "AboutPrinterModel", {model}));
    modelLabel->setObjectName("model");
    layout->addWidget(modelLabel);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    buttons->button(QDialogButtonBox::Ok)->setText(text(bundle, "OK"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    layout->addWidget(buttons);
    dialog.exec();
    return noErr;
}

} // namespace talmo::advanced
