// The Booklet and Watermark panel of the loaded bundle through its record: the default
// watermarks, the chosen watermark in the ticket and its font in the watermark file, the
// booklet settings both ways and the preview.
#include "marking/marking.h"
#include "panels/bookletwatermark/bookletwatermark-settings.h"
#include "tests/plugin/loaded-bundle.h"
#include "ticket/ticket.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <unistd.h>

using namespace talmo;

namespace {

constexpr uint32_t kBWmk = FourCC("BWmk");

class BookletWatermarkPanel : public LoadedBundle {
protected:
    void SetUp() override
    {
        home_ = ::testing::TempDir() + "bookletwatermark-home-" + std::to_string(::getpid());
        std::filesystem::remove_all(home_);
        for (const char* v : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
            ::setenv(v, (home_ + "/" + v).c_str(), 1);
        ::setenv("XDG_DATA_DIRS", (home_ + "/none").c_str(), 1);
        ops_ = panelOperations("GetBookletWatermarkPanelInterface");
        ASSERT_TRUE(ops_.Prologue);
    }
    void TearDown() override
    {
        close();
        std::filesystem::remove_all(home_);
    }
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
    template <class T> T* control(int id) { return GetControlByID<T>(pane_.get(), {kBWmk, id}); }
    // The names offered before the first separator, "None" first.
    QStringList offered()
    {
        QStringList names;
        for (QAction* a : control<QPushButton>(1)->menu()->actions()) {
            if (a->isSeparator())
                break;
            names << a->text();
        }
        return names;
    }
    void choose(const QString& text, bool inOptions = false)
    {
        QMenu* menu = control<QPushButton>(1)->menu();
        for (QAction* a : menu->actions())
            if (inOptions && a->menu())
                menu = a->menu();
        for (QAction* a : menu->actions())
            if (a->text() == text)
                return a->trigger();
        ADD_FAILURE() << "no menu row " << text.toStdString();
    }
    bool previewBlank()
    {
        const QImage page = control<QLabel>(2)->pixmap().toImage();
        for (int y = 0; y < page.height(); ++y)
            for (int x = 0; x < page.width(); ++x)
                if (page.pixel(x, y) != qRgb(255, 255, 255))
                    return false;
        return !page.isNull();
    }
    Ticket& ticket() { return session_.printSettings(); }
    // Runs a menu command whose dialog gets `text` typed and then OK, or a message box (whose
    // text is kept) its `button`; the dialog is closed with Cancel when a message kept it open.
    void runDialog(const QString& row, const QString& text, QMessageBox::StandardButton button = QMessageBox::Ok)
    {
        QTimer::singleShot(0, [this, text, button] {
            QWidget* modal = QApplication::activeModalWidget();
            ASSERT_TRUE(modal);
            if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                messages_ << box->text();
                return box->button(button)->click();
            }
            modal->findChild<QLineEdit*>("text")->setText(text);
            QTimer::singleShot(0, [this, modal] {
                if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                    messages_ << box->text();
                    box->accept();
                    QTimer::singleShot(0, [modal] { modal->findChild<QPushButton*>("cancel")->click(); });
                }
            });
            modal->findChild<QPushButton*>("ok")->click();
        });
        choose(row);
    }
    QStringList messages_;

    std::string home_;
    PlugInIntfVTable ops_{};
    PMPDEContext context_ = nullptr;
    std::unique_ptr<QWidget> pane_;
    PrintSession session_;
};

TEST_F(BookletWatermarkPanel, DefaultWatermarksAreCreatedOnlyForAnEmptyList)
{
    _WatermarkData mine;
    mine.isText = 1;
    setWatermarkText(mine.textString, "MINE");
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, mine));
    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {"MINE"}));
    open();
    EXPECT_EQ(offered(), QStringList({"None", "MINE"}));
    close();

    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {}));
    open();
    EXPECT_EQ(offered(), QStringList({"None", "DRAFT", "CONFIDENTIAL", "COPY"}));
    ASSERT_EQ(loadWatermarkList(kWatermarksFile), 3u);
    EXPECT_EQ(listOfWatermarks()[0], "DRAFT");
}

TEST_F(BookletWatermarkPanel, TheChosenWatermarkReachesTheTicketAndItsFontTheFile)
{
    open();
    EXPECT_TRUE(previewBlank());
    choose("CONFIDENTIAL");
    choose("Blend with Page", true);
    choose("Print on First Page Only", true);
    EXPECT_FALSE(previewBlank());
    EXPECT_EQ(control<QPushButton>(1)->text(), "CONFIDENTIAL");
    ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
    std::string name;
    int32_t option = 0, firstOnly = 0;
    EXPECT_EQ(TicketGetString(&ticket(), kWatermarkKey, &name), noErr);
    EXPECT_EQ(TicketGetInt32(&ticket(), kWatermarkOptionKey, &option), noErr);
    EXPECT_EQ(TicketGetInt32(&ticket(), kWatermarkFirstPageOnlyKey, &firstOnly), noErr);
    EXPECT_EQ(name, "CONFIDENTIAL");
    EXPECT_EQ(option, 2);
    EXPECT_EQ(firstOnly, 1);
    std::string program;
    ASSERT_TRUE(loadFontData(kWatermarksFile, "ArialMT", program));
    EXPECT_NE(program.find("/FontType 42"), std::string::npos);
    // Ghostscript draws the watermark with the stored subset as with the whole font file.
    const FontFile font = findFontByPostScriptName("ArialMT").value();
    auto draw = [this](const std::string& font) {
        const std::string show = " findfont 40 scalefont setfont 5 15 moveto (CONFIDENTIAL) show showpage\"";
        EXPECT_EQ(
            std::system(("gs -q -dNOSAFER -sDEVICE=pgmraw -g420x60 -o " + home_ + "/drawn.pgm " + font + show).c_str()),
            0);
        std::ifstream in(home_ + "/drawn.pgm", std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(in), {}};
    };
    std::ofstream(home_ + "/stored.t42") << program;
    const std::string stored = draw(home_ + "/stored.t42 -c \"/TL-ArialMT-TL");
    EXPECT_GT(std::count_if(stored.begin(), stored.end(), [](char v) { return uint8_t(v) < 128; }), 500);
    EXPECT_EQ(stored, draw("-c \"(" + font.path + ") (r) file .loadfont /" + font.postScriptName));

    // A reload checks the rows it shows; "None" then removes all three keys.
    ops_.Sync(context_, &session_, true);
    for (QAction* a : control<QPushButton>(1)->menu()->actions())
        EXPECT_EQ(a->isChecked(), a->text() == "CONFIDENTIAL") << a->text().toStdString();
    // An unknown layering reads as the background one.
    TicketSetInt32(&ticket(), kWatermarkOptionKey, 9, kTalmoPanelCreator);
    ops_.Sync(context_, &session_, true);
    QStringList checked;
    for (QAction* a : control<QPushButton>(1)->menu()->actions())
        for (QAction* option : a->menu() ? a->menu()->actions() : QList<QAction*>())
            if (option->isChecked())
                checked << option->text();
    EXPECT_EQ(checked, QStringList({"Print in Background", "Print on First Page Only"}));
    choose("None");
    EXPECT_TRUE(previewBlank());
    ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
    for (const char* key : {kWatermarkKey, kWatermarkOptionKey, kWatermarkFirstPageOnlyKey})
        EXPECT_FALSE(ticket().get(key)) << key;
}

TEST_F(BookletWatermarkPanel, BookletSettingsTravelBothWays)
{
    open();
    struct {
        int gutter, creep;
        bool outlines, newSize;
    } const rows[] = {{0, 0, false, false}, {18, 4, true, false}, {72, 36, false, true}, {1, 0, true, true}};
    for (const auto& row : rows) {
        control<QSpinBox>(3)->setValue(row.gutter);
        control<QSpinBox>(4)->setValue(row.creep);
        control<QCheckBox>(5)->setChecked(row.outlines);
        control<QCheckBox>(6)->setChecked(row.newSize);
        ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
        int32_t gutter = 0, creep = 0;
        bool newSize = false;
        EXPECT_EQ(TicketGetInt32(&ticket(), kGutterKey, &gutter) == noErr, row.gutter > 0);
        EXPECT_EQ(TicketGetInt32(&ticket(), kCreepKey, &creep) == noErr, row.creep > 0);
        EXPECT_EQ(ticket().get(kBookletDrawOutlinesKey) != nullptr, row.outlines);
        EXPECT_EQ(TicketGetBool(&ticket(), kBookletForceNewSizeKey, &newSize) == noErr && newSize, row.newSize);
        EXPECT_EQ(gutter, row.gutter);
        EXPECT_EQ(creep, row.creep);

        control<QSpinBox>(3)->setValue(9); // the reload must replace what the controls show
        control<QCheckBox>(5)->setChecked(!row.outlines);
        ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr);
        EXPECT_EQ(control<QSpinBox>(3)->value(), row.gutter);
        EXPECT_EQ(control<QSpinBox>(4)->value(), row.creep);
        EXPECT_EQ(control<QCheckBox>(5)->isChecked(), row.outlines);
        EXPECT_EQ(control<QCheckBox>(6)->isChecked(), row.newSize);
    }
    pl::ArrayPtr titles, texts;
    ASSERT_EQ(ops_.GetSummaryText(context_, &titles, &texts), noErr);
    ASSERT_EQ(titles->size(), 3u); // gutter, outlines and new size of the last row; no creep
    EXPECT_EQ(pl::as<pl::String>(titles->at(0))->text, "Booklet Gutter");
    EXPECT_EQ(pl::as<pl::String>(texts->at(0))->text, "1 pt");
}

TEST_F(BookletWatermarkPanel, TheEditorAddsRenamesAndDeletesWatermarks)
{
    open();
    runDialog("New...", "PROOF");
    EXPECT_EQ(offered(), QStringList({"None", "DRAFT", "CONFIDENTIAL", "COPY", "PROOF"}));
    EXPECT_EQ(control<QPushButton>(1)->text(), "PROOF");
    _WatermarkData record;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, "PROOF", record));
    EXPECT_EQ(record.density, 25);

    choose("CONFIDENTIAL");
    runDialog("Edit...", "SECRET");
    EXPECT_EQ(offered(), QStringList({"None", "DRAFT", "SECRET", "COPY", "PROOF"}));
    ASSERT_EQ(loadWatermarkList(kWatermarksFile), 4u);
    EXPECT_EQ(listOfWatermarks()[1], "SECRET");
    EXPECT_FALSE(loadWatermarkData(kWatermarksFile, "CONFIDENTIAL", record));
    EXPECT_TRUE(loadWatermarkData(kWatermarksFile, "SECRET", record));

    // A name in use or an empty one keeps the dialog open with a message; nothing changes.
    for (const QString& name : {QString("DRAFT"), QString()}) {
        runDialog("New...", name);
        EXPECT_EQ(messages_.size(), 1) << name.toStdString();
        messages_.clear();
    }
    EXPECT_EQ(offered(), QStringList({"None", "DRAFT", "SECRET", "COPY", "PROOF"}));
    EXPECT_EQ(control<QPushButton>(1)->text(), "SECRET");
    // The refused dialog drew "DRAFT" in its preview; the stored record stays as it was.
    _WatermarkData draft;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, "DRAFT", draft));
    EXPECT_TRUE(draft.glyphs.empty());

    runDialog("Delete", {}, QMessageBox::No);
    EXPECT_EQ(offered().size(), 5);
    runDialog("Delete", {}, QMessageBox::Yes);
    EXPECT_EQ(messages_.size(), 2);
    EXPECT_EQ(offered(), QStringList({"None", "DRAFT", "COPY", "PROOF"}));
    EXPECT_EQ(control<QPushButton>(1)->text(), "None");
    EXPECT_FALSE(loadWatermarkData(kWatermarksFile, "SECRET", record));
    ASSERT_EQ(loadWatermarkList(kWatermarksFile), 3u);
}

// The preview's text sits an inch right of the page centre, in the well colour at a quarter.
TEST_F(BookletWatermarkPanel, PreviewPlacesTheTextByItsOffsetAndDensity)
{
    _WatermarkData r;
    r.isText = 1;
    setWatermarkText(r.textString, "HI");
    setWatermarkText(r.fontName, "DejaVuSans");
    std::tie(r.fontSize, r.angle, r.density, r.xOffset) = std::tuple(144, 0, 25, 1.0f);
    std::tie(r.wellColor, r.fontColor) = std::tuple(WatermarkColor{0, 0, 0, 1}, WatermarkColor{1, 0, 0, 1});
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {"HI"}));
    open();
    choose("HI");
    const QImage page = control<QLabel>(2)->pixmap().toImage();
    const double scale = std::min(page.width() / 612.0, page.height() / 792.0);
    QRect ink;
    int darkest = 255;
    for (int y = 0; y < page.height(); ++y)
        for (int x = 0; x < page.width(); ++x)
            if (const int grey = qGray(page.pixel(x, y)); grey < 250)
                ink |= QRect(x, y, 1, 1), darkest = std::min(darkest, grey);
    EXPECT_NEAR(ink.left() + ink.width() / 2.0, page.width() / 2.0 + 72 * scale, 1.5);
    EXPECT_EQ(darkest, 191) << "black at a quarter over white";
}

TEST(BookletWatermarkPreview, ThePageIsTheJobStocksSize)
{
    struct {
        int32_t size, width, length; // hundredths of a millimetre for a custom size
        double points[2];
    } const rows[] = {{4, kNotSet, kNotSet, {595, 842}},
                      {kStockSizeCustom, 10000, 25400, {283.46, 720}},
                      {kStockSizeCustom, kNotSet, kNotSet, {612, 792}},
                      {9999, kNotSet, kNotSet, {612, 792}}};
    for (const auto& row : rows) {
        Ticket ticket;
        Stock stock;
        stock.setSize(row.size);
        if (row.width != kNotSet) {
            stock.setWidth(row.width);
            stock.setLength(row.length);
        }
        ASSERT_EQ(TicketSetDict(&ticket, kJobLevelStockKey, stock.asTicket(), kTalmoPanelCreator), noErr);
        const auto paper = bookletwatermark::PreviewPaperSize(&ticket);
        EXPECT_NEAR(paper.width, row.points[0], 0.01) << row.size;
        EXPECT_NEAR(paper.height, row.points[1], 0.01) << row.size;
    }
    EXPECT_EQ(bookletwatermark::PreviewPaperSize(nullptr).width, 612);
}

} // namespace
