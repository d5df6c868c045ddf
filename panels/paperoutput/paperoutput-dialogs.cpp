#include "panels/paperoutput/paperoutput-dialogs.h"

#include "toolkit/toolkit.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <array>
#include <memory>
#include <vector>

namespace talmo::paperoutput {

namespace {

constexpr uint32_t kFinishingSignature = FourCC("POFn");
constexpr uint32_t kMultipleSignature = FourCC("POMu");
constexpr int32_t kCancelID = 91;
constexpr int32_t kOKID = 92;

struct Choice {
    const char* key;
    int32_t value;
};

// What one single-choice dialog offers and edits.
struct ChoiceDialogContent {
    const char* title;
    const char* prompt;
    std::vector<Choice> choices;
    bool side = false; // print inside or outside, for the advanced folds
    bool text = false; // the custom finishing text
};

int32_t holesOf(uint32_t command) { return command == kCmdHolePunch2 ? 3 : command == kCmdHolePunch3 ? 4 : 5; }

ChoiceDialogContent contentFor(uint32_t command)
{
    switch (command) {
    case kCmdOneStaple:
        return {"POOneStapleTitle",
                "POStaplePrompt",
                {{"1StapleTLTR", 5}, {"1StapleBLTL", 6}, {"1StapleTRBR", 7}, {"1StapleBRBL", 8}}};
    case kCmdTwoStaples:
        return {"POTwoStaplesTitle",
                "POStaplePrompt",
                {{"2StaplesLT", 10}, {"2StaplesTR", 11}, {"2StaplesBL", 12}, {"2StaplesRB", 13}}};
    case kCmdCenterStaple:
        return {"POCenterStapleTitle",
                "POStaplePrompt",
                {{"CenterStapleLT", 26}, {"CenterStapleTR", 27}, {"CenterStapleBL", 28}, {"CenterStapleRB", 29}}};
    case kCmdHolePunch2:
    case kCmdHolePunch3:
    case kCmdHolePunch4:
        return {"POHolePunchTitle",
                "POHolePunchPrompt",
                {{"HolePunchLT", 32}, {"HolePunchTR", 33}, {"HolePunchBL", 34}, {"HolePunchRB", 35}}};
    case kCmdFold:
        return {"POFoldTitle",
                "POFoldPrompt",
                {{"FoldCFold", 19},
                 {"FoldZFold", 20},
                 {"Z Fold Half Sheet", 36},
                 {"POBiFoldSingle", 41},
                 {"POBiFoldMultiple", 43},
                 {"POCTriFold", 45},
                 {"POZTriFold", 47}},
                true};
    case kCmdZFold:
        return {"POZFoldTitle", "POZFoldPrompt", {{"Left Bind", 38}, {"Right Bind", 39}}};
    case kCmdBind:
        return {"POBindTitle", "POBindPrompt", {{"BindLT", 15}, {"BindRB", 16}}};
    case kCmdCustom:
        return {"POCustomTitle", "POCustomPrompt", {}, false, true};
    case kCmdBookletCreation:
        return {"POBookletCreationTitle", "POBookletCreationPrompt", {{"BiFoldNoStaple", 43}, {"BiFoldStaple", 53}}};
    default:
        return {};
    }
}

// The value a dialog starts from; an advanced fold shows as its kind with the side apart.
int32_t currentValue(uint32_t command, const PaperOutputSettings& s)
{
    switch (command) {
    case kCmdOneStaple:
        return s.staple1;
    case kCmdTwoStaples:
        return s.staple2;
    case kCmdCenterStaple:
        return s.stapleCenter;
    case kCmdHolePunch2:
    case kCmdHolePunch3:
    case kCmdHolePunch4:
        return s.holePunch;
    case kCmdFold:
        return s.fold >= 41 && s.fold <= 48 ? s.fold - (s.fold - 41) % 2 : s.fold;
    case kCmdZFold:
        return s.zFold;
    case kCmdBind:
        return s.bind;
    case kCmdBookletCreation:
        return s.fold;
    default:
        return kNotSet;
    }
}

void apply(uint32_t command, int32_t value, int32_t side, const std::string& text, PaperOutputSettings& s)
{
    switch (command) {
    case kCmdOneStaple:
        ChooseFinishing(s, kFinishingOneStaple);
        s.staple1 = value;
        break;
    case kCmdTwoStaples:
        ChooseFinishing(s, kFinishingTwoStaples);
        s.staple2 = value;
        break;
    case kCmdCenterStaple:
        ChooseFinishing(s, kFinishingCenterStaple);
        s.stapleCenter = value;
        break;
    case kCmdHolePunch2:
    case kCmdHolePunch3:
    case kCmdHolePunch4:
        ChooseFinishing(s, kFinishingHolePunch);
        s.holePunch = value;
        s.holePunchOptions = holesOf(command);
        break;
    case kCmdFold: {
        const int32_t fold = value >= 41 ? value + (side == 2 ? 1 : 0) : value;
        ChooseFinishing(s, FoldOptionOf(fold));
        s.fold = fold;
        break;
    }
    case kCmdZFold:
        ChooseFinishing(s, kFinishingZFold);
        s.zFold = value;
        break;
    case kCmdBind:
        ChooseFinishing(s, kFinishingBind);
        s.bind = value;
        break;
    case kCmdCustom:
        ChooseFinishing(s, kFinishingCustom);
        s.custom = text;
        break;
    case kCmdBookletCreation:
        // A booklet is made two-sided on the booklet's own sheets.
        ChooseFinishing(s, kFinishingBookletFold);
        s.fold = value;
        s.bookletLayout = kBookletOn;
        s.duplex = kDuplexLongEdge;
        break;
    default:
        break;
    }
}

std::unique_ptr<QDialog> loadDialog(const Bundle& bundle, const char* window, QWidget* parent)
{
    std::unique_ptr<QWidget> made = CreateWindowFromDescription(bundle, "PaperOutput", window, parent);
    if (!qobject_cast<QDialog*>(made.get()))
        return nullptr;
    return std::unique_ptr<QDialog>(static_cast<QDialog*>(made.release()));
}

OSStatus runChoiceDialog(const Bundle& bundle, uint32_t command, PaperOutputSettings& settings, bool* accepted,
                         QWidget* parent)
{
    const ChoiceDialogContent content = contentFor(command);
    std::unique_ptr<QDialog> dialog = loadDialog(bundle, "Finishing", parent);
    if (!dialog)
        return kPMNoContext;
    QDialog* w = dialog.get();
    auto* prompt = GetControlByID<QLabel>(w, {kFinishingSignature, 1});
    auto* choices = GetControlByID<QGroupBox>(w, {kFinishingSignature, 2});
    auto* sideLabel = GetControlByID<QLabel>(w, {kFinishingSignature, 3});
    auto* side = GetControlByID<QComboBox>(w, {kFinishingSignature, 4});
    auto* text = GetControlByID<QLineEdit>(w, {kFinishingSignature, 5});
    auto* textLabel = GetControlByID<QLabel>(w, {kFinishingSignature, 6});
    auto* ok = GetControlByID<QPushButton>(w, {kFinishingSignature, kOKID});
    auto* cancel = GetControlByID<QPushButton>(w, {kFinishingSignature, kCancelID});
    if (!prompt || !choices || !sideLabel || !side || !text || !textLabel || !ok || !cancel ||
        !qobject_cast<QVBoxLayout*>(choices->layout()))
        return kPMNoContext;
    LocalizeDescription(bundle, w);
    SetLocalizedWindowTitle(bundle, content.title, w);
    SetLocalizedStaticText(bundle, content.prompt, prompt);

    auto* group = new QButtonGroup(w);
    const int32_t current = currentValue(command, settings);
    for (const Choice& c : content.choices) {
        auto* radio = new QRadioButton(LocalizedText(bundle, c.key), choices);
        choices->layout()->addWidget(radio);
        group->addButton(radio, c.value);
        radio->setChecked(c.value == current);
    }
    if (!content.choices.empty() && !group->checkedButton())
        group->buttons().front()->setChecked(true);
    choices->setVisible(!content.choices.empty());

    sideLabel->setVisible(content.side);
    side->setVisible(content.side);
    if (content.side) {
        SetLocalizedStaticText(bundle, "POFoldSideLabel", sideLabel);
        PopulatePopupButtonFromMap(bundle, side, _ComplexFoldMap, kJobContextJob, 0);
        SetPopupButtonToTicketValue(side,
                                    settings.fold >= 41 && settings.fold <= 48 ? (settings.fold - 41) % 2 + 1 : 1);
        // Only the advanced folds print inside or outside.
        auto sideApplies = [group, side] { side->setEnabled(group->checkedId() >= 41); };
        QObject::connect(group, &QButtonGroup::idToggled, w, sideApplies);
        sideApplies();
    }
    textLabel->setVisible(content.text);
    text->setVisible(content.text);
    if (content.text)
        text->setText(QString::fromStdString(settings.custom.value_or("")));

    // Keyboard focus starts on the choice itself, not on the first button.
    if (content.text)
        text->setFocus();
    else if (group->checkedButton())
        group->checkedButton()->setFocus();
    QObject::connect(ok, &QPushButton::clicked, w, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, w, &QDialog::reject);
    if (w->exec() != QDialog::Accepted)
        return noErr;
    apply(command, group->checkedId(), content.side ? GetPopupButtonTicketValue(side) : 1, text->text().toStdString(),
          settings);
    if (accepted)
        *accepted = true;
    return noErr;
}

// One of the two groups of the multiple finishing dialog: the four edges, the two positions
// that follow from the chosen edge, and the pairing rules that tie them.
struct PairingGroup {
    QGroupBox* box = nullptr;
    std::array<QRadioButton*, 4> edges{};
    std::array<QRadioButton*, 2> positions{};
    FinishingPairing pairing;
    explicit PairingGroup(FinishingPairing::Kind kind) : pairing(kind) { }

    bool find(QWidget* w, int32_t boxID, int32_t first)
    {
        box = GetControlByID<QGroupBox>(w, {kMultipleSignature, boxID});
        bool found = box != nullptr;
        for (int i = 0; i < 4; ++i)
            found &= (edges[i] = GetControlByID<QRadioButton>(w, {kMultipleSignature, first + i})) != nullptr;
        for (int i = 0; i < 2; ++i)
            found &= (positions[i] = GetControlByID<QRadioButton>(w, {kMultipleSignature, first + 4 + i})) != nullptr;
        if (!found)
            return false;
        // Edges and positions share a group box: each set is exclusive on its own.
        auto* edgeGroup = new QButtonGroup(box);
        auto* positionGroup = new QButtonGroup(box);
        for (QRadioButton* radio : edges)
            edgeGroup->addButton(radio);
        for (QRadioButton* radio : positions)
            positionGroup->addButton(radio);
        return true;
    }

    // The radios show the pairing; signals are held so that showing is not choosing (checking
    // one radio of a group unchecks its neighbour, which would signal too).
    void show(const Bundle& bundle)
    {
        std::vector<std::unique_ptr<QSignalBlocker>> hold;
        for (QRadioButton* radio : edges)
            hold.push_back(std::make_unique<QSignalBlocker>(radio));
        for (QRadioButton* radio : positions)
            hold.push_back(std::make_unique<QSignalBlocker>(radio));
        for (int i = 0; i < 4; ++i)
            edges[i]->setChecked(pairing.edge() == i + 1);
        const SecondaryPair& pair = pairing.pair();
        for (int i = 0; i < 2; ++i) {
            positions[i]->setText(LocalizedText(bundle, pair.labels[i]));
            positions[i]->setChecked(pair.values[i] == pairing.value());
        }
    }
};

} // namespace

bool FinishingCommandHasDialog(uint32_t command)
{
    return command == kCmdMultiple || contentFor(command).title != nullptr;
}

OSStatus RunModalFinishingDialog(const Bundle& bundle, uint32_t command, PaperOutputSettings& settings, bool* accepted,
                                 QWidget* parent)
{
    if (command == kCmdMultiple)
        return RunModalMultipleFinishingDialog(bundle, settings, accepted, parent);
    if (!contentFor(command).title)
        return paramErr;
    return runChoiceDialog(bundle, command, settings, accepted, parent);
}

OSStatus RunModalMultipleFinishingDialog(const Bundle& bundle, PaperOutputSettings& settings, bool* accepted,
                                         QWidget* parent)
{
    std::unique_ptr<QDialog> dialog = loadDialog(bundle, "Multiple", parent);
    if (!dialog)
        return kPMNoContext;
    QDialog* w = dialog.get();
    PairingGroup staple(FinishingPairing::Staple), punch(FinishingPairing::HolePunch);
    auto* zFold = GetControlByID<QCheckBox>(w, {kMultipleSignature, 3});
    auto* zFoldEdge = GetControlByID<QComboBox>(w, {kMultipleSignature, 4});
    auto* holes = GetControlByID<QComboBox>(w, {kMultipleSignature, 30});
    auto* ok = GetControlByID<QPushButton>(w, {kMultipleSignature, kOKID});
    auto* cancel = GetControlByID<QPushButton>(w, {kMultipleSignature, kCancelID});
    if (!staple.find(w, 1, 10) || !punch.find(w, 2, 20) || !zFold || !zFoldEdge || !holes || !ok || !cancel)
        return kPMNoContext;
    LocalizeDescription(bundle, w);
    SetLocalizedWindowTitle(bundle, "POMultipleTitle", w);
    PopulatePopupButtonFromMap(bundle, zFoldEdge, _ZFoldMap, kJobContextJob, 0);
    PopulatePopupButtonFromMap(bundle, holes, _HolePunchOptionsMap, kJobContextJob, 0);

    const int32_t option = settings.option();
    const bool multiple = option >= kFinishingStaplePunch && option <= kFinishingMultiplePunch;
    staple.box->setChecked(!multiple || option != kFinishingMultiplePunch);
    punch.box->setChecked(!multiple || option != kFinishingMultipleStaple);
    if (settings.staple1 >= 5 && settings.staple1 <= 8)
        staple.pairing.selectValue(settings.staple1);
    if (settings.holePunch >= 32 && settings.holePunch <= 35)
        punch.pairing.selectValue(settings.holePunch);
    SetPopupButtonToTicketValue(holes, settings.holePunchOptions);
    SetPopupButtonToTicketValue(zFoldEdge, settings.zFold);
    zFold->setChecked(option == kFinishingStaplePunchZFold);

    // The Z fold needs both groups and staples on a side edge; OK needs one group at least.
    auto update = [&] {
        staple.show(bundle);
        punch.show(bundle);
        const bool both = staple.box->isChecked() && punch.box->isChecked();
        zFold->setEnabled(both && ZFoldAvailable(staple.pairing.edge()));
        zFoldEdge->setEnabled(zFold->isEnabled() && zFold->isChecked());
        ok->setEnabled(staple.box->isChecked() || punch.box->isChecked());
    };
    for (PairingGroup* g : {&staple, &punch}) {
        for (int i = 0; i < 4; ++i)
            QObject::connect(g->edges[i], &QRadioButton::toggled, w, [g, i, &update](bool on) {
                if (!on)
                    return; // the neighbour's unchecking: the checked radio tells
                g->pairing.selectEdge(i + 1);
                update();
            });
        for (int i = 0; i < 2; ++i)
            QObject::connect(g->positions[i], &QRadioButton::toggled, w, [g, i, &update](bool on) {
                if (!on)
                    return;
                g->pairing.selectValue(g->pairing.pair().values[i]);
                update();
            });
        QObject::connect(g->box, &QGroupBox::toggled, w, update);
    }
    QObject::connect(zFold, &QCheckBox::toggled, w, update);
    QObject::connect(ok, &QPushButton::clicked, w, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, w, &QDialog::reject);
    update();
    staple.edges[staple.pairing.edge() - 1]->setFocus();
    if (w->exec() != QDialog::Accepted)
        return noErr;

    const bool withStaple = staple.box->isChecked(), withPunch = punch.box->isChecked();
    const bool withZFold = withStaple && withPunch && zFold->isEnabled() && zFold->isChecked();
    ChooseFinishing(settings, withStaple && withPunch ? (withZFold ? kFinishingStaplePunchZFold : kFinishingStaplePunch)
                              : withStaple            ? kFinishingMultipleStaple
                                                      : kFinishingMultiplePunch);
    if (withStaple)
        settings.staple1 = staple.pairing.value();
    if (withPunch) {
        settings.holePunch = punch.pairing.value();
        settings.holePunchOptions = GetPopupButtonTicketValue(holes);
    }
    if (withZFold)
        settings.zFold = GetPopupButtonTicketValue(zFoldEdge);
    if (accepted)
        *accepted = true;
    return noErr;
}

} // namespace talmo::paperoutput
