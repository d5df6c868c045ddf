// The Booklet and Watermark panel: the watermark menu with its preview, and the booklet
// settings that the booklet switch of Paper/Output leaves to this panel.
#include "panels/bookletwatermark/bookletwatermark-settings.h"
#include "panels/bookletwatermark/watermark-editor.h"
#include "panels/panel-module.h"
#include "toolkit/toolkit.h"

#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>

#include <cstdio>

namespace talmo::bookletwatermark {

namespace {

const panels::PanelDescription kPanel{"BookletWatermarkPanel", "BookletWatermarkPanel",
                                      "com.talmo.print.pde.bookletwatermarkkind"};

constexpr uint32_t kSignature = FourCC("BWmk");
constexpr int32_t kOptionsReference = -6;
constexpr int32_t kNewReference = -7;
constexpr int32_t kEditReference = -8;
constexpr int32_t kDeleteReference = -9;

enum ControlNumber : int {
    kWatermarkControl = 1,
    kPreviewControl,
    kGutterControl,
    kCreepControl,
    kOutlinesControl,
    kForceNewSizeControl,
};

struct BookletWatermarkContext : panels::PanelContext {
    BookletWatermarkSettings settings;
    PaperSize paper; // the job's, for the previews
    WatermarkMenu menu;
    QPointer<QPushButton> watermark;
    QPointer<QLabel> preview;
    QPointer<QSpinBox> gutter;
    QPointer<QSpinBox> creep;
    QPointer<QCheckBox> outlines;
    QPointer<QCheckBox> forceNewSize;

    bool built() const { return watermark && preview && gutter && creep && outlines && forceNewSize; }
};

BookletWatermarkContext* asContext(PMPDEContext context)
{
    return static_cast<BookletWatermarkContext*>(static_cast<panels::PanelContext*>(context));
}

panels::PanelContext* makeContext() { return new (std::nothrow) BookletWatermarkContext; }

std::string localized(std::string_view key)
{
    const Bundle* bundle = ExtensionBundle();
    return bundle ? bundle->localizedString(key) : std::string(key);
}

void showPreview(BookletWatermarkContext* c)
{
    const int frame = c->preview->frameWidth();
    const QSize size = c->preview->minimumSize() - QSize(2 * frame, 2 * frame);
    QImage page(size, QImage::Format_ARGB32_Premultiplied);
    RenderWatermarkPreview(c->settings, c->paper.width, c->paper.height, page.bits(), page.width(), page.height());
    c->preview->setPixmap(QPixmap::fromImage(page));
}

void showSettings(BookletWatermarkContext* c);

// "New...", "Edit..." and "Delete"; the last two act on the chosen watermark.
void runEditorCommand(BookletWatermarkContext* c, int32_t reference)
{
    const Bundle* bundle = ExtensionBundle();
    if (!bundle)
        return;
    if (reference == kDeleteReference) {
        if (ConfirmAndDeleteWatermark(*bundle, c->settings.watermark, c->watermark->window()))
            c->settings.watermark.clear();
    } else {
        const std::string original = reference == kEditReference ? c->settings.watermark : std::string();
        std::string saved;
        if (RunModalWatermarkEditorDialog(*bundle, original, c->paper.width, c->paper.height, &saved,
                                          c->watermark->window()) == noErr)
            c->settings.watermark = saved;
    }
    showSettings(c);
}

bool BookletWatermarkEventHandler(BookletWatermarkContext* c, uint32_t command)
{
    if (!c->built())
        return false;
    int32_t reference = 0; // the menu rows of _WatermarkMap that carry these commands
    switch (command) {
    case FourCC("TWmN"):
        reference = kNewReference;
        break;
    case FourCC("TWmE"):
        reference = kEditReference;
        break;
    case FourCC("TWmD"):
        reference = kDeleteReference;
        break;
    default:
        return false;
    }
    if (reference == kNewReference || !c->settings.watermark.empty())
        runEditorCommand(c, reference);
    return true;
}

void watchWindow(BookletWatermarkContext* c)
{
    if (c && c->content)
        InstallCommandHandler(c->content->window(), c->content,
                              [c](uint32_t command) { return BookletWatermarkEventHandler(c, command); });
}

// The menu is rebuilt on every change so that its check marks follow the settings.
void buildMenu(BookletWatermarkContext* c)
{
    PopulateWatermarkMenuFromMapAndHistory(localized, c->menu, _WatermarkMap);
    const WatermarkMenuMarks marks = MarkWatermarkMenu(c->menu, c->settings);
    auto* menu = new QMenu(c->watermark);
    if (QMenu* old = c->watermark->menu())
        old->deleteLater();
    size_t option = 0;
    for (size_t i = 0; i < c->menu.items.size(); ++i) {
        const WatermarkMenuItem& item = c->menu.items[i];
        if (item.separator) {
            menu->addSeparator();
            continue;
        }
        if (item.reference == kOptionsReference) {
            QMenu* sub = menu->addMenu(QString::fromStdString(item.label));
            for (const WatermarkMenuItem& row : item.submenu) {
                const bool checked = option < marks.options.size() && marks.options[option++];
                if (row.separator) {
                    sub->addSeparator();
                    continue;
                }
                QAction* action = sub->addAction(QString::fromStdString(row.label));
                action->setCheckable(true);
                action->setChecked(checked);
                const int32_t value = row.reference;
                QObject::connect(action, &QAction::triggered, c->watermark, [c, value] {
                    if (value == kWatermarkAllPages || value == kWatermarkFirstPage)
                        c->settings.firstPageOnly = value == kWatermarkFirstPage;
                    else
                        c->settings.option = value;
                    showSettings(c);
                });
            }
            continue;
        }
        const QString label = QString::fromStdString(item.label);
        const bool edits =
            item.reference == kNewReference || item.reference == kEditReference || item.reference == kDeleteReference;
        // "New...", "Edit..." and "Delete" send their commands to the window's handler.
        QAction* action = edits ? CommandAction(label, item.command, c->watermark->window()) : new QAction(label);
        action->setParent(menu); // goes with the menu
        menu->addAction(action);
        const bool chooses = item.command == kWatermarkNameCommand || item.command == FourCC("TWmX");
        action->setCheckable(chooses);
        action->setChecked(marks.items[i]);
        if (!chooses) {
            if (item.reference == kEditReference || item.reference == kDeleteReference)
                action->setEnabled(!c->settings.watermark.empty());
            continue;
        }
        const std::string name = item.command == kWatermarkNameCommand ? item.label : std::string();
        QObject::connect(action, &QAction::triggered, c->watermark, [c, name] {
            c->settings.watermark = name;
            showSettings(c);
        });
    }
    c->watermark->setMenu(menu);
}

void showSettings(BookletWatermarkContext* c)
{
    if (!c->built())
        return;
    const std::string& name = c->settings.watermark;
    c->watermark->setText(QString::fromStdString(name.empty() ? localized("NoWatermark") : name));
    buildMenu(c);
    c->gutter->setValue(c->settings.gutter);
    c->creep->setValue(c->settings.creep);
    c->outlines->setChecked(c->settings.drawOutlines);
    c->forceNewSize->setChecked(c->settings.forceNewSize);
    showPreview(c);
}

void saveControls(BookletWatermarkContext* c)
{
    if (!c->built())
        return;
    c->settings.gutter = c->gutter->value();
    c->settings.creep = c->creep->value();
    c->settings.drawOutlines = c->outlines->isChecked();
    c->settings.forceNewSize = c->forceNewSize->isChecked();
}

OSStatus Prologue(PMPDEContext* context, OSType* creator, std::string* kind, std::string* title, uint32_t* maxH,
                  uint32_t* maxV)
{
    return panels::PanelPrologue(kPanel, context, creator, kind, title, maxH, maxV, &makeContext);
}

OSStatus Initialize(PMPDEContext context, PMPDEFlags*, PMPDERef, ControlRef pane, PMPrintSession session)
{
    const OSStatus status = panels::PanelInitialize(context, pane, session);
    BookletWatermarkContext* c = asContext(context);
    if (status != noErr || !c->content)
        return status;
    QWidget* root = c->content;
    c->watermark = GetControlByID<QPushButton>(root, {kSignature, kWatermarkControl});
    c->preview = GetControlByID<QLabel>(root, {kSignature, kPreviewControl});
    c->gutter = GetControlByID<QSpinBox>(root, {kSignature, kGutterControl});
    c->creep = GetControlByID<QSpinBox>(root, {kSignature, kCreepControl});
    c->outlines = GetControlByID<QCheckBox>(root, {kSignature, kOutlinesControl});
    c->forceNewSize = GetControlByID<QCheckBox>(root, {kSignature, kForceNewSizeControl});
    if (!c->built())
        return kPMNoContext;
    const QString points = QString::fromStdString(" " + localized("BWPoints"));
    c->gutter->setRange(0, kMaxGutter);
    c->creep->setRange(0, kMaxCreep);
    for (QSpinBox* spin : {c->gutter.data(), c->creep.data()})
        spin->setSuffix(points);
    watchWindow(c);
    LoadWatermarkListWithDefaults(localized);
    Ticket* ticket = nullptr;
    if (session && GetTicketFromSession(session, kPMPrintSettingsTicket, &ticket) == noErr && ticket)
        c->paper = PreviewPaperSize(ticket);
    showSettings(c);
    return noErr;
}

OSStatus Sync(PMPDEContext context, PMPrintSession session, bool reinitializePlugIn)
{
    BookletWatermarkContext* c = asContext(context);
    Ticket* ticket = nullptr;
    if (const OSStatus status = panels::PanelSyncTicket(context, session, reinitializePlugIn, &ticket); status != noErr)
        return status;
    if (!ticket)
        return noErr; // nothing to read or write
    if (reinitializePlugIn) {
        c->settings = ReadBookletWatermarkSettings(ticket);
        c->paper = PreviewPaperSize(ticket);
        showSettings(c);
        return noErr;
    }
    saveControls(c);
    const OSStatus status = WriteBookletWatermarkSettings(c->settings, ticket);
    // A missing font leaves the job printable with the printer's own substitute.
    std::string why;
    if (!c->settings.watermark.empty() && !ConvertChosenWatermarkFont(c->settings, &why) && !why.empty())
        std::fprintf(stderr, "BookletWatermarkPanel: %s\n", why.c_str());
    return status;
}

OSStatus GetSummaryText(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray)
{
    BookletWatermarkContext* c = asContext(context);
    if (!c)
        return kPMNoContext;
    if (!titleArray || !summaryArray)
        return paramErr;
    saveControls(c);
    panels::MakeSummaryArrays(titleArray, summaryArray);
    for (auto& [title, text] : BookletWatermarkSummary(c->settings, [](const char* key) { return localized(key); }))
        panels::AppendSummaryLine(titleArray, summaryArray, std::move(title), std::move(text));
    return noErr;
}

// The host moves the panel into its dialog on the first Open; the handler follows it there.
OSStatus Open(PMPDEContext context)
{
    const OSStatus status = panels::PanelOpen(context);
    if (status == noErr)
        watchWindow(asContext(context));
    return status;
}

OSStatus Terminate(PMPDEContext context, OSStatus) { return panels::PanelTerminate(context); }

} // namespace

OSStatus CreatePanelInterface(PlugInIntf** intf)
{
    return panels::MakePanelInterface(intf, {nullptr, nullptr, nullptr, &Prologue, &Initialize, &Sync, &GetSummaryText,
                                             &Open, &panels::PanelClose, &Terminate});
}

} // namespace talmo::bookletwatermark

TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetBookletWatermarkPanelInterface(talmo::PlugInIntf** intf)
{
    return talmo::bookletwatermark::CreatePanelInterface(intf);
}
