// The Advanced panel: page order, OPI, pages to print and the TPIF ticket.
#include "panels/advanced/advanced-dialogs.h"
#include "panels/advanced/advanced-settings.h"
#include "panels/panel-module.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPointer>
#include <QPushButton>

namespace talmo::advanced {

namespace {

const panels::PanelDescription kPanel{"AdvancedPanel", "AdvancedPanel", "com.talmo.print.pde.advancedkind"};

constexpr uint32_t kAdvancedSignature = FourCC("Advn");

enum ControlNumber : int {
    kBookletOrderControl = 1,
    kRotationControl,
    kOutputOrderControl,
    kOPISubstitutionControl,
    kOPIPrescanControl,
    kPagesToPrintControl,
    kFromPageControl,
    kToPageControl,
    kEmitTPIFControl,
    kImportControl,
    kExportControl,
    kAboutControl,
};

// The popups in control order, with their maps and the field each one shows.
struct PopupControl {
    int number;
    const SettingMap* map;
    int32_t AdvancedSettings::*field;
};
const PopupControl kPopups[] = {
    {kBookletOrderControl, _BookletLayoutOrderMap, &AdvancedSettings::bookletOrder},
    {kRotationControl, _RotateImage180Map, &AdvancedSettings::rotation},
    {kOutputOrderControl, _OutputOrderMap, &AdvancedSettings::outputOrder},
    {kOPISubstitutionControl, _OPISubstitutionMap, &AdvancedSettings::opiSubstitution},
    {kOPIPrescanControl, _OPIPrescanMap, &AdvancedSettings::opiPrescan},
    {kPagesToPrintControl, _PagesToPrintMap, &AdvancedSettings::pagesToPrint},
};
constexpr size_t kPopupCount = std::size(kPopups);

struct AdvancedContext : panels::PanelContext {
    AdvancedSettings settings;
    QPointer<QComboBox> popups[kPopupCount];
    QPointer<SpinControl> fromPage;
    QPointer<SpinControl> toPage;
    QPointer<QCheckBox> emitTPIF;

    bool built() const
    {
        for (const auto& popup : popups)
            if (!popup)
                return false;
        return fromPage && toPage && emitTPIF;
    }
};

AdvancedContext* asContext(PMPDEContext context)
{
    return static_cast<AdvancedContext*>(static_cast<panels::PanelContext*>(context));
}

panels::PanelContext* makeContext() { return new (std::nothrow) AdvancedContext; }

void enableRange(AdvancedContext* c)
{
    const bool range = GetPopupButtonTicketValue(c->popups[kPagesToPrintControl - 1]) == kPagesRange;
    c->fromPage->setEnabled(range);
    c->toPage->setEnabled(range);
}

// Controls to context. A "to" page before the "from" page is read as the single "from" page.
void saveControls(AdvancedContext* c)
{
    if (!c->built())
        return;
    for (size_t i = 0; i < kPopupCount; ++i)
        c->settings.*kPopups[i].field = GetPopupButtonTicketValue(c->popups[i]);
    if (c->settings.pagesToPrint == kNotSet)
        c->settings.pagesToPrint = kPagesAll;
    c->settings.fromPage = c->fromPage->value();
    c->settings.toPage = std::max(c->toPage->value(), c->settings.fromPage);
    c->settings.emitTPIF = c->emitTPIF->isChecked();
}

void showSettings(AdvancedContext* c)
{
    if (!c->built())
        return;
    for (size_t i = 0; i < kPopupCount; ++i)
        SetPopupButtonToTicketValue(c->popups[i], c->settings.*kPopups[i].field);
    c->fromPage->setValue(c->settings.fromPage);
    c->toPage->setValue(c->settings.toPage);
    c->emitTPIF->setChecked(c->settings.emitTPIF);
    enableRange(c);
}

// The three buttons send their commands to the window, where the panel's handler runs them
// (so a host can send them too). The bundle is looked up each time: the panel may outlive the
// one it was built with.
constexpr uint32_t kImportCommand = FourCC("TPim");
constexpr uint32_t kExportCommand = FourCC("TPex");
constexpr uint32_t kAboutCommand = FourCC("Abou");

bool AdvancedEventHandler(AdvancedContext* c, uint32_t command)
{
    const Bundle* bundle = ExtensionBundle();
    if (!bundle || !c->content)
        return false;
    switch (command) {
    case kImportCommand:
        RunModalTPIFImportDialog(*bundle, c->session, {}, c->content);
        return true;
    case kExportCommand:
        RunModalTPIFExportDialog(*bundle, c->session, {}, c->content);
        return true;
    case kAboutCommand:
        RunModalAboutDialog(*bundle, c->session, c->content);
        return true;
    default:
        return false;
    }
}

void watchWindow(AdvancedContext* c)
{
    if (c && c->content)
        InstallCommandHandler(c->content->window(), c->content,
                              [c](uint32_t command) { return AdvancedEventHandler(c, command); });
}

void connectCommands(AdvancedContext* c)
{
    for (auto [number, command] :
         {std::pair{kImportControl, kImportCommand}, {kExportControl, kExportCommand}, {kAboutControl, kAboutCommand}})
        if (auto* button = GetControlByID<QPushButton>(c->content, {kAdvancedSignature, number}))
            ConnectCommand(button, command);
    watchWindow(c);
}

QString localized(const char* key)
{
    const Bundle* bundle = ExtensionBundle();
    return bundle ? QString::fromStdString(bundle->localizedString(key)) : QString::fromUtf8(key);
}

OSStatus Prologue(PMPDEContext* context, OSType* creator, std::string* kind, std::string* title, uint32_t* maxH,
                  uint32_t* maxV)
{
    return panels::PanelPrologue(kPanel, context, creator, kind, title, maxH, maxV, &makeContext);
}

OSStatus Initialize(PMPDEContext context, PMPDEFlags*, PMPDERef, ControlRef pane, PMPrintSession session)
{
    const OSStatus status = panels::PanelInitialize(context, pane, session);
    AdvancedContext* c = asContext(context);
    const Bundle* bundle = ExtensionBundle();
    if (status != noErr || !c->content || !bundle)
        return status;
    QWidget* root = c->content;
    for (size_t i = 0; i < kPopupCount; ++i)
        if ((c->popups[i] = GetControlByID<QComboBox>(root, {kAdvancedSignature, kPopups[i].number})))
            PopulatePopupButtonFromMap(*bundle, c->popups[i], kPopups[i].map, kJobContextJob, 0);
    c->fromPage = AdoptControl<SpinControl>(root, {kAdvancedSignature, kFromPageControl});
    c->toPage = AdoptControl<SpinControl>(root, {kAdvancedSignature, kToPageControl});
    c->emitTPIF = GetControlByID<QCheckBox>(root, {kAdvancedSignature, kEmitTPIFControl});
    if (!c->built())
        return kPMNoContext;
    for (SpinControl* spin : {c->fromPage.data(), c->toPage.data()})
        spin->setRange(kFirstPage, kLastPage);
    QObject::connect(c->popups[kPagesToPrintControl - 1], &QComboBox::currentIndexChanged, c->content,
                     [c] { enableRange(c); });
    connectCommands(c);
    showSettings(c);
    return noErr;
}

OSStatus Sync(PMPDEContext context, PMPrintSession session, bool reinitializePlugIn)
{
    AdvancedContext* c = asContext(context);
    Ticket* ticket = nullptr;
    if (const OSStatus status = panels::PanelSyncTicket(context, session, reinitializePlugIn, &ticket); status != noErr)
        return status;
    if (!ticket)
        return noErr; // nothing to read or write
    if (reinitializePlugIn) {
        c->settings = ReadAdvancedSettings(ticket);
        showSettings(c);
        return noErr;
    }
    saveControls(c);
    return WriteAdvancedSettings(c->settings, ticket);
}

OSStatus GetSummaryText(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray)
{
    AdvancedContext* c = asContext(context);
    if (!c)
        return kPMNoContext;
    if (!titleArray || !summaryArray)
        return paramErr;
    saveControls(c);
    panels::MakeSummaryArrays(titleArray, summaryArray);
    for (auto& [title, text] :
         AdvancedSummary(c->settings, [](const char* key) { return localized(key).toStdString(); }))
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

} // namespace talmo::advanced

TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetAdvancedPanelInterface(talmo::PlugInIntf** intf)
{
    return talmo::advanced::CreatePanelInterface(intf);
}
