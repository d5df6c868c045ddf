// The Image Options panel of the loaded bundle, driven through its own record: what a save
// writes into the print settings ticket, what a reload shows, and the tone curve history.
#include "tests/plugin/loaded-bundle.h"
#include "ticket/full-color.h"
#include "ticket/image-shift.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>

#include <filesystem>

#include <unistd.h>

using namespace talmo;

namespace {

constexpr uint32_t kImg = FourCC("TImg");
enum { kColorSummary = 1, kAntialiasing = 3, kResolution = 4, kHalftone = 5, kTRC = 6, kNegative = 7, kMirror = 8 };

class ImageOptionsPanel : public LoadedBundle {
protected:
    void SetUp() override
    {
        home_ = ::testing::TempDir() + "imageoptions-home-" + std::to_string(::getpid()); // tests run side by side
        std::filesystem::remove_all(home_);
        ::setenv("XDG_CONFIG_HOME", home_.c_str(), 1);
        ops_ = panelOperations("GetImageOptionsPanelInterface");
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
    void save() { ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr); }
    void reload() { ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr); }

    QComboBox* popup(int id) { return GetControlByID<QComboBox>(pane_.get(), {kImg, id}); }
    QCheckBox* check(int id) { return GetControlByID<QCheckBox>(pane_.get(), {kImg, id}); }
    // The bundle keeps its own copy of the toolkit, so the popups are read through their item data.
    int32_t shown(int id) { return popup(id)->currentData(kItemReferenceRole).toInt(); }
    bool select(int id, int32_t value)
    {
        const int index = popup(id)->findData(value, kItemReferenceRole);
        popup(id)->setCurrentIndex(index);
        return index >= 0;
    }
    std::optional<int64_t> number(const char* key)
    {
        auto n = pl::as<pl::Integer>(ticket().get(key));
        return n ? std::optional<int64_t>(n->value) : std::nullopt;
    }
    pl::DictPtr dict(const char* key) { return pl::as<pl::Dictionary>(ticket().get(key)); }
    Ticket& ticket() { return session_.printSettings(); }

    std::string home_;
    PlugInIntfVTable ops_{};
    PMPDEContext context_ = nullptr;
    std::unique_ptr<QWidget> pane_;
    PrintSession session_;
};

TEST_F(ImageOptionsPanel, EveryControlRoundTripsThroughTheTicketWithCreatorT)
{
    struct {
        int32_t antialiasing, resolution, halftone;
        const char* trc; // empty: the "PrinterDefault" row
        bool negative, mirror;
    } const rows[] = {
        {kNotSet, kNotSet, kNotSet, "", false, false},
        {1, 2, 7, "Gamma 2.2", true, false},
        {2, kNotSet, 14, "Press curve", false, true},
        {kNotSet, 2, 12, "", true, true},
    };
    // An image shift from elsewhere is written back by the panel as its own.
    _IS_Options shift;
    shift.option = kImageShiftIndependent;
    shift.x1 = 25;
    ticket().set(kImageShiftOptionsJobKey, ImageShiftCreateTicketFromOptions(&shift), "other");
    reload();
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.trc) + "/" + std::to_string(row.halftone));
        ASSERT_TRUE(select(kAntialiasing, row.antialiasing));
        ASSERT_TRUE(select(kResolution, row.resolution));
        ASSERT_TRUE(select(kHalftone, row.halftone));
        if (*row.trc)
            popup(kTRC)->setEditText(row.trc);
        else
            popup(kTRC)->setCurrentIndex(0);
        check(kNegative)->setChecked(row.negative);
        check(kMirror)->setChecked(row.mirror);
        save();

        EXPECT_EQ(number(kAntialiasingKey), row.antialiasing);
        EXPECT_EQ(number(kResolutionKey), row.resolution);
        EXPECT_EQ(number(kHalftoneScreenKey), row.halftone);
        auto invert = dict(kInvertImageOptionsKey);
        ASSERT_TRUE(invert);
        EXPECT_EQ(invert->getInt("NegativeImage"), row.negative ? 1 : 0);
        EXPECT_EQ(invert->getInt("MirrorImage"), row.mirror ? 1 : 0);
        auto color = dict(kFullColorOptionsKey);
        ASSERT_TRUE(color);
        auto trc = pl::as<pl::String>(color->get("FCTRC"));
        EXPECT_EQ(trc ? trc->text : "", row.trc);
        for (const char* key : {kAntialiasingKey, kResolutionKey, kHalftoneScreenKey, kInvertImageOptionsKey,
                                kFullColorOptionsKey, kImageShiftOptionsJobKey})
            EXPECT_EQ(ticket().creatorOf(key), "T") << key;

        // Scramble the controls; a reload brings back what was saved.
        select(kAntialiasing, row.antialiasing == 1 ? 2 : 1);
        select(kResolution, row.resolution == 2 ? kNotSet : 2);
        select(kHalftone, row.halftone == 6 ? 8 : 6);
        popup(kTRC)->setEditText("scrambled");
        check(kNegative)->setChecked(!row.negative);
        check(kMirror)->setChecked(!row.mirror);
        reload();
        EXPECT_EQ(shown(kAntialiasing), row.antialiasing);
        EXPECT_EQ(shown(kResolution), row.resolution);
        EXPECT_EQ(shown(kHalftone), row.halftone);
        EXPECT_EQ(popup(kTRC)->currentText(), *row.trc ? QString(row.trc) : QString("Printer Default"));
        EXPECT_EQ(check(kNegative)->isChecked(), row.negative);
        EXPECT_EQ(check(kMirror)->isChecked(), row.mirror);
    }
}

TEST_F(ImageOptionsPanel, ReloadFillsMissingResolutionAndKeepsMissingInvertFlags)
{
    ASSERT_TRUE(select(kResolution, 2));
    ASSERT_TRUE(select(kHalftone, 11));
    check(kNegative)->setChecked(false);
    check(kMirror)->setChecked(true);
    save();
    ticket().remove(kResolutionKey);
    ticket().remove(kHalftoneScreenKey);
    auto invert = pl::makeDict();
    invert->set("NegativeImage", pl::makeInt(1));
    ticket().set(kInvertImageOptionsKey, invert, "T");
    ticket().set(kAntialiasingKey, pl::makeInt(9), "T"); // a value the popup does not offer
    reload();
    EXPECT_EQ(shown(kResolution), kNotSet) << "a missing resolution is printer default";
    EXPECT_EQ(shown(kHalftone), 11) << "a missing halftone screen keeps the panel's";
    EXPECT_EQ(shown(kAntialiasing), kNotSet);
    EXPECT_TRUE(check(kNegative)->isChecked());
    EXPECT_TRUE(check(kMirror)->isChecked());
}

TEST_F(ImageOptionsPanel, SavedCurveNamesJoinTheHistoryNewestFirst)
{
    for (const char* name : {"Gamma 1.8", "Press curve", "Gamma 1.8"}) {
        popup(kTRC)->setEditText(name);
        save();
    }
    popup(kTRC)->setCurrentIndex(0);
    save(); // the map row adds nothing
    auto history = CopyUserPreferences(kInputHistoryFile);
    ASSERT_TRUE(history);
    auto curves = history->getArray("TRCInputHistory");
    ASSERT_TRUE(curves);
    std::vector<std::string> stored;
    for (const auto& v : *curves)
        stored.push_back(pl::as<pl::String>(v)->text);
    EXPECT_EQ(stored, (std::vector<std::string>{"Press curve", "Gamma 1.8"}));

    // A new panel offers them after the map row.
    close();
    open();
    QStringList items;
    for (int i = 0; i < popup(kTRC)->count(); ++i)
        items << popup(kTRC)->itemText(i);
    EXPECT_EQ(items, (QStringList{"Printer Default", "Press curve", "Gamma 1.8"}));
}

TEST_F(ImageOptionsPanel, SummaryShowsTheColourAndEachChoice)
{
    FullColorOptions color;
    ASSERT_EQ(color.setLightness(20), noErr);
    ticket().set(kFullColorOptionsKey, color.asTicket(), "T");
    ticket().set(kHalftoneScreenKey, pl::makeInt(14), "T");
    reload();
    auto* summary = GetControlByID<QLabel>(pane_.get(), {kImg, kColorSummary});
    EXPECT_TRUE(summary->text().contains("20")) << summary->text().toStdString();
    check(kMirror)->setChecked(true);
    pl::ArrayPtr titles, texts;
    ASSERT_EQ(ops_.GetSummaryText(context_, &titles, &texts), noErr);
    ASSERT_TRUE(titles && texts);
    std::map<std::string, std::string> lines;
    for (size_t i = 0; i < titles->size() && i < texts->size(); ++i)
        lines[pl::as<pl::String>(titles->at(i))->text] = pl::as<pl::String>(texts->at(i))->text;
    EXPECT_NE(lines["Color"].find("20"), std::string::npos);
    EXPECT_EQ(lines["Anti-aliasing"], "Printer Default");
    EXPECT_EQ(lines["Halftone screen"], "Stochastic");
    EXPECT_EQ(lines["Invert image"], "Mirror");
    EXPECT_EQ(lines["Image shift"], "Printer Default");
}

} // namespace
