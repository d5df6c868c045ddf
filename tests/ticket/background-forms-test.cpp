#include "../settings/prefs-fixture.h"
#include "ticket/ticket.h"

using namespace talmo;

namespace {

// Every test runs in a private home without history.
class BackgroundFormsTest : public test::PrefsHome {
protected:
    std::string userFile() const { return prefsFile(kBackgroundFormsFile); }
    std::string shippedFeatures() const { return root_ + "/sys1/talmo/" + kTalmoFeaturesFile; }
    pl::DictPtr readUserFile() const { return pl::as<pl::Dictionary>(pl::readPlistFile(userFile())); }
    static pl::ArrayPtr strings(std::initializer_list<const char*> items)
    {
        auto a = pl::makeArray();
        for (const char* s : items)
            a->append(pl::makeString(s));
        return a;
    }
    static std::string history(const pl::ArrayPtr& existing, const pl::ArrayPtr& created)
    {
        auto d = pl::makeDict();
        d->set("ExistingFormsArray", existing);
        d->set("NewFormsArray", created);
        return pl::writePlist(d);
    }
    // The two history arrays, as the dialogs get them.
    static pl::ArrayPtr existingOf(const BackgroundFormsOptions& o, bool newForms = false)
    {
        pl::ArrayPtr a;
        EXPECT_EQ(newForms ? o.newFormsArray(&a) : o.existingFormsArray(&a), noErr);
        return a;
    }
    static pl::ArrayPtr newOf(const BackgroundFormsOptions& o) { return existingOf(o, true); }
};

TEST_F(BackgroundFormsTest, DictionaryHoldsTheFieldsAndTheNameOfTheChosenForm)
{
    BackgroundFormsOptions o;
    const std::string defaults =
        "<key>UseExistingForm</key><integer>1</integer><key>CyclePages</key><integer>2</integer>"
        "<key>Inches</key><integer>1</integer><key>X1</key><integer>0</integer><key>Y1</key>"
        "<integer>0</integer><key>UseDocumentName</key><integer>1</integer><key>ApplyPagesFrom"
        "</key><integer>1</integer>";
    EXPECT_EQ(pl::writePlist(o.asTicket()),
              pl::writePlist(pl::readPlist("<plist><dict>" + defaults + "</dict></plist>")));
    o.setMergeWithString("Letterhead");
    o.setNewFormString("Invoice");
    EXPECT_FALSE(o.asTicket()->contains("MergeWithString")); // a new form is being made
    EXPECT_EQ(o.asTicket()->getString("NewFormString"), "Invoice");
    o.setUseExistingForm(2);
    EXPECT_EQ(o.asTicket()->entries()[1].first, "MergeWithString");
}

TEST_F(BackgroundFormsTest, CyclePagesCheckedTakesOnlyRepeatPagesAndApplyRowsSetThem)
{
    const struct {
        int32_t value;
        bool unchecked;
        OSStatus expected;
    } cycles[] = {{1, false, paramErr},
                  {1, true, noErr},
                  {0, true, noErr},
                  {2, false, noErr},
                  {999999, false, noErr},
                  {1000000, false, paramErr},
                  {INT32_MIN, false, paramErr},
                  {1000000, true, noErr}};
    for (const auto& c : cycles) {
        BackgroundFormsOptions o;
        o.setCyclePages(77, false);
        EXPECT_EQ(o.setCyclePages(c.value, c.unchecked), c.expected) << c.value;
        int32_t v = 0;
        o.cyclePages(&v);
        EXPECT_EQ(v, c.expected == noErr ? c.value : 77) << c.value;
    }
    const struct {
        int32_t row, fromPage;
        OSStatus expected;
        int32_t apply, cycle;
    } rows[] = {{1, 0, noErr, 1, 1},     {2, 500, noErr, 2, 0},         {3, 999999, noErr, 3, 999999},
                {3, 1, paramErr, 3, 77}, {3, 1000000, paramErr, 3, 77}, {4, 5, paramErr, 3, 77}};
    for (const auto& r : rows) {
        BackgroundFormsOptions o;
        o.setApplyPagesFrom(3);
        o.setCyclePages(77, false);
        EXPECT_EQ(ApplyBackgroundFormsPages(o, r.row, r.fromPage), r.expected) << r.row << " " << r.fromPage;
        int32_t apply = 0, cycle = 0;
        o.applyPagesFrom(&apply), o.cyclePages(&cycle);
        EXPECT_EQ(std::make_pair(apply, cycle), std::make_pair(r.apply, r.cycle)) << r.row << " " << r.fromPage;
    }
    EXPECT_EQ(BackgroundFormsRepeatSpinValue(1), 2);
    EXPECT_EQ(BackgroundFormsRepeatSpinValue(40), 40);
}

TEST_F(BackgroundFormsTest, FromTicketRoundTripsAndResetsWhatTheDictionaryLacks)
{
    BackgroundFormsOptions o;
    o.setUseExistingForm(2), o.setCyclePages(0, true), o.setInches(0), o.setXOffset(-4880), o.setYOffset(3300);
    o.setUseDocumentName(0), o.setApplyPagesFrom(2), o.setMergeWithString("Form \xC3\xA9"), o.setNewFormString("N");
    EXPECT_EQ(BackgroundFormsOptions(pl::as<pl::Dictionary>(pl::readPlist(pl::writePlist(o.asTicket())))), o);

    o.fromTicket(nullptr); // nothing changes
    EXPECT_EQ(BackgroundFormsOptions(o.asTicket()), o);
    auto inchesOnly = pl::makeDict();
    inchesOnly->setInt("Inches", 0);
    o.fromTicket(inchesOnly);
    BackgroundFormsOptions expected;
    expected.setInches(0);
    EXPECT_EQ(o, expected);

    auto bad = pl::makeDict();
    bad->setString("UseExistingForm", "2");
    bad->setReal("CyclePages", 3.5);
    bad->setInt("X1", int64_t(1) << 40);
    bad->set("Y1", pl::makeDict());
    bad->setInt("NewFormString", 4);
    EXPECT_EQ(BackgroundFormsOptions(bad), BackgroundFormsOptions());
}

TEST_F(BackgroundFormsTest, StoredInTheTicketOnlyForTheBackgroundFormJobType)
{
    Ticket ticket;
    BackgroundFormsOptions o;
    o.setNewFormString("Invoice");
    ASSERT_EQ(WriteBackgroundFormsToTicket(o, 9, &ticket), noErr);
    EXPECT_TRUE(pl::equal(ticket.get(kBackgroundFormsOptionsKey), o.asTicket()));
    EXPECT_EQ(ticket.creatorOf(kBackgroundFormsOptionsKey), "com.talmo.print");
    // Another job type leaves no forms behind, not even those of an earlier save.
    EXPECT_EQ(WriteBackgroundFormsToTicket(o, 3, &ticket), noErr);
    EXPECT_FALSE(ticket.contains(kBackgroundFormsOptionsKey));
    ASSERT_EQ(ticket.set(kBackgroundFormsOptionsKey, pl::makeDict(), "x", true), noErr);
    EXPECT_EQ(WriteBackgroundFormsToTicket(o, 9, &ticket), kPMTicketItemLocked);
    EXPECT_EQ(WriteBackgroundFormsToTicket(o, 9, nullptr), paramErr);
}

TEST_F(BackgroundFormsTest, HistoryComesFromTheUserThenTheFeatureFile)
{
    EXPECT_TRUE(existingOf(BackgroundFormsOptions())->empty()); // no file anywhere
    std::filesystem::remove(userFile());                        // the record saved its empty history
    auto shipped = strings({"Shipped A"});
    shipped->append(pl::makeInt(7)); // not a string: dropped
    writeRaw(shippedFeatures(), history(shipped, strings({"Shipped New"})));
    EXPECT_TRUE(pl::equal(existingOf(BackgroundFormsOptions()), strings({"Shipped A"})));
    EXPECT_TRUE(pl::equal(newOf(BackgroundFormsOptions()), strings({"Shipped New"})));
    writeRaw(userFile(), history(strings({"Mine"}), nullptr)); // a null array stays out
    EXPECT_TRUE(pl::equal(existingOf(BackgroundFormsOptions()), strings({"Mine"})));
    EXPECT_TRUE(newOf(BackgroundFormsOptions())->empty()); // missing in the file used
    writeRaw(userFile(), "<plist><dict><key>broken");      // damaged: the shipped history again
    EXPECT_TRUE(pl::equal(existingOf(BackgroundFormsOptions()), strings({"Shipped A"})));
}

TEST_F(BackgroundFormsTest, DestroyingAnyCopySavesTheSharedHistoryKeepingOtherEntries)
{
    auto prefs = pl::as<pl::Dictionary>(pl::readPlist(history(strings({"A"}), strings({"N"}))));
    prefs->setString("Unrelated", "kept");
    writeRaw(userFile(), pl::writePlist(prefs));
    {
        BackgroundFormsOptions a;
        BackgroundFormsOptions b(a);
        BackgroundFormsOptions c;
        c = a;
        existingOf(b)->insert(0, pl::makeString("B")); // the dialogs add names in place
        newOf(c)->append(pl::makeString("N2"));
        // a, b and c all go; whichever goes last, the names added through the others stay.
    }
    auto saved = readUserFile();
    ASSERT_TRUE(saved);
    EXPECT_TRUE(pl::equal(saved->get("ExistingFormsArray"), strings({"B", "A"})));
    EXPECT_TRUE(pl::equal(saved->get("NewFormsArray"), strings({"N", "N2"})));
    EXPECT_EQ(saved->getString("Unrelated"), "kept");
    {
        BackgroundFormsOptions fromNull{pl::DictPtr()};
    } // loads the history before saving it
    EXPECT_TRUE(pl::equal(existingOf(BackgroundFormsOptions(pl::makeDict())), strings({"B", "A"})));
}

} // namespace
