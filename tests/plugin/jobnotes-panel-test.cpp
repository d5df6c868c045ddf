// The Job Notes panel of the loaded bundle, driven through its own record: what a save writes
// into the print settings ticket, what a reload shows, and the user's defaults file.
#include "tests/plugin/loaded-bundle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

#include <filesystem>

#include <unistd.h>

using namespace talmo;

namespace {

constexpr uint32_t kNotes = FourCC("JNot");
constexpr uint32_t kPrefs = FourCC("JNpr");
const char* const kNameKeys[] = {kJobNotesJobNameKey, kJobNotesSenderNameKey, kJobNotesRecipientKey};
const char* const kFlagKeys[] = {kJobNotesUseJobNameKey, kJobNotesSenderUseLoginNameKey,
                                 kJobNotesRecipientUseLoginNameKey};

class JobNotesPanel : public LoadedBundle {
protected:
    void SetUp() override
    {
        home_ = ::testing::TempDir() + "jobnotes-home-" + std::to_string(::getpid()); // tests run side by side
        std::filesystem::remove_all(home_);
        ::setenv("XDG_CONFIG_HOME", home_.c_str(), 1);
        ops_ = panelOperations("GetJobNotesPanelInterface");
        ASSERT_TRUE(ops_.Prologue);
        open();
    }
    void TearDown() override { close(); }

    void open()
    {
        ASSERT_EQ(ops_.Prologue(&context_, nullptr, nullptr, nullptr, nullptr, nullptr), noErr);
        pane_ = std::make_unique<QWidget>();
        ASSERT_EQ(ops_.Initialize(context_, nullptr, nullptr, pane_.get(), &session_), noErr);
    }
    void close()
    {
        if (context_)
            ops_.Terminate(context_, noErr);
        context_ = nullptr;
    }

    QComboBox* box(int id) { return GetControlByID<QComboBox>(pane_.get(), {kNotes, id}); }
    // An empty text chooses the box's map row ("UseJobName"/"UseLoginName").
    void enter(int id, const QString& text)
    {
        if (text.isEmpty())
            box(id)->setCurrentIndex(0);
        else
            box(id)->setEditText(text);
    }
    QString message() { return GetControlByID<QPlainTextEdit>(pane_.get(), {kNotes, 4})->toPlainText(); }
    void setMessages(const QString& message, const QString& sheet)
    {
        GetControlByID<QPlainTextEdit>(pane_.get(), {kNotes, 4})->setPlainText(message);
        GetControlByID<QLineEdit>(pane_.get(), {kNotes, 5})->setText(sheet);
    }
    std::string text(const char* key)
    {
        auto s = pl::as<pl::String>(ticket().get(key));
        return s ? s->text : "<none>";
    }
    Ticket& ticket() { return session_.printSettings(); }

    std::string home_;
    PlugInIntfVTable ops_{};
    PMPDEContext context_ = nullptr;
    std::unique_ptr<QWidget> pane_;
    PrintSession session_;
};

TEST_F(JobNotesPanel, TheJobNameBoxDecidesForAllThreeNames)
{
    const std::string login = ConsoleUserName();
    struct {
        const char *job, *sender, *recipient;
        std::array<std::string, 3> written;
        std::array<bool, 3> flags;
    } const rows[] = {
        {"", "Ann", "Bob", {login, login, login}, {true, false, false}},
        {"", "", "", {login, login, login}, {true, true, true}},
        {"Report", "Ann", "Bob", {"Report", "Ann", "Bob"}, {false, false, false}},
        {"Report", "", "Bob", {"Report", "Ann", "Bob"}, {false, true, false}}, // the sender's last text stays
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.job) + "/" + row.sender + "/" + row.recipient);
        enter(1, row.job);
        enter(2, row.sender);
        enter(3, row.recipient);
        ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(text(kNameKeys[i]), row.written[i]) << kNameKeys[i];
            EXPECT_EQ(ticket().creatorOf(kNameKeys[i]), "com.talmo.printingmanager");
            bool flag = !row.flags[i];
            EXPECT_EQ(TicketGetBool(&ticket(), kFlagKeys[i], &flag), noErr);
            EXPECT_EQ(flag, row.flags[i]) << kFlagKeys[i];
        }
    }
}

TEST_F(JobNotesPanel, SavingRemovesEmptyMessagesAndImportedAdditionalInfo)
{
    struct {
        const char *message, *sheet;
    } const rows[] = {{"", "Banner"}, {"Call me", ""}, {"", ""}};
    for (const auto& row : rows) {
        for (const char* key : {kJobNotesMessageKey, kJobNotesSheetMessageKey, kJobNotesAdditionalInfoKey})
            ticket().set(key, pl::makeString("imported"), "com.talmo.print");
        setMessages(row.message, row.sheet);
        ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
        EXPECT_EQ(text(kJobNotesMessageKey), *row.message ? row.message : "<none>");
        EXPECT_EQ(text(kJobNotesSheetMessageKey), *row.sheet ? row.sheet : "<none>");
        EXPECT_FALSE(ticket().contains(kJobNotesAdditionalInfoKey));
    }
}

TEST_F(JobNotesPanel, ReloadReadsMissingFlagsAsOnAndMissingTextsAsEmpty)
{
    setMessages("stale", "stale");
    enter(2, "Stale Sender");
    ticket().set(kJobNotesUseJobNameKey, pl::makeBool(false), "t");
    ticket().set(kJobNotesJobNameKey, pl::makeString("Report"), "t");
    ticket().set(kJobNotesSenderUseLoginNameKey, pl::makeBool(false), "t");
    ticket().set(kJobNotesRecipientKey, pl::makeString("Ignored: its flag is missing"), "t");
    ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr);
    EXPECT_EQ(box(1)->currentText(), "Report");
    EXPECT_EQ(box(2)->currentText(), "") << "a missing name with its flag off is empty";
    EXPECT_EQ(box(3)->currentText(), "Use Login Name");
    EXPECT_EQ(message(), "");

    // A save after the reload writes what was read; the ignored recipient is gone.
    ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
    bool flags[3] = {};
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(TicketGetBool(&ticket(), kFlagKeys[i], &flags[i]), noErr);
    EXPECT_EQ(std::vector<bool>(flags, flags + 3), (std::vector<bool>{false, true, true}));
    EXPECT_EQ(text(kJobNotesSenderNameKey) + "|" + text(kJobNotesRecipientKey), "|");
    EXPECT_FALSE(ticket().contains(kJobNotesSheetMessageKey));
}

TEST_F(JobNotesPanel, PreferencesAreWrittenAndReadBack)
{
    // Answers the dialog opened by the panel's button: records the boxes, sets them, ends it.
    auto answer = [&](std::array<bool, 3> set, bool ok) {
        std::array<bool, 3> shown{};
        QTimer::singleShot(0, [&] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog);
            for (int i = 0; i < 3; ++i) {
                auto* check = GetControlByID<QCheckBox>(dialog, {kPrefs, i + 1});
                shown[i] = check->isChecked();
                check->setChecked(set[i]);
            }
            GetControlByID<QPushButton>(dialog, {kPrefs, ok ? 4 : 5})->click();
        });
        GetControlByID<QPushButton>(pane_.get(), {kNotes, 6})->click();
        return shown;
    };
    EXPECT_EQ(answer({true, false, true}, true), (std::array<bool, 3>{false, false, false})) << "no file: all off";
    auto prefs = CopyUserPreferences(kJobNotesFile);
    ASSERT_TRUE(prefs);
    EXPECT_EQ(prefs->getInt("useDocumentNameAsJobName"), 1);
    EXPECT_EQ(prefs->getInt("useLoginNameAsSenderName"), 0);
    EXPECT_EQ(prefs->getInt("useLoginNameAsRecipientName"), 1);
    EXPECT_EQ(answer({false, false, false}, false), (std::array<bool, 3>{true, false, true}));
    EXPECT_EQ(answer({false, true, false}, true), (std::array<bool, 3>{true, false, true})) << "Cancel kept the file";

    // A new panel starts from the stored defaults.
    close();
    open();
    EXPECT_EQ(box(1)->currentText(), "");
    EXPECT_EQ(box(2)->currentText(), "Use Login Name");
    EXPECT_EQ(box(3)->currentText(), "");
}

TEST_F(JobNotesPanel, SummarySaysWhatTheJobCarries)
{
    enter(1, "");
    enter(2, "Ann");
    setMessages("Call me", "");
    pl::ArrayPtr titles, texts;
    ASSERT_EQ(ops_.GetSummaryText(context_, &titles, &texts), noErr);
    ASSERT_TRUE(titles && texts);
    std::vector<std::string> lines;
    for (size_t i = 0; i < titles->size() && i < texts->size(); ++i)
        lines.push_back(pl::as<pl::String>(titles->at(i))->text + ": " + pl::as<pl::String>(texts->at(i))->text);
    const std::string login = ConsoleUserName();
    EXPECT_EQ(lines, (std::vector<std::string>{"Job Name: The document's name", "Sender Name: " + login,
                                               "Recipient Name: " + login, "Message: Call me"}));
}

} // namespace
