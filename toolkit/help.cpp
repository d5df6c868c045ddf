#include "toolkit/help.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QRegularExpression>
#include <QTextBrowser>
#include <QUrl>

#include <map>

namespace talmo {

namespace {

// Book name -> its folder, as registered.
std::map<QString, QString>& registeredBooks()
{
    static std::map<QString, QString> books;
    return books;
}

std::optional<QString> helpBookName(const Bundle& bundle)
{
    auto name = pl::as<pl::String>(bundle.infoDictionary()->get("CFBundleHelpBookName"));
    if (!name)
        return std::nullopt;
    return QString::fromStdString(name->text);
}

QString helpBookFolder(const Bundle& bundle)
{
    auto folder = pl::as<pl::String>(bundle.infoDictionary()->get("CFBundleHelpBookFolder"));
    auto path = bundle.resourcePath(folder ? folder->text : "help");
    return path ? QString::fromStdString(*path) : QString();
}

bool pageHasAnchor(const QString& file, const QString& anchor)
{
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return false;
    const QString text = QString::fromUtf8(f.read(1 << 20));
    const QString quoted = QRegularExpression::escape(anchor);
    return text.contains(QRegularExpression("(id|name)=\"" + quoted + "\""));
}

QTextBrowser* helpWindow(const QString& title)
{
    static QPointer<QTextBrowser> window;
    if (!window) {
        window = new QTextBrowser;
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->setOpenExternalLinks(true);
        window->resize(640, 560);
    }
    window->setWindowTitle(title);
    return window;
}

} // namespace

OSStatus RegisterHelpBook(const Bundle& bundle)
{
    auto name = helpBookName(bundle);
    if (!name)
        return paramErr;
    const QString folder = helpBookFolder(bundle);
    if (folder.isEmpty())
        return kHelpFileNotFoundErr;
    registeredBooks()[*name] = folder;
    return noErr;
}

OSStatus DisplayHelp(const Bundle& bundle, const QString& page, const QString& anchor)
{
    auto name = helpBookName(bundle);
    if (!name)
        return paramErr;
    auto registered = registeredBooks().find(*name);
    const QString folder = registered != registeredBooks().end() ? registered->second : helpBookFolder(bundle);
    if (folder.isEmpty())
        return kHelpFileNotFoundErr;
    const QDir book(folder);
    QString file;
    if (page.isEmpty() && !anchor.isEmpty()) {
        for (const QString& candidate : book.entryList({"*.html", "*.htm"}, QDir::Files, QDir::Name))
            if (pageHasAnchor(book.filePath(candidate), anchor)) {
                file = book.filePath(candidate);
                break;
            }
    } else {
        // Pages are named relative to the book; nothing outside it is shown.
        const QString wanted = QDir::cleanPath(book.filePath(page.isEmpty() ? QString("index.html") : page));
        if (wanted.startsWith(book.absolutePath() + '/'))
            file = wanted;
    }
    if (file.isEmpty() || !QFile::exists(file))
        return kHelpFileNotFoundErr;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return paramErr;
    QUrl url = QUrl::fromLocalFile(file);
    if (!anchor.isEmpty())
        url.setFragment(anchor);
    QTextBrowser* window = helpWindow(*name);
    window->setSource(url);
    window->show();
    window->raise();
    return noErr;
}

} // namespace talmo
