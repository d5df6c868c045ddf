// The About dialog: what the extension is and which printer it talks to.
#include "panels/advanced/advanced-dialogs.h"

#include "device/device.h"
#include "paperlib/paperlib.h"

#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

namespace talmo::advanced {

namespace {
constexpr char kMakeAndModelKey[] = "com.apple.print.PrinterInfo.PMMakeAndModelName";
QString text(const Bundle& bundle, const char* key, FormatArgs args = {}) { return LocalizedText(bundle, key, args); }

// The printer's own web page: what the printer told the paper list fetch, else what its CUPS
// queue says (the queue's page on the print server, which at least links to the printer). Only a
// web address is opened; a printer decides what it sends.
QUrl printerPage(const PrintSession& session)
{
    std::string page;
    if (auto host = PrinterHostFromDeviceURI(session.printer().deviceURI))
        page = PrinterMoreInfoURI(*host).value_or("");
    if (page.empty())
        page = session.printer().moreInfoURI;
    const QUrl url(QString::fromStdString(page), QUrl::StrictMode);
    const bool web = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return url.isValid() && web && !url.host().isEmpty() ? url : QUrl();
}

QWidget* mimicWidget(const QPixmap& picture, const QUrl& page)
{
    if (page.isEmpty()) {
        auto* label = new QLabel;
        label->setPixmap(picture);
        return label;
    }
    auto* link = new QToolButton;
    link->setIcon(QIcon(picture));
    link->setIconSize(picture.deviceIndependentSize().toSize());
    link->setAutoRaise(true);
    link->setCursor(Qt::PointingHandCursor);
    const QString address = page.toDisplayString();
    link->setToolTip(address);
    link->setAccessibleName(address);
    QObject::connect(link, &QToolButton::clicked, link, [page] { QDesktopServices::openUrl(page); });
    return link;
}
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
            QWidget* mimic =
                mimicWidget(QPixmap(QString::fromStdString(*file)), session ? printerPage(*session) : QUrl());
            mimic->setObjectName("mimic");
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
