// The Paper/Output panel: job paper, two-sided printing, finishing with its summary, output
// colour and destination, offset and slip sheets, job type and the booklet layout switch.
#include "device/device.h"
#include "panels/dialogs/job-type-dialogs.h"
#include "panels/dialogs/named-paper-dialog.h"
#include "panels/dialogs/stock-dialogs.h"
#include "panels/dialogs/stock-popup.h"
#include "panels/panel-module.h"
#include "panels/paperoutput/paperoutput-dialogs.h"
#include "panels/paperoutput/paperoutput-finishing.h"
#include "ticket/ticket.h"
#include "toolkit/toolkit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>

namespace talmo::paperoutput {

namespace {

const panels::PanelDescription kPanel{"PaperOutputPanel", "PaperOutputPanel", "com.talmo.print.pde.paperoutputkind"};

constexpr uint32_t kSignature = FourCC("POut");

enum ControlNumber : int {
    kPaperControl = 1,
    kSidesControl = 3,
    kSidesPictureControl,
    kFinishingControl,
    kFinishingSummaryControl,
    kBookletControl,
    kBookletPictureControl,
    kColorControl,
    kDestinationControl,
    kOffsetControl,
    kSlipSheetControl,
    kJobTypeControl,
    kSetupControl,
};

// Offset values as "com.talmo.print.FinishingOffset" stores them; 1 is the printer's default.
const SettingMap kOffsetMap[] = {
    {"PrinterDefault", kOffsetPrinterDefault, 0, nullptr, false},
    {"None", 2, 0, nullptr, false},
    {"OffsetEachSet", 3, 0, nullptr, false},
    {"OffsetEachSubset", 4, 0, nullptr, false},
    {"OffsetEachSetSubset", 5, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

// The finishing menu in order; 0 is a separator. Items with a dialog end in "...".
struct FinishingItem {
    uint32_t command;
    const char* key;
};
constexpr FinishingItem kFinishingMenu[] = {
    {kCmdPrinterDefault, "PrinterDefault"},
    {kCmdNone, "None"},
    {0, nullptr},
    {kCmdOneStaple, "POMenuOneStaple"},
    {kCmdTwoStaples, "POMenuTwoStaples"},
    {kCmdCenterStaple, "POMenuCenterStaple"},
    {kCmdHolePunch2, "POMenuHolePunch2"},
    {kCmdHolePunch3, "POMenuHolePunch3"},
    {kCmdHolePunch4, "POMenuHolePunch4"},
    {kCmdMultiple, "POMenuMultiple"},
    {0, nullptr},
    {kCmdFold, "POMenuFold"},
    {kCmdZFold, "POMenuZFold"},
    {kCmdBind, "POMenuBind"},
    {kCmdBookletCreation, "POMenuBookletCreation"},
    {kCmdSignatureBooklet, "SignatureBooklet"},
    {kCmdCustom, "POMenuCustom"},
    {0, nullptr},
    {kCmdSlipSheet, "SlipSheet"},
    {kCmdOffset, "POMenuOffset"},
};

struct PaperOutputContext : panels::PanelContext {
    PaperOutputSettings settings;
    QPointer<StockPopup> paper;
    QPointer<QComboBox> sides;
    QPointer<QLabel> sidesPicture;
    QPointer<QPushButton> finishing;
    QPointer<QLabel> finishingSummary;
    QPointer<QCheckBox> booklet;
    QPointer<QLabel> bookletPicture;
    QPointer<QComboBox> color;
    QPointer<QComboBox> destination;
    QPointer<QComboBox> offset;
    QPointer<QCheckBox> slipSheet;
    QPointer<QComboBox> jobType;
    QPointer<QPushButton> setup;
    // The library dialog's view of the job: the printer's list, and the papers marked in use
    // (kept here while the dialog runs).
    std::shared_ptr<PrinterPaperFetcher> fetcher;
    Stock libraryJobStock;
    std::vector<Stock> libraryPageStocks;

    bool built() const
    {
        return paper && sides && sidesPicture && finishing && finishingSummary && booklet && bookletPicture && color &&
               destination && offset && slipSheet && jobType && setup;
    }
};

PaperOutputContext* asContext(PMPDEContext context)
{
    return static_cast<PaperOutputContext*>(static_cast<panels::PanelContext*>(context));
}

panels::PanelContext* makeContext() { return new (std::nothrow) PaperOutputContext; }

std::string localized(std::string_view key)
{
    const Bundle* bundle = ExtensionBundle();
    return bundle ? bundle->localizedString(key) : std::string(key);
}

QPixmap picture(const char* name)
{
    const Bundle* bundle = ExtensionBundle();
    const auto path = bundle ? bundle->resourcePath(name) : std::nullopt;
    return path ? QPixmap(QString::fromStdString(*path)) : QPixmap();
}

InstalledOptionsSource installedOptions()
{
    return {[](std::string_view f) { return getInstalledFeature(f); },
            [](std::string_view f) { return getInstallableOptionTicketValue(f); },
            [](std::string_view f) { return CopyLocalizedStringForInstalledFeatureFromPlugin(f, ExtensionBundle()); },
            [](std::string_view option) {
                std::string choice;
                return getInstallableOptionValue(option, &choice) ? choice : std::string();
            }};
}

std::string stockSummary(const PaperOutputSettings& s)
{
    const Bundle* bundle = ExtensionBundle();
    if (!s.jobLevelStock || !bundle)
        return {};
    return GenerateStockSummary(MakeStockTextSource(*bundle), kJobContextJob, Stock(s.jobLevelStock), ", ");
}

// What the library dialog marks as in use: the job's paper, then the inserts', the exception
// ranges' and the covers' papers as the ticket holds them.
NamedPaperDialogSources librarySources(PaperOutputContext* c)
{
    c->libraryJobStock = c->paper->stock();
    c->libraryPageStocks.clear();
    Ticket* ticket = nullptr;
    if (c->session && GetTicketFromSession(c->session, kPMPrintSettingsTicket, &ticket) == noErr && ticket) {
        auto addStock = [c](const pl::ValuePtr& page) {
            if (auto dict = pl::as<pl::Dictionary>(page))
                c->libraryPageStocks.emplace_back(dict->getDict("Stock"));
        };
        for (const char* key : {kSpecialPagesInsertListKey, kSpecialPagesExceptionListKey})
            if (auto list = pl::as<pl::Array>(ticket->get(key)))
                for (const pl::ValuePtr& page : *list)
                    addStock(page);
        for (const char* key : {kSpecialPagesFrontCoverKey, kSpecialPagesBackCoverKey})
            addStock(ticket->get(key));
    }
    NamedPaperDialogSources sources;
    sources.jobStock = &c->libraryJobStock;
    for (const Stock& stock : c->libraryPageStocks)
        sources.pageStocks.push_back(&stock);
    AttachPrinterPapers(c->fetcher, sources);
    return sources;
}

// A popup shows the stored value, or its printer-default row while the key is absent.
void showPopupValue(QComboBox* popup, int32_t value, int32_t printerDefault = kNotSet)
{
    const QSignalBlocker hold(popup);
    if (!SetPopupButtonToTicketValue(popup, value == kNotSet ? printerDefault : value))
        popup->setCurrentIndex(-1);
}

// A stored tray this printer does not offer (an imported ticket's) is shown by its number
// rather than as an empty pop-up.
void showDestination(PaperOutputContext* c)
{
    const QSignalBlocker hold(c->destination.data());
    const int32_t value = c->settings.outputDestination;
    if (c->destination->findData(value) < 0) {
        const Bundle* bundle = ExtensionBundle();
        c->destination->addItem(bundle ? LocalizedText(*bundle, "PODestinationOther", {value}) : QString::number(value),
                                value);
    }
    c->destination->setCurrentIndex(c->destination->findData(value));
}

void rebuildDestinations(PaperOutputContext* c)
{
    const QSignalBlocker hold(c->destination.data());
    c->destination->clear();
    for (const MenuEntry& e : BuildOutputDestinationMenu(installedOptions(), localized))
        c->destination->addItem(QString::fromStdString(e.label), e.value);
    showDestination(c);
}

void showSettings(PaperOutputContext* c);

void runFinishingCommand(PaperOutputContext* c, uint32_t command)
{
    PaperOutputSettings& s = c->settings;
    const Bundle* bundle = ExtensionBundle();
    switch (command) {
    case kCmdPrinterDefault:
        ChooseFinishing(s, kFinishingPrinterDefault);
        break;
    case kCmdNone:
        ChooseFinishing(s, kFinishingNone);
        break;
    case kCmdSignatureBooklet:
        ChooseFinishing(s, kFinishingSignatureBooklet);
        break;
    case kCmdSlipSheet:
        s.slipSheet = s.slipSheet == kSlipSheetOn ? kSlipSheetOff : kSlipSheetOn;
        break;
    case kCmdOffset:
        s.offset = FinishingCommandChecked(s, kCmdOffset) ? kOffsetPrinterDefault : kOffsetEachSet;
        break;
    default:
        if (bundle)
            RunModalFinishingDialog(*bundle, command, s, nullptr, c->finishing->window());
        break;
    }
    showSettings(c);
}

// The menu is rebuilt with the settings so that its check marks follow them.
void MarkFinishingMenu(QMenu* menu, const PaperOutputSettings& settings)
{
    for (QAction* action : menu->actions())
        if (const uint32_t command = GetCommand(action))
            action->setChecked(FinishingCommandChecked(settings, command));
}

void buildFinishingMenu(PaperOutputContext* c)
{
    auto* menu = new QMenu(c->finishing);
    for (const FinishingItem& item : kFinishingMenu) {
        if (!item.command) {
            menu->addSeparator();
            continue;
        }
        QAction* action = CommandAction(QString::fromStdString(localized(item.key)), item.command, c->finishing);
        action->setCheckable(true);
        menu->addAction(action);
        const uint32_t command = item.command;
        // Queued: a dialog opened from here must not run inside the menu's own event loop.
        QObject::connect(
            action, &QAction::triggered, c->finishing, [c, command] { runFinishingCommand(c, command); },
            Qt::QueuedConnection);
    }
    MarkFinishingMenu(menu, c->settings);
    c->finishing->setMenu(menu);
}

void showSettings(PaperOutputContext* c)
{
    if (!c->built())
        return;
    const PaperOutputSettings& s = c->settings;
    {
        const QSignalBlocker hold(c->paper.data());
        c->paper->setStock(Stock(s.jobLevelStock));
    }

    // A booklet is always two-sided: the two-sided popup waits until the booklet is off.
    showPopupValue(c->sides, s.duplex);
    c->sides->setEnabled(!s.bookletOn());
    c->sides->setToolTip(QString::fromStdString(localized(s.bookletOn() ? "POTwoSidedBookletTip" : "POTwoSidedTip")));
    const int32_t sides = GetPopupButtonTicketValue(c->sides);
    c->sidesPicture->setPixmap(picture(sides == 3   ? "2SidedPrinting_2SidedFlip.gif"
                                       : sides == 2 ? "2SidedPrinting_2Sided.gif"
                                                    : "2SidedPrinting_1Sided.gif"));
    c->sidesPicture->setEnabled(sides != kNotSet);

    if (QMenu* menu = c->finishing->menu())
        MarkFinishingMenu(menu, s);
    std::string summary = CreateFinishingString(s, localized);
    if (!summary.empty() && summary.back() == '\n')
        summary.pop_back();
    c->finishingSummary->setText(QString::fromStdString(summary));
    {
        const QSignalBlocker hold(c->booklet.data());
        c->booklet->setChecked(s.bookletOn());
    }
    c->bookletPicture->setEnabled(s.bookletOn());

    showPopupValue(c->color, s.outputColor);
    showDestination(c);
    showPopupValue(c->offset, s.offset, kOffsetPrinterDefault);
    {
        const QSignalBlocker hold(c->slipSheet.data());
        c->slipSheet->setChecked(s.slipSheet == kSlipSheetOn);
    }
    const int32_t type = JobTypeOf(s.jobType);
    {
        const QSignalBlocker hold(c->jobType.data());
        c->jobType->setCurrentIndex(c->jobType->findData(type));
    }
    c->setup->setEnabled(JobTypeHasSetup(type));
    c->setup->setToolTip(QString::fromStdString(localized(JobTypeHasSetup(type) ? "POSetupTip" : "POSetupNoneTip")));
}

void connectControls(PaperOutputContext* c)
{
    QWidget* owner = c->content;
    auto popupChanged = [c, owner](QComboBox* popup, int32_t PaperOutputSettings::*member) {
        QObject::connect(popup, &QComboBox::activated, owner, [c, popup, member] {
            c->settings.*member = GetPopupButtonTicketValue(popup);
            showSettings(c);
        });
    };
    popupChanged(c->sides, &PaperOutputSettings::duplex);
    popupChanged(c->color, &PaperOutputSettings::outputColor);
    popupChanged(c->offset, &PaperOutputSettings::offset);
    QObject::connect(c->destination, &QComboBox::activated, owner, [c] {
        c->settings.outputDestination = c->destination->currentData().toInt();
        showSettings(c);
    });
    // The stock is stored as the user leaves it; an untouched one stays as the ticket had it.
    QObject::connect(c->paper, &StockPopup::stockChanged, owner, [c] {
        c->settings.jobLevelStock = c->paper->stock().asTicket();
        showSettings(c);
    });
    QObject::connect(c->booklet, &QCheckBox::toggled, owner, [c](bool on) {
        if (on) {
            c->settings.bookletLayout = kBookletOn;
            c->settings.duplex = kDuplexLongEdge;
        } else {
            UnselectBooklet(c->settings);
        }
        showSettings(c);
    });
    QObject::connect(c->slipSheet, &QCheckBox::toggled, owner, [c](bool on) {
        c->settings.slipSheet = on ? kSlipSheetOn : kSlipSheetOff;
        showSettings(c);
    });
    QObject::connect(c->jobType, &QComboBox::activated, owner, [c] {
        const int32_t type = c->jobType->currentData().toInt();
        if (c->settings.jobType && type == JobTypeOf(c->settings.jobType))
            return;
        // A new type keeps none of the previous type's settings.
        pl::DictPtr dict = c->settings.jobType ? pl::deepCopy(c->settings.jobType) : pl::makeDict();
        SetJobTypeInDictionary(dict, type);
        c->settings.jobType = dict;
        showSettings(c);
    });
    QObject::connect(c->setup, &QPushButton::clicked, owner, [c] {
        const Bundle* bundle = ExtensionBundle();
        const int32_t type = JobTypeOf(c->settings.jobType);
        if (!bundle)
            return;
        // The dialog edits copies; Cancel leaves the panel's values as they were.
        pl::DictPtr dict = c->settings.jobType ? pl::deepCopy(c->settings.jobType) : pl::makeDict();
        BackgroundFormsOptions forms(c->settings.backgroundForms);
        if (!RunModalJobTypeSetupDialog(c->setup->window(), *bundle, type, dict, forms))
            return;
        c->settings.jobType = dict;
        if (type == kJobTypeBackgroundForms)
            c->settings.backgroundForms = forms.asTicket();
        showSettings(c);
    });
}

void fillPopups(PaperOutputContext* c, const Bundle& bundle)
{
    PopulatePopupButtonFromMap(bundle, c->sides, _PlexMap, kJobContextJob, 0);
    PopulatePopupButtonFromMap(bundle, c->color, _OutputColorMap, kJobContextJob, 0);
    PopulatePopupButtonFromMap(bundle, c->offset, kOffsetMap, kJobContextJob, 0);
    c->jobType->clear();
    for (const JobTypeEntry& e : kJobTypes)
        c->jobType->addItem(QIcon(picture(e.picture)), QString::fromStdString(localized(e.key)), e.value);
    c->bookletPicture->setPixmap(picture("ProductionFinishing_Bklt_Layout.gif"));
    StockCommandDialogs dialogs = MakeStockCommandDialogs(c->content, bundle, nullptr);
    dialogs.library = MakeNamedPaperLibraryCommand(c->content, bundle, [c] { return librarySources(c); });
    c->paper->setDialogs(std::move(dialogs));
}

OSStatus Prologue(PMPDEContext* context, OSType* creator, std::string* kind, std::string* title, uint32_t* maxH,
                  uint32_t* maxV)
{
    return panels::PanelPrologue(kPanel, context, creator, kind, title, maxH, maxV, &makeContext);
}

OSStatus Initialize(PMPDEContext context, PMPDEFlags*, PMPDERef, ControlRef pane, PMPrintSession session)
{
    const OSStatus status = panels::PanelInitialize(context, pane, session);
    PaperOutputContext* c = asContext(context);
    const Bundle* bundle = ExtensionBundle();
    if (status != noErr || !c->content || !bundle)
        return status;
    QWidget* root = c->content;
    auto id = [](int number) { return ControlID{kSignature, number}; };
    c->paper = AdoptStockPopup(root, id(kPaperControl), *bundle, kJobContextJob);
    c->sides = GetControlByID<QComboBox>(root, id(kSidesControl));
    c->sidesPicture = GetControlByID<QLabel>(root, id(kSidesPictureControl));
    c->finishing = GetControlByID<QPushButton>(root, id(kFinishingControl));
    c->finishingSummary = AdoptControl<StaticTextControl>(root, id(kFinishingSummaryControl));
    c->booklet = GetControlByID<QCheckBox>(root, id(kBookletControl));
    c->bookletPicture = GetControlByID<QLabel>(root, id(kBookletPictureControl));
    c->color = GetControlByID<QComboBox>(root, id(kColorControl));
    c->destination = GetControlByID<QComboBox>(root, id(kDestinationControl));
    c->offset = GetControlByID<QComboBox>(root, id(kOffsetControl));
    c->slipSheet = GetControlByID<QCheckBox>(root, id(kSlipSheetControl));
    c->jobType = GetControlByID<QComboBox>(root, id(kJobTypeControl));
    c->setup = GetControlByID<QPushButton>(root, id(kSetupControl));
    if (!c->built())
        return kPMNoContext;
    if (session)
        c->fetcher = PrinterPaperFetcher::forDeviceURI(session->printer().deviceURI);
    fillPopups(c, *bundle);
    buildFinishingMenu(c);
    rebuildDestinations(c);
    connectControls(c);
    Ticket* ticket = nullptr;
    if (session && GetTicketFromSession(session, kPMPrintSettingsTicket, &ticket) == noErr && ticket)
        c->settings = ReadPaperOutputSettings(ticket);
    showSettings(c);
    return noErr;
}

OSStatus Sync(PMPDEContext context, PMPrintSession session, bool reinitializePlugIn)
{
    PaperOutputContext* c = asContext(context);
    Ticket* ticket = nullptr;
    if (const OSStatus status = panels::PanelSyncTicket(context, session, reinitializePlugIn, &ticket); status != noErr)
        return status;
    if (!ticket)
        return noErr; // nothing to read or write
    if (reinitializePlugIn) {
        c->settings = ReadPaperOutputSettings(ticket);
        showSettings(c);
        return noErr;
    }
    return WritePaperOutputSettings(c->settings, ticket);
}

OSStatus GetSummaryText(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray)
{
    PaperOutputContext* c = asContext(context);
    if (!c)
        return kPMNoContext;
    if (!titleArray || !summaryArray)
        return paramErr;
    std::string destination;
    if (c->settings.outputDestination != kNotSet && c->destination)
        destination = c->destination->currentText().toStdString();
    panels::MakeSummaryArrays(titleArray, summaryArray);
    for (auto& [title, text] : PaperOutputSummary(c->settings, localized, stockSummary(c->settings), destination))
        panels::AppendSummaryLine(titleArray, summaryArray, std::move(title), std::move(text));
    return noErr;
}

// The destinations follow the printer's installed options, which may change between opens.
OSStatus Open(PMPDEContext context)
{
    PaperOutputContext* c = asContext(context);
    if (c && c->built())
        rebuildDestinations(c);
    return panels::PanelOpen(context);
}

OSStatus Terminate(PMPDEContext context, OSStatus) { return panels::PanelTerminate(context); }

} // namespace

OSStatus CreatePanelInterface(PlugInIntf** intf)
{
    return panels::MakePanelInterface(intf, {nullptr, nullptr, nullptr, &Prologue, &Initialize, &Sync, &GetSummaryText,
                                             &Open, &panels::PanelClose, &Terminate});
}

} // namespace talmo::paperoutput

TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetPaperOutputPanelInterface(talmo::PlugInIntf** intf)
{
    return talmo::paperoutput::CreatePanelInterface(intf);
}
