// The panel host inside a dialog, driven through the bundle's record: the fan-out order seen
// through the panels' trace, the chooser and its commands, the client information written on
// save, and when the printer paper list fetch starts.
#include "tests/plugin/loaded-bundle.h"

#include "device/device.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QSpinBox>
#include <QTableView>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace talmo;

namespace {

const ControlID kChooser{FourCC("Tshl"), 1};

std::string slurp(const std::string& path)
{
    std::ifstream in(path);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// A dialog with the extension's pane and the host's record, opened on construction.
class ShellDialog : public LoadedBundle {
protected:
    void SetUp() override
    {
        // ctest runs tests of this suite side by side: one trace file per process.
        trace_ = ::testing::TempDir() + "panel-trace-" + std::to_string(::getpid()) + ".txt";
        std::remove(trace_.c_str());
        ::setenv("TALMO_PANEL_TRACE", trace_.c_str(), 1);
        instance_ = newInstance();
        ASSERT_TRUE(instance_);
        void* out = nullptr;
        ASSERT_EQ(instance_->vtablePtr->QueryInterface(instance_, bytesOf(kExtension), &out), 0);
        intf_ = static_cast<PlugInIntf*>(out);
        auto* layout = new QVBoxLayout(&dialog_);
        pane_ = new QWidget;
        layout->addWidget(pane_);
        layout->addWidget(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel));
    }
    void TearDown() override
    {
        if (open_)
            t().Close(context_);
        if (context_)
            t().Terminate(context_, noErr);
        ::unsetenv("TALMO_PANEL_TRACE");
        if (intf_)
            t().Release(&intf_);
        if (instance_)
            instance_->vtablePtr->Release(instance_);
    }

    PlugInIntfVTable& t() { return *intf_->vtable; }

    void start(const std::string& deviceURI = "file:///dev/null")
    {
        Printer p = DemoPrinter();
        p.deviceURI = deviceURI;
        session_.setPrinter(p);
        OSType creator = 0;
        std::string kind, title;
        uint32_t maxH = 0, maxV = 0;
        PMPDEFlags flags = 0;
        ASSERT_EQ(t().Prologue(&context_, &creator, &kind, &title, &maxH, &maxV), noErr);
        EXPECT_EQ(std::tuple(creator, kind, maxH, maxV),
                  std::tuple(FourCC("pde "), std::string("com.talmo.print.pde.talmofeatureskind"), 540u, 491u));
        ASSERT_EQ(t().Initialize(context_, &flags, nullptr, pane_, &session_), noErr);
        dialog_.show();
        ASSERT_EQ(t().Open(context_), noErr);
        open_ = true;
    }

    QComboBox* chooser() { return GetControlByID<QComboBox>(pane_, kChooser); }
    QAbstractButton* button(int id) { return GetControlByID<QAbstractButton>(pane_, {FourCC("Tshl"), id}); }
    // Ids of the panel panes that show.
    std::vector<int> shownPanes()
    {
        std::vector<int> ids;
        for (int id = 1; id <= 6; ++id)
            if (QWidget* p = GetControlByID(pane_, {FourCC("TSgb"), id}); p && p->isVisible())
                ids.push_back(id);
        return ids;
    }
    std::string takeTrace(const char* call)
    {
        std::istringstream lines(slurp(trace_));
        std::remove(trace_.c_str());
        std::string out, line;
        while (std::getline(lines, line))
            if (line.find(call) != std::string::npos)
                out += line.substr(0, line.find("Panel")) + line.substr(line.find(call) + std::strlen(call)) + ";";
        return out;
    }

    std::string trace_;
    IUnknownInstance* instance_ = nullptr;
    PlugInIntf* intf_ = nullptr;
    QDialog dialog_;
    QWidget* pane_ = nullptr;
    PrintSession session_;
    PMPDEContext context_ = nullptr;
    bool open_ = false;
};

} // namespace

TEST_F(ShellDialog, LoadsTheSixPanelsInChooserOrder)
{
    start();
    EXPECT_EQ(takeTrace("Prologue"), "PaperOutput;SpecialPages;ImageOptions;JobNotes;BookletWatermark;Advanced;");
    QStringList titles;
    for (int i = 0; i < chooser()->count(); ++i)
        titles << chooser()->itemText(i);
    EXPECT_EQ(titles.join("|"), "Paper/Output|Special Pages|Image Options|Job Notes|Booklet and Watermark|Advanced");
    EXPECT_EQ(shownPanes(), std::vector<int>{1});
}

TEST_F(ShellDialog, ThePanelInViewSyncsLast)
{
    start();
    takeTrace("Sync");
    chooser()->setCurrentIndex(2); // the user picks Image Options
    EXPECT_EQ(takeTrace("Sync"),
              "PaperOutput 0;SpecialPages 1;ImageOptions 1;JobNotes 1;BookletWatermark 1;Advanced 1;")
        << "the panel left writes, every other panel reloads";
    EXPECT_EQ(shownPanes(), std::vector<int>{3});
    for (bool direction : {false, true}) {
        ASSERT_EQ(t().Sync(context_, &session_, direction), noErr);
        const std::string d = direction ? " 1;" : " 0;";
        EXPECT_EQ(takeTrace("Sync"), "PaperOutput" + d + "SpecialPages" + d + "JobNotes" + d + "BookletWatermark" + d +
                                         "Advanced" + d + "ImageOptions" + d);
    }
}

TEST_F(ShellDialog, NavigationWrapsAndReopensOnTheLastPanel)
{
    start();
    struct {
        int from, button, to;
    } const rows[] = {{6, 3, 1}, {1, 2, 6}, {3, 3, 4}, {3, 2, 2}};
    for (const auto& row : rows) {
        chooser()->setCurrentIndex(row.from - 1);
        button(row.button)->click(); // the hidden arrows send "TFup" and "TFdn" to the window
        EXPECT_EQ(chooser()->currentIndex(), row.to - 1) << row.from << " via " << row.button;
        EXPECT_EQ(shownPanes(), std::vector<int>{row.to});
    }
    chooser()->setCurrentIndex(3);
    ASSERT_EQ(t().Close(context_), noErr);
    ASSERT_EQ(t().Open(context_), noErr);
    EXPECT_EQ(chooser()->currentIndex(), 3);
    EXPECT_EQ(shownPanes(), std::vector<int>{4});
}

TEST_F(ShellDialog, SavingWritesTheClientInformation)
{
    start();
    Ticket& ticket = session_.printSettings();
    ticket.set(kRotateBooklet180DegreesKey, pl::makeBool(true), "test");
    struct {
        const char *name, *address;
        bool nameKept;
    } const rows[] = {
        {"Print Room 2", "192.0.2.7", true},  {"Büro Ørsted ~þ", "", true},     {"印刷室", "10.0.0.1", false},
        {"Room \xC3\xBF", "10.0.0.1", false}, {"Tab\there", "10.0.0.1", false}, {"", "", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ::setenv("TALMO_COMPUTER_NAME", row.name, 1);
        ::setenv("TALMO_PRIMARY_IPV4", row.address, 1);
        ASSERT_EQ(t().Sync(context_, &session_, false), noErr);
        auto name = pl::as<pl::String>(ticket.get(kClientInformationComputerNameKey));
        EXPECT_EQ(name ? name->text : "<removed>", row.nameKept ? row.name : "<removed>");
        auto address = pl::as<pl::String>(ticket.get(kClientInformationIPAddressKey));
        EXPECT_EQ(address ? address->text : "", row.address);
    }
    ::unsetenv("TALMO_COMPUTER_NAME");
    ::unsetenv("TALMO_PRIMARY_IPV4");
    EXPECT_FALSE(ticket.contains(kRotateBooklet180DegreesKey));
    EXPECT_EQ(ticket.creatorOf(kControllerInformationControllerFamilyKey), "T");
    auto options = pl::as<pl::Dictionary>(ticket.get(kTPIFOptionsKey));
    ASSERT_TRUE(options);
    EXPECT_EQ(options->size(), 1u);
    EXPECT_TRUE(pl::equal(options->get("TPIFOptionAll"), pl::makeBool(true)));
}

TEST_F(ShellDialog, TheHelpCommandShowsTheHelpBook)
{
    start();
    button(4)->click();
    QTextBrowser* help = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* b = qobject_cast<QTextBrowser*>(w); b && b->isVisible())
            help = b;
    ASSERT_TRUE(help);
    EXPECT_TRUE(help->source().path().endsWith("/help/index.html")) << help->source().toString().toStdString();
    EXPECT_TRUE(help->toPlainText().contains("Special Pages"));
    help->close();
}

// Import by the Advanced panel's button, as a user does: every panel shows the result; the ticket
// saved is `talmo tpif import` merged in; the panel's export of it imports back unchanged.
TEST_F(ShellDialog, ImportThroughTheAdvancedPanelReachesEveryPanelAndTheSavedTicket)
{
    for (const char* key : {kJobNotesUseJobNameKey, kJobNotesSenderUseLoginNameKey, kJobNotesRecipientUseLoginNameKey,
                            kJobNotesJobNameKey, kJobNotesSenderNameKey, kJobNotesRecipientKey}) // names typed
        session_.printSettings().set(
            key, strstr(key, "Use") ? pl::ValuePtr(pl::makeBool(false)) : pl::makeString("Typed"), "t");
    start();
    const std::string data = TALMO_SOURCE_DIR "/tests/tpif/data/tpif-", dir = ::testing::TempDir() + "import-";
    const std::string first = data + "finishing-colour.tpif", last = data + "plain-job.tpif";
    chooser()->setCurrentIndex(4);
    GetControlByID<QSpinBox>(pane_, {FourCC("BWmk"), 3})->setValue(18);
    chooser()->setCurrentIndex(5);
    ASSERT_EQ(t().Sync(context_, &session_, false), noErr);
    const pl::DictPtr expected = session_.printSettings().asDictionary();
    ASSERT_EQ(std::system((TALMO_CLI " tpif import " + first + " " + last + " -o " + dir + "in.plist").c_str()), 0);
    const auto imported = pl::as<pl::Dictionary>(pl::readPlistFile(dir + "in.plist"));
    for (const auto& [key, value] : *imported)
        expected->set(key, value);

    QStringList messages; // a file dialog gets `names`, a message its OK, the summary its default
    auto press = [&](int button, const std::string& names) {
        QTimer answer;
        QObject::connect(&answer, &QTimer::timeout, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* chooser = qobject_cast<QFileDialog*>(modal)) {
                chooser->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(names));
                static_cast<QDialog*>(chooser)->accept();
            } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                messages << box->text(), box->accept();
            } else if (modal) {
                modal->findChild<QAbstractButton*>("default")->click();
            }
        });
        answer.start(20);
        GetControlByID<QAbstractButton>(pane_, {FourCC("Advn"), button})->click();
    };
    press(10, "\"" + first + "\" \"" + last + "\"");
    const std::tuple<ControlID, const char*> shown[] = {
        {{FourCC("TImg"), 4}, "600 x 600 dpi"},      // Image Options: resolution
        {{FourCC("JNot"), 1}, "Annual report 2026"}, // Job Notes: job name
        {{FourCC("BWmk"), 3}, "18 pt"},              // Booklet and Watermark: the gutter, not in the files
        {{FourCC("Advn"), 2}, "On"},                 // Advanced: rotation
    };
    for (const auto& [id, text] : shown) {
        auto* combo = GetControlByID<QComboBox>(pane_, id);
        EXPECT_EQ((combo ? combo->currentText() : GetControlByID<QSpinBox>(pane_, id)->text()).toStdString(), text);
    }
    ASSERT_EQ(t().Sync(context_, &session_, false), noErr);
    const pl::DictPtr saved = session_.printSettings().asDictionary();
    EXPECT_TRUE(pl::equal(saved, expected)) << pl::writePlist(saved) << pl::writePlist(expected);

    std::filesystem::remove(dir + "exported.tpif"); // else the save dialog asks to replace it
    press(11, dir + "exported.tpif");
    press(10, "\"" + dir + "exported.tpif\"");
    ASSERT_EQ(t().Sync(context_, &session_, false), noErr);
    EXPECT_TRUE(pl::equal(session_.printSettings().asDictionary(), saved)) << "changed by its own export";
    EXPECT_TRUE(messages.isEmpty()) << messages.join("; ").toStdString();
}

TEST_F(LoadedBundle, StatusesForMissingContextsAndSessions)
{
    PlugInIntf* intf = nullptr;
    IUnknownInstance* instance = newInstance();
    void* out = nullptr;
    ASSERT_EQ(instance->vtablePtr->QueryInterface(instance, bytesOf(kExtension), &out), 0);
    intf = static_cast<PlugInIntf*>(out);
    PlugInIntfVTable& t = *intf->vtable;
    PrintSession session;
    PMPDEContext context = nullptr;
    ASSERT_EQ(t.Prologue(&context, nullptr, nullptr, nullptr, nullptr, nullptr), noErr);
    PMPDEFlags flags = 0;
    pl::ArrayPtr titles, values;
    EXPECT_EQ(t.Sync(nullptr, &session, false), -30879);
    EXPECT_EQ(t.Sync(context, nullptr, false), -30879);
    EXPECT_EQ(t.Initialize(nullptr, &flags, nullptr, nullptr, &session), -9530);
    EXPECT_EQ(t.GetSummaryText(nullptr, &titles, &values), -9530);
    EXPECT_EQ(t.Open(nullptr), -9530);
    EXPECT_EQ(t.Close(nullptr), -9530);
    EXPECT_EQ(t.Terminate(nullptr, noErr), -9530);
    EXPECT_EQ(t.Initialize(context, &flags, nullptr, nullptr, &session), -9530) << "no pane to build";
    EXPECT_EQ(t.Terminate(context, noErr), noErr);
    t.Release(&intf);
    instance->vtablePtr->Release(instance);
}

// A loopback listener stands in for the printer: the fetch shows itself by connecting.
TEST_F(ShellDialog, OnlyANetworkPrinterStartsThePaperListFetch)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof addr;
    ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    ASSERT_EQ(::listen(listener, 4), 0);
    ASSERT_EQ(::getsockname(listener, reinterpret_cast<sockaddr*>(&addr), &len), 0);
    const std::string host = "127.0.0.1:" + std::to_string(ntohs(addr.sin_port));
    struct {
        std::string uri;
        bool fetches;
    } const rows[] = {
        {"pap://" + host + "/Talmo", false}, {"PAP://" + host + "/x", false}, {"ipp://" + host + "/ipp/print", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.uri);
        if (!context_)
            start(row.uri);
        else {
            Printer p = DemoPrinter();
            p.deviceURI = row.uri;
            session_.setPrinter(p);
            ASSERT_EQ(t().Open(context_), noErr);
        }
        bool connected = false;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
        while (!connected && std::chrono::steady_clock::now() < deadline) {
            QApplication::processEvents(); // serves the fetch thread's questions
            pollfd pfd{listener, POLLIN, 0};
            if (::poll(&pfd, 1, 20) == 1)
                if (int c = ::accept(listener, nullptr, nullptr); c >= 0) {
                    connected = true;
                    ::close(c);
                }
        }
        EXPECT_EQ(connected, row.fetches);
        ASSERT_EQ(t().Close(context_), noErr);
    }
    open_ = false;
    ::close(listener);
}

// The library opened from the Paper/Output panel shows the papers of the host's own fetch as it
// opens, and a refresh goes through the host's thread and comes back while it is open. A dialog
// that opens before the host's fetch has answered is closed at once, so its own question is
// never answered: only the host's list event can fill the table of a dialog as it opens.
TEST_F(ShellDialog, TheLibraryTakesThePrinterPapersFromTheHostsThread)
{
    const std::string home = ::testing::TempDir() + "host-library-" + std::to_string(::getpid());
    std::filesystem::remove_all(home);
    for (const char* v : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS"})
        ::setenv(v, (home + "/" + v).c_str(), 1);
    test::IppEvePrinter printer;
    ASSERT_EQ(printer.start(TALMO_SOURCE_DIR "/tests/paperlib/data/papers-30.conf"), "") << "no test printer";
    start("ipp://" + printer.address() + "/ipp/print");
    QAction* library = nullptr;
    for (QAction* action : GetControlByID(pane_, {FourCC("TSgb"), 1})->findChildren<QAction*>())
        if (action->property("stockCommand").toUInt() == FourCC("Slib"))
            library = action;
    ASSERT_TRUE(library);
    bool opened = false, fromHost = false;
    for (int tries = 0; tries < 100 && !fromHost; ++tries) {
        QTimer::singleShot(0, [&] {
            auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            QComboBox* list = d ? GetControlByID<QComboBox>(d, {FourCC("NPap"), 1}) : nullptr;
            if (!(opened = list != nullptr))
                return;
            auto* refresh = GetControlByID<QToolButton>(d, {FourCC("NPap"), 2});
            auto* message = GetControlByID<QWidget>(d, {FourCC("NPap"), 3});
            auto* rows = GetControlByID<QTableView>(d, {FourCC("NPap"), 4})->model();
            list->setCurrentIndex(1);
            emit list->activated(1);
            fromHost = rows->rowCount() == 32 && message->isHidden(); // the 31 papers and the default
            if (fromHost) {
                refresh->click();
                EXPECT_FALSE(refresh->isEnabled()) << "no fetch started";
                EXPECT_TRUE(QTest::qWaitFor(
                    [&] { return refresh->isEnabled() && message->isHidden() && rows->rowCount() == 32; }, 20000));
            }
            d->reject();
        });
        library->trigger();
        ASSERT_TRUE(opened);
        QTest::qWait(100); // the pump serves the host's fetch
    }
    EXPECT_TRUE(fromHost) << "the table never held the host's papers as it opened";
    std::filesystem::remove_all(home);
}

// Linked in rather than loaded, where the printer data is visible to the test.
TEST(PanelHostPrinterData, OnlyTheMakersExactNameLoadsIt)
{
    ::setenv("TALMO_BUNDLE_DIR", TALMO_BUNDLE_PATH, 1);
    struct {
        std::string ppd;
        bool loaded;
    } const rows[] = {{TALMO_RESOURCES_DIR "/ppd/talmo-studio-press.ppd", true},
                      {std::string(TALMO_SOURCE_DIR) + "/tests/device/data/for-tests-maker-suffix.ppd", false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.ppd);
        PrintSession session;
        Printer p = DemoPrinter();
        p.ppdPath = row.ppd;
        session.setPrinter(p);
        PDEShellContext* context = nullptr;
        ASSERT_EQ(InitContext(&context), noErr);
        PMPDEFlags flags = 0;
        Initialize(context, &flags, nullptr, nullptr, &session); // no pane: the printer data only
        EXPECT_EQ(TDPGetFeature("Duplex") != nullptr, row.loaded);
        ASSERT_EQ(Terminate(context, noErr), noErr);
        EXPECT_EQ(TDPGetFeature("Duplex"), nullptr) << "Terminate closes the printer data";
    }
}

TEST_F(LoadedBundle, DisplayHelpFindsTheBookByName)
{
    const std::string folder = ::testing::TempDir() + "help-bundle";
    std::filesystem::create_directories(folder + "/Resources/help");
    std::ofstream(folder + "/Resources/help/index.html") << "<p id=\"here\">x</p>";
    struct {
        const char* nameEntry;
        const char *page, *anchor;
        OSStatus status;
    } const rows[] = {
        {"", "", "", -50},
        {"<key>CFBundleHelpBookName</key><integer>1</integer>", "", "", -50},
        {"<key>CFBundleHelpBookName</key><string>Book</string>", "", "", noErr},
        {"<key>CFBundleHelpBookName</key><string>Book</string>", "", "here", noErr},
        {"<key>CFBundleHelpBookName</key><string>Book</string>", "", "nowhere", -43},
        {"<key>CFBundleHelpBookName</key><string>Book</string>", "../../Info.plist", "", -43},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.nameEntry) + " " + row.page + "#" + row.anchor);
        std::ofstream(folder + "/Info.plist") << "<plist version=\"1.0\"><dict>" << row.nameEntry << "</dict></plist>";
        auto b = Bundle::open(folder);
        ASSERT_TRUE(b);
        EXPECT_EQ(DisplayHelp(*b, row.page, row.anchor), row.status);
    }
    for (QWidget* w : QApplication::topLevelWidgets())
        if (qobject_cast<QTextBrowser*>(w))
            w->close();
}
