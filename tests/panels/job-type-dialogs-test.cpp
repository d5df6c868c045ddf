// The job type setup dialogs and the background forms dialog, typed into by control id; what
// they store is checked through the TPIF the writer makes of it.
#include "panels/dialogs/background-forms-dialog.h"
#include "panels/dialogs/job-type-dialogs.h"
#include "toolkit/toolkit-fixture.h"
#include "tpif/tpif-test-util.h"

#include <QtWidgets>

using namespace talmo;
using JobTypeDialogTest = talmo::test::ToolkitTest;

namespace {

constexpr uint32_t kJob = FourCC("JTyp");
constexpr uint32_t kForms = FourCC("BFrm");

template <class T> T* control(QDialog* d, uint32_t signature, int id) { return GetControlByID<T>(d, {signature, id}); }
void click(QDialog* d, uint32_t signature, int id) { control<QPushButton>(d, signature, id)->click(); }

// Runs `user` inside the next modal dialog's event loop; a dialog it leaves open is cancelled.
void whenShown(std::function<void(QDialog*)> user)
{
    QTimer::singleShot(0, [user] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_TRUE(dialog) << "no dialog";
        user(dialog);
        if (dialog->isVisible())
            dialog->reject();
    });
}

std::string exportJobType(const pl::DictPtr& jobType)
{
    auto ticket =
        tpiftest::plistDict("<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key><true/></dict>"
                            "<key>com.apple.print.JobInfo.PMJobName</key><string>Report.pdf</string>");
    ticket->set("com.talmo.print.JobType", jobType);
    return tpiftest::render(ticket);
}

} // namespace

TEST_F(JobTypeDialogTest, TypedSettingsReachTheTpifAndNothingElseIsKept)
{
    struct Case {
        int32_t type;
        const char *name, *location; // no name: the document's
        int32_t format;              // a _JobFormatMap value
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {3, "Q3 <draft>", "file:///q3/", 5, {"print-save", ">Q3 &lt;draft&gt;</", ">file:///q3/<", "-dri<"}},
        {3, nullptr, "", kNotSet, {"save-only", ">Report.pdf</save-name>", ">file:///job-repository/<"}},
        {4, "Payroll", "", 1, {"print-save", ">Payroll</save-name>", "X-single-page-tiff<"}},
        {5, "", "", 0, {"<save-disposition syntax=\"keyword\">none</save-disposition>"}},
    };
    for (const Case& c : cases) {
        auto dict = pl::makeDict();
        dict->setString("SavedJobName", "stale"), dict->setInt("SaveDisposition", 2);
        whenShown([&c](QDialog* d) {
            if (c.type <= 4) {
                control<QLineEdit>(d, kJob, 4)->clear();
                click(d, kJob, 92);
                EXPECT_TRUE(d->isVisible()) << "saved without a name";
                control<QLineEdit>(d, kJob, 4)->setText(c.name ? c.name : "");
                control<QCheckBox>(d, kJob, 3)->setChecked(!c.name);
                control<QLineEdit>(d, kJob, 5)->setText(c.location);
                control<QRadioButton>(d, kJob, c.expected[0] == "save-only" ? 1 : 2)->setChecked(true);
                EXPECT_TRUE(SetPopupButtonToTicketValue(control<QComboBox>(d, kJob, 6), c.format));
            }
            click(d, kJob, 92);
        });
        BackgroundFormsOptions forms;
        ASSERT_TRUE(RunModalJobTypeSetupDialog(nullptr, bundle(), c.type, dict, forms)) << c.type;
        const std::string tpif = exportJobType(dict);
        for (const std::string& part : c.expected)
            EXPECT_NE(tpif.find(part), std::string::npos) << c.type << ": " << part << " not in\n" << tpif;
        EXPECT_EQ(tpif.find("stale"), std::string::npos);
        EXPECT_TRUE(c.type <= 4 || dict->size() == 1) << "more than the type kept";
    }
}

TEST_F(JobTypeDialogTest, CancelChangesNothing)
{
    for (int32_t type : {3, 4, 6, 9}) {
        auto dict = pl::makeDict();
        dict->setInt("JobType", type), dict->setString("SavedJobName", "Kept");
        const pl::DictPtr before = pl::deepCopy(dict);
        BackgroundFormsOptions forms;
        const BackgroundFormsOptions formsBefore = forms;
        whenShown([](QDialog* d) {
            for (QLineEdit* field : d->findChildren<QLineEdit*>())
                field->setText("12");
            click(d, GetControlID(d->findChild<QPushButton*>()).signature, 91);
        });
        EXPECT_FALSE(RunModalJobTypeSetupDialog(nullptr, bundle(), type, dict, forms)) << type;
        EXPECT_TRUE(pl::equal(dict, before)) << type;
        EXPECT_TRUE(forms == formsBefore) << type;
    }
}

TEST_F(JobTypeDialogTest, FormsDialogKeepsHistoryUniqueAndBoundedAndConvertsUnits)
{
    BackgroundFormsOptions forms;
    auto existing = pl::makeArray();
    for (int i = 0; i <= int(kFormHistoryLimit); ++i) // one more than is kept
        existing->append(pl::makeString("F" + std::to_string(i)));
    forms.setExistingFormsArray(existing), forms.setXOffset(1921), forms.setYOffset(-50);
    whenShown([](QDialog* d) {
        control<QRadioButton>(d, kForms, 2)->setChecked(true);
        control<QComboBox>(d, kForms, 4)->setEditText("F5");
        auto* pages = control<QComboBox>(d, kForms, 5);
        pages->setCurrentIndex(pages->findData(kApplyOnceThenRepeat));
        control<QLineEdit>(d, kForms, 6)->setText("1");
        click(d, kForms, 92);
        EXPECT_TRUE(d->isVisible()) << "repeat from form page 1 accepted";
        control<QLineEdit>(d, kForms, 6)->setText("12");
        control<QComboBox>(d, kForms, 10)->setCurrentIndex(1); // millimetres
        EXPECT_EQ(control<SpinControl>(d, kForms, 8)->value(), 4879);
        click(d, kForms, 92);
    });
    ASSERT_TRUE(RunModalJobTypeSetupDialog(nullptr, bundle(), 9, pl::makeDict(), forms));
    const pl::DictPtr stored = forms.asTicket();
    for (auto [key, value] : {std::pair{"UseExistingForm", 2}, {"CyclePages", 12}, {"Inches", 0}, {"X1", 4879}})
        EXPECT_EQ(stored->getInt(key), value) << key;
    EXPECT_EQ(stored->getString("MergeWithString"), "F5");
    ASSERT_EQ(existing->size(), kFormHistoryLimit) << "the oldest name stays";
    EXPECT_EQ(pl::as<pl::String>(existing->at(0))->text, "F5");
    EXPECT_EQ(pl::as<pl::String>(existing->at(kFormHistoryLimit - 1))->text, "F9");
}
