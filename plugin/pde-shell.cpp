// The panel host's dialog operations: the fan-out of every call to the six panels, the chooser
// and the client information stamped into the ticket on every save.
#include "plugin/pde-shell_p.h"

#include "device/device.h"
#include "tpif/tpif.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <dlfcn.h>

#include <cctype>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace talmo {

int16_t gCurrentPanel = 0;
int16_t lastTabIndex = 0;

namespace {

PDEShellContext* gPDEShellContext = nullptr;
Bundle* gPDEBundle = nullptr;

constexpr ControlID kChooserID{FourCC("Tshl"), 1};
constexpr ControlID kPreviousButtonID{FourCC("Tshl"), 2};
constexpr ControlID kNextButtonID{FourCC("Tshl"), 3};
constexpr ControlID kHelpButtonID{FourCC("Tshl"), 4};
constexpr ControlID kPlaceholderID{FourCC("Tshl"), 17};
constexpr uint32_t kPanelPaneSignature = FourCC("TSgb");
constexpr char kDefaultButtonBundleProperty[] = "TPDE.MBND"; // creator "TPDE", tag "MBND"

// Nothing throws across the dialog's boundary.
template <class F> OSStatus guarded(F&& body)
{
    try {
        return body();
    } catch (...) {
        std::fprintf(stderr, "DEBUG: the panel host caught an exception\n");
        return kPMNoContext;
    }
}

PDEShellContext* asContext(PMPDEContext context) { return static_cast<PDEShellContext*>(context); }

// Widgets need a QApplication; a host without one gets the operations minus the pane.
bool canMakeWidgets() { return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr; }

// Every character between U+0020 and U+00FE: the names the printer's controller can show.
bool isControllerComputerName(std::string_view name)
{
    if (name.empty())
        return false;
    for (size_t i = 0; i < name.size();) {
        const auto lead = static_cast<unsigned char>(name[i]);
        if (lead < 0x80) {
            if (lead < 0x20)
                return false;
            ++i;
            continue;
        }
        if ((lead != 0xC2 && lead != 0xC3) || i + 1 >= name.size() ||
            (static_cast<unsigned char>(name[i + 1]) & 0xC0) != 0x80)
            return false;
        const unsigned codePoint = ((lead & 0x1Fu) << 6) | (static_cast<unsigned char>(name[i + 1]) & 0x3Fu);
        if (codePoint > 0xFE)
            return false;
        i += 2;
    }
    return true;
}

void setOrRemove(Ticket& ticket, const char* key, const std::string& value, bool keep)
{
    if (keep)
        ticket.set(key, pl::makeString(value), kTalmoHostCreator);
    else
        ticket.remove(key);
}

PanelRecord* panelWithID(PDEShellContext* c, int16_t id)
{
    for (PanelRecord& p : c->panels)
        if (p.id != -1 && p.id == id)
            return &p;
    return nullptr;
}

void syncPanel(PanelRecord& p, PMPrintSession session, bool direction)
{
    if (p.intf.Sync)
        p.intf.Sync(p.context, session, direction); // a panel's status is never propagated
}

// The bundle's own library, where the panels' entry points are looked up by name.
void* openOwnLibrary()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&LoadBuiltInPanels), &info) && info.dli_fname)
        if (void* lib = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD))
            return lib;
    return dlopen(nullptr, RTLD_NOW); // linked into a program
}

void findDialogButtons(PDEShellContext* c, QWidget* window)
{
    for (QDialogButtonBox* box : window->findChildren<QDialogButtonBox*>())
        for (QAbstractButton* b : box->buttons()) {
            auto* push = qobject_cast<QPushButton*>(b);
            if (!push)
                continue;
            if (box->buttonRole(b) == QDialogButtonBox::AcceptRole && !c->defaultButton)
                c->defaultButton = push;
            else if (box->buttonRole(b) == QDialogButtonBox::RejectRole && !c->cancelButton)
                c->cancelButton = push;
        }
    if (!c->defaultButton)
        for (QPushButton* b : window->findChildren<QPushButton*>())
            if (b->isDefault()) {
                c->defaultButton = b;
                break;
            }
}

// Builds the chooser, the navigation buttons and the panels' places in the host pane.
OSStatus buildHostPane(PDEShellContext* c)
{
    OSStatus status = noErr;
    auto shell = CreateWindowFromDescription(*c->bundle, "PDE_Shell", "Window", c->dialogPane, &status);
    if (!shell)
        return kPMNoContext;
    QWidget* host = shell.release();
    LocalizeDescription(*c->bundle, host);
    auto* layout = qobject_cast<QBoxLayout*>(c->dialogPane->layout());
    if (!layout) {
        delete c->dialogPane->layout();
        layout = new QVBoxLayout(c->dialogPane);
        layout->setContentsMargins(0, 0, 0, 0);
    }
    layout->addWidget(host);
    host->show();
    c->hostPane = host;

    c->chooser = GetControlByID<QComboBox>(host, kChooserID);
    if (c->chooser) {
        c->chooser->clear();
        for (const PanelRecord& p : c->panels)
            c->chooser->addItem(QString::fromStdString(p.title));
        // A control hit: the user picked a panel.
        QObject::connect(c->chooser, &QComboBox::currentIndexChanged, c->handler.get(),
                         [c](int index) { selectPanel(int16_t(index + 1), c); });
    }
    struct {
        ControlID id;
        const char* picture;
        uint32_t command;
    } const buttons[] = {{kPreviousButtonID, "ButtonGraphic_MacDown.png", FourCC("TFdn")},
                         {kNextButtonID, "ButtonGraphic_MacUp.png", FourCC("TFup")}};
    for (const auto& b : buttons)
        if (auto* button = GetControlByID<QAbstractButton>(host, b.id)) {
            if (auto path = c->bundle->resourcePath(b.picture))
                button->setIcon(QIcon(QString::fromStdString(*path)));
            ConnectCommand(button, b.command);
            button->hide();
        }
    if (auto* help = GetControlByID<QAbstractButton>(host, kHelpButtonID))
        ConnectCommand(help, FourCC("help"));
    QWidget* placeholder = GetControlByID(host, kPlaceholderID);
    if (!placeholder)
        return kPMNoContext;
    auto* panes = new QVBoxLayout(placeholder);
    panes->setContentsMargins(0, 0, 0, 0);
    for (PanelRecord& p : c->panels)
        if (p.pane)
            panes->addWidget(p.pane);
    return noErr;
}

} // namespace

// ---- the context and the panels ----

OSStatus InitContext(PDEShellContext** context)
{
    if (!context)
        return paramErr;
    *context = nullptr;
    Bundle* bundle = ExtensionBundle();
    if (!bundle || bundle->identifier() != kPDEShellBundleIdentifier)
        return kPMNoContext;
    auto* c = new (std::nothrow) PDEShellContext;
    if (!c)
        return kPMNoContext;
    c->bundle = bundle;
    c->handler = std::make_unique<PDEShellEventHandler>(c);
    gCurrentPanel = 0;
    *context = c;
    return noErr;
}

void LoadBuiltInPanels(PDEShellContext* c)
{
    if (!c)
        return;
    void* library = openOwnLibrary();
    while (size_t(c->panelCount) < std::size(kBuiltInPanelEntryPoints)) {
        const char* name = kBuiltInPanelEntryPoints[c->panelCount];
        auto entry = library ? reinterpret_cast<PanelInterfaceEntryPoint>(dlsym(library, name)) : nullptr;
        PlugInIntf* intf = nullptr;
        if (entry)
            entry(&intf);
        PanelRecord record;
        if (intf && intf->vtable)
            record.intf = *intf->vtable;
        FreePanelInterface(intf);
        OSType creator = 0;
        uint32_t maxH = 0, maxV = 0;
        // Retrying the same name could never succeed: the panels that follow stay unloaded.
        if (!record.intf.Prologue ||
            record.intf.Prologue(&record.context, &creator, &record.kind, &record.title, &maxH, &maxV) != noErr) {
            std::fprintf(stderr, "DEBUG: LoadBuiltInPanels: %s is missing from the bundle\n", name);
            break;
        }
        if (c->panels.capacity() == 0)
            c->panels.reserve(10);
        record.id = ++c->panelCount;
        c->panels.push_back(std::move(record));
    }
    if (library)
        dlclose(library);
}

void selectPanel(int16_t panelID, PDEShellContext* c)
{
    if (!c)
        return;
    if (PanelRecord* left = panelWithID(c, lastTabIndex))
        syncPanel(*left, c->session, false);
    if (c->hostPane)
        c->hostPane->setUpdatesEnabled(false);
    for (PanelRecord& p : c->panels)
        if (p.id != -1 && p.id != lastTabIndex)
            syncPanel(p, c->session, true);
    for (PanelRecord& p : c->panels) {
        const bool shown = p.id != -1 && p.id == panelID;
        if (shown)
            gCurrentPanel = panelID;
        if (p.pane) {
            p.pane->setEnabled(shown);
            p.pane->setVisible(shown);
        }
    }
    lastTabIndex = panelID;
    if (c->hostPane)
        c->hostPane->setUpdatesEnabled(true);
}

void SetChooserValue(PDEShellContext* c, int16_t panelID)
{
    if (!c || !c->chooser)
        return;
    const QSignalBlocker quiet(c->chooser);
    c->chooser->setCurrentIndex(panelID - 1);
}

int16_t NextPanelID(int16_t current, int16_t count) { return current + 1 > count ? 1 : int16_t(current + 1); }
int16_t PreviousPanelID(int16_t current, int16_t count) { return current - 1 < 1 ? count : int16_t(current - 1); }

// ---- client information ----

void WriteClientInformation(Ticket& ticket)
{
    auto options = pl::makeDict();
    options->set("TPIFOptionAll", pl::makeBool(true));
    ticket.set(kTPIFOptionsKey, options, kTalmoHostCreator);
    ticket.remove(kRotateBooklet180DegreesKey);
    ticket.set(kControllerInformationControllerFamilyKey, pl::makeString("Kestra"), kTalmoHostCreator);
    ticket.set(kControllerInformationControllerVersionKey, pl::makeString("6.0"), kTalmoHostCreator);
    const std::string user = ConsoleUserName();
    setOrRemove(ticket, kClientInformationUserNameKey, user, !user.empty());
    const std::string computer = ComputerName();
    setOrRemove(ticket, kClientInformationComputerNameKey, computer, isControllerComputerName(computer));
    const std::string address = PrimaryIPv4Address();
    setOrRemove(ticket, kClientInformationIPAddressKey, address, !address.empty());
}

// ---- the dialog operations ----

OSStatus Prologue(PMPDEContext* context, OSType* creator, std::string* userOptionKind, std::string* title,
                  uint32_t* maxH, uint32_t* maxV)
{
    return guarded([&] {
        TalmoPDEProlog(context, creator, userOptionKind, title, maxH, maxV);
        PDEShellContext* c = nullptr;
        if (!context || InitContext(&c) != noErr)
            return kPMNoContext;
        *context = c;
        gPDEShellContext = c;
        gPDEBundle = c->bundle;
        if (maxH)
            *maxH = kPDEShellMaxWidth;
        if (maxV)
            *maxV = kPDEShellMaxHeight;
        auto table = c->bundle->stringsTable();
        if (auto text = table ? pl::as<pl::String>(table->get("PDE Shell")) : nullptr) {
            c->title = text->text;
            if (title)
                *title = c->title;
        }
        if (userOptionKind)
            *userOptionKind = kPDEShellKind;
        if (creator)
            *creator = kPDEShellCreator;
        LoadBuiltInPanels(c);
        return noErr;
    });
}

OSStatus Initialize(PMPDEContext context, PMPDEFlags* flags, PMPDERef ref, ControlRef parentUserPane,
                    PMPrintSession printSession)
{
    return guarded([&] {
        TalmoPDEInitialize(context, flags, ref, parentUserPane, printSession);
        PDEShellContext* c = asContext(context);
        if (!c)
            return kPMNoContext;
        if (!printSession)
            return kPMNoSession;
        // Printer data only for the maker's own presses (exactly "Talmo").
        if (PPDHandle ppd = PPDGetCurrent(); ppd && PPDManufacturerIsTalmo(ppd)) {
            TDPInitialize();
            LoadInstallableOptions(ppd, kTalmoInstalledFeatureMap);
        }
        Ticket* ticket = nullptr;
        if (GetTicketFromSession(printSession, kPMPrintSettingsTicket, &ticket) != noErr || !ticket) {
            std::fprintf(stderr, "Initialize()::GetTicketFromSession() failed.\n");
            return kPMNoContext;
        }
        c->session = printSession;
        // The import and export reach the panels through this hook: panels cannot call the host.
        TPIFSetPDESyncHandler([](PrintSession* session, int direction) { PDESync(session, direction == 1); });
        // The library dialog's printer list comes from the thread this host runs, when it runs one.
        SetHostPrinterPaperProvider(
            [](NamedPaperDialogSources& sources) { return AttachThreadPrinterPapers(gPDEShellContext, sources); });
        auto* pane = static_cast<QWidget*>(parentUserPane);
        if (!pane || !canMakeWidgets() || !c->bundle->resourcePath("PDE_Shell.Window.ui")) {
            std::fprintf(stderr, "Initialize()::CreateNibReferenceWithCFBundle() failed.\n");
            return kPMNoContext;
        }
        c->dialogPane = pane;
        QWidget* window = pane->window();
        findDialogButtons(c, window);
        if (c->defaultButton)
            c->defaultButton->setProperty(kDefaultButtonBundleProperty, QString::fromStdString(c->bundle->path()));
        RegisterMyHelpBook(c);
        c->handler->install(window);

        OSStatus status = noErr;
        auto description = CreateWindowFromDescription(*c->bundle, "PDE_Shell", "Window", nullptr, &status);
        if (!description) {
            std::fprintf(stderr, "Initialize()::CreateWindowFromNib() failed.\n");
            return kPMNoContext;
        }
        description->resize(int(kPDEShellMaxWidth), int(kPDEShellMaxHeight));
        if (description->layout())
            description->layout()->activate();
        const QWidget* placeholder = GetControlByID(description.get(), kPlaceholderID);
        const QRect frame = placeholder ? placeholder->geometry() : QRect();
        for (PanelRecord& p : c->panels) {
            if (p.id == -1)
                continue;
            auto* panelPane = new QWidget(pane);
            panelPane->setGeometry(frame);
            SetControlID(panelPane, {kPanelPaneSignature, p.id});
            panelPane->hide();
            p.pane = panelPane;
            if (p.intf.Initialize)
                p.intf.Initialize(p.context, flags, ref, panelPane, printSession);
        }
        Sync(c, printSession, true);
        return noErr;
    });
}

OSStatus Sync(PMPDEContext context, PMPrintSession printSession, bool reinitializePlugIn)
{
    return guarded([&] {
        const OSStatus result = TalmoPDESync(context, printSession, reinitializePlugIn);
        PDEShellContext* c = asContext(context);
        if (!c || !printSession)
            return kPMNoSession;
        // The panel in view goes last, so its values win on the way into the ticket.
        for (PanelRecord& p : c->panels)
            if (p.id != -1 && p.id != lastTabIndex)
                syncPanel(p, printSession, reinitializePlugIn);
        if (PanelRecord* inView = panelWithID(c, lastTabIndex))
            syncPanel(*inView, printSession, reinitializePlugIn);
        if (!reinitializePlugIn) {
            Ticket* ticket = nullptr;
            if (GetTicketFromSession(printSession, kPMPrintSettingsTicket, &ticket) == noErr && ticket)
                WriteClientInformation(*ticket);
        }
        return result;
    });
}

OSStatus GetSummaryText(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray)
{
    return guarded([&] {
        TalmoPDEGetSummaryText(context, titleArray, summaryArray);
        PDEShellContext* c = asContext(context);
        if (!c)
            return kPMNoContext;
        for (PanelRecord& p : c->panels)
            if (p.id != -1 && p.intf.GetSummaryText)
                p.intf.GetSummaryText(p.context, titleArray, summaryArray);
        return noErr;
    });
}

OSStatus Open(PMPDEContext context)
{
    return guarded([&] {
        TalmoPDEOpen(context);
        PDEShellContext* c = asContext(context);
        if (!c)
            return kPMNoContext;
        if (!c->dialogPane)
            return kPMNoContext;
        c->handler->install(c->dialogPane->window());

        if (c->session)
            if (auto host = PrinterHostFromDeviceURI(c->session->printer().deviceURI)) {
                ForgetPaperListOutcome();
                c->handler->startPaperListPump();
                if (MySpawnThread(kPDEShellBundleIdentifier, *host, c->handler->windowRef()) != noErr)
                    c->handler->stopPaperListPump();
            }

        if (!c->paneBuilt) {
            if (buildHostPane(c) != noErr)
                return kPMNoContext;
            c->paneBuilt = true;
            if (gCurrentPanel == 0)
                gCurrentPanel = 1;
        }
        for (PanelRecord& p : c->panels)
            if (p.id != -1 && p.intf.Open)
                p.intf.Open(p.context);
        selectPanel(gCurrentPanel, c);
        SetChooserValue(c, gCurrentPanel);
        return noErr;
    });
}

OSStatus Close(PMPDEContext context)
{
    return guarded([&] {
        TalmoPDEClose(context);
        PDEShellContext* c = asContext(context);
        if (!c)
            return kPMNoContext;
        for (PanelRecord& p : c->panels)
            if (p.id != -1 && p.intf.Close)
                p.intf.Close(p.context);
        c->handler->stopPaperListPump();
        c->handler->remove();
        return noErr;
    });
}

OSStatus Terminate(PMPDEContext context, OSStatus status)
{
    return guarded([&] {
        TalmoPDETerminate(context, status);
        PDEShellContext* c = asContext(context);
        if (!c)
            return kPMNoContext;
        for (PanelRecord& p : c->panels)
            if (p.id != -1 && p.intf.Terminate)
                p.intf.Terminate(p.context, status);
        c->handler->stopPaperListPump();
        c->handler->remove();
        for (PanelRecord& p : c->panels)
            delete p.pane.data();
        delete c->hostPane.data();
        if (gPDEShellContext == c) {
            gPDEShellContext = nullptr;
            TPIFSetPDESyncHandler(nullptr);
            SetHostPrinterPaperProvider(nullptr);
        }
        delete c;
        PPDCloseCurrent();
        UnloadInstallableOptions();
        TDPFinalize();
        return noErr;
    });
}

// ---- process-wide services ----

OSStatus PDESync(PMPrintSession session, bool reinitializePlugIn)
{
    return Sync(gPDEShellContext, session ? session : GetCurrentPrintSession(), reinitializePlugIn);
}

Bundle* GetPDEBundle() { return gPDEBundle; }

OSStatus RegisterMyHelpBook(PDEShellContext* c)
{
    if (!c || !c->bundle || c->bundle->path().empty())
        return noErr;
    return RegisterHelpBook(*c->bundle);
}

pl::ValuePtr CreatePropertiesFromXMLFile(const std::string& url)
{
    std::string path = url;
    if (path.rfind("file://", 0) == 0)
        path.erase(0, 7);
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return nullptr;
    std::ostringstream data;
    data << in.rdbuf();
    if (!in.good() && !in.eof())
        return nullptr;
    return pl::readPlist(data.str());
}

} // namespace talmo
