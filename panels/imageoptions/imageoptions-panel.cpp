// The ImageOptions panel: colour, image quality, invert image and image shift.
#include "panels/imageoptions/imageoptions-panel.h"

#include "panels/dialogs/full-color-dialog.h"
#include "panels/dialogs/image-shift-dialog.h"
#include "panels/panel-module.h"
#include "toolkit/toolkit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>

namespace talmo::imageoptions {

struct ImageOptionsContext : panels::PanelContext {
    FullColorOptions color;
    int32_t antialiasing = kNotSet;
    int32_t resolution = kNotSet;
    int32_t halftoneScreen = kNotSet;
    InvertImageContext invertContext;
    InvertImageOptions invertOptions;
    _IS_Options imageShift;

    QPointer<StaticTextControl> colorSummary;
    QPointer<QPushButton> colorSetup;
    QPointer<QComboBox> antialiasingPopup;
    QPointer<QComboBox> resolutionPopup;
    QPointer<QComboBox> halftonePopup;
    QPointer<HistoryComboBox> trc;
    QPointer<StaticTextControl> imageShiftSummary;
    QPointer<QPushButton> imageShiftSetup;

    bool built() const
    {
        return colorSummary && antialiasingPopup && resolutionPopup && halftonePopup && trc && imageShiftSummary;
    }
};

namespace {

const panels::PanelDescription kPanel{"ImageOptionsPanel", "ImageOptionsPanel", "com.talmo.print.pde.imageoptionskind"};

constexpr char kTRCHistory[] = "TRCInputHistory";
constexpr int32_t kTRCHistoryLimit = 10;

ImageOptionsContext* asContext(PMPDEContext context)
{
    return static_cast<ImageOptionsContext*>(static_cast<panels::PanelContext*>(context));
}

panels::PanelContext* makeContext() { return new (std::nothrow) ImageOptionsContext; }

std::string localized(std::string_view key)
{
    const Bundle* bundle = ExtensionBundle();
    return bundle ? bundle->localizedString(key) : std::string(key);
}

// Summary titles are the labels without their colon.
std::string titleOf(std::string_view labelKey)
{
    std::string title = localized(labelKey);
    if (!title.empty() && title.back() == ':')
        title.pop_back();
    return title;
}

std::string popupSummary(const SettingMap* map, int32_t value)
{
    const char* key = LocalizedKeyForTicketValue(map, value);
    if (!key || value == kNotSet)
        return localized("PrinterDefault");
    return localized(key);
}

// A number item is kept only when it is a 32-bit integer.
void readNumber(const Ticket* ticket, const char* key, int32_t* value)
{
    int32_t read = 0;
    if (TicketGetInt32(ticket, key, &read) == noErr)
        *value = read;
}

} // namespace

void InitContext(ImageOptionsContext* c)
{
    c->color = FullColorOptions();
    c->antialiasing = c->resolution = c->halftoneScreen = kNotSet;
    InvertImageInitialize(&c->invertContext, &c->invertOptions);
    ImageShiftInitialize(&c->imageShift);
}

void SaveUIValuesToData(ImageOptionsContext* c)
{
    if (!c->built())
        return;
    c->antialiasing = GetPopupButtonTicketValue(c->antialiasingPopup);
    c->resolution = GetPopupButtonTicketValue(c->resolutionPopup);
    c->halftoneScreen = GetPopupButtonTicketValue(c->halftonePopup);
    const HistoryComboBox::Value trc = c->trc->value();
    const QString* name = std::get_if<QString>(&trc);
    c->color.setTRC(name ? FullColorOptions::Name(name->toStdString()) : std::nullopt);
    if (c->invertContext.negative && c->invertContext.mirror) {
        c->invertOptions.negativeImage = c->invertContext.negative->isChecked() ? 1 : 0;
        c->invertOptions.mirrorImage = c->invertContext.mirror->isChecked() ? 1 : 0;
    }
}

void RestoreUIValuesFromData(ImageOptionsContext* c)
{
    if (!c->built())
        return;
    // A value the popup does not offer shows printer default.
    const std::pair<QComboBox*, int32_t> popups[] = {{c->antialiasingPopup, c->antialiasing},
                                                     {c->resolutionPopup, c->resolution},
                                                     {c->halftonePopup, c->halftoneScreen}};
    for (const auto& [popup, value] : popups)
        if (!SetPopupButtonToTicketValue(popup, value))
            SetPopupButtonToTicketValue(popup, kNotSet);
    FullColorOptions::Name trc;
    c->color.trc(&trc);
    if (trc) {
        c->trc->setText(QString::fromStdString(*trc));
    } else {
        SetPopupButtonToTicketValue(c->trc, kNotSet);
        c->trc->setEditText(c->trc->itemText(c->trc->currentIndex()));
    }
    if (c->invertContext.negative && c->invertContext.mirror) {
        c->invertContext.negative->setChecked(c->invertOptions.negativeImage != 0);
        c->invertContext.mirror->setChecked(c->invertOptions.mirrorImage != 0);
    }
    ImageOptionsDrawEventHandler(c);
}

OSStatus SyncResolutionToUI(ImageOptionsContext* c, const Ticket* ticket)
{
    if (!c || !ticket)
        return paramErr;
    c->resolution = kNotSet;
    readNumber(ticket, kResolutionKey, &c->resolution);
    return noErr;
}

OSStatus SyncResolutionToTicket(ImageOptionsContext* c, Ticket* ticket)
{
    if (!c || !ticket)
        return paramErr;
    return ticket->set(kResolutionKey, pl::makeInt(c->resolution), kTalmoHostCreator);
}

OSStatus SyncLightenDarkenToTicket(ImageOptionsContext*, Ticket*) { return noErr; }
OSStatus SyncLightenDarkenToUI(ImageOptionsContext*, const Ticket*) { return noErr; }
OSStatus SyncTonerSaverToTicket(ImageOptionsContext*, Ticket*) { return noErr; }
OSStatus SyncTonerSaverToUI(ImageOptionsContext*, const Ticket*) { return noErr; }
void UpdateHalftoneScreenMenu(ImageOptionsContext*) { }

void ImageOptionsDrawEventHandler(ImageOptionsContext* c)
{
    if (!c->built())
        return;
    std::string color;
    ShowFullColorSummary(c->color, kJobContextJob, &localized, &color);
    c->colorSummary->setText(QString::fromStdString(color));
    c->imageShiftSummary->setText(
        QString::fromStdString(GenerateImageShiftSummary(c->imageShift, kJobContextJob, &localized)));
}

bool ImageOptionsPanelEventHandler(ImageOptionsContext* c, uint32_t command)
{
    if (command != kColorSetupCommand && command != kImageShiftSetupCommand)
        return false;
    const Bundle* bundle = ExtensionBundle();
    if (!bundle)
        return true;
    // The dialogs edit the values the controls show now.
    SaveUIValuesToData(c);
    bool accepted = false;
    if (command == kColorSetupCommand)
        RunModalFullColorSetup(*bundle, DialogMode::Edit, kJobContextJob, c->color, &accepted, c->content);
    else
        RunModalImageShiftDialog(*bundle, DialogMode::Edit, kJobContextJob, c->imageShift, &accepted, c->content);
    if (accepted)
        RestoreUIValuesFromData(c);
    return true;
}

namespace {

OSStatus Prologue(PMPDEContext* context, OSType* creator, std::string* kind, std::string* title, uint32_t* maxH,
                  uint32_t* maxV)
{
    const OSStatus status = panels::PanelPrologue(kPanel, context, creator, kind, title, maxH, maxV, &makeContext);
    if (status == noErr)
        InitContext(asContext(*context));
    return status;
}

OSStatus Initialize(PMPDEContext context, PMPDEFlags*, PMPDERef, ControlRef pane, PMPrintSession session)
{
    const OSStatus status = panels::PanelInitialize(context, pane, session);
    ImageOptionsContext* c = asContext(context);
    const Bundle* bundle = ExtensionBundle();
    if (status != noErr || !c->content || !bundle)
        return status;
    QWidget* root = c->content;
    auto id = [](int n) { return ControlID{kImageOptionsSignature, n}; };
    c->colorSummary = AdoptControl<StaticTextControl>(root, id(1));
    c->colorSetup = GetControlByID<QPushButton>(root, id(2));
    c->antialiasingPopup = GetControlByID<QComboBox>(root, id(3));
    c->resolutionPopup = GetControlByID<QComboBox>(root, id(4));
    c->halftonePopup = GetControlByID<QComboBox>(root, id(5));
    c->trc = AdoptControl<HistoryComboBox>(root, id(6));
    c->imageShiftSummary = AdoptControl<StaticTextControl>(root, id(9));
    c->imageShiftSetup = GetControlByID<QPushButton>(root, id(10));
    if (!c->built() || !c->colorSetup || !c->imageShiftSetup)
        return kPMNoContext;

    PopulatePopupButtonFromMap(*bundle, c->antialiasingPopup, _AntialiasingMap, kJobContextJob, 0);
    PopulatePopupButtonFromMap(*bundle, c->resolutionPopup, _ResolutionMap, kJobContextJob, 0);
    PopulatePopupButtonFromMap(*bundle, c->halftonePopup, _HalftoneScreenMap, kJobContextJob, 0);
    c->trc->populate(*bundle, _TRCMap, kJobContextJob, kTRCHistory, kTRCHistoryLimit, 1);
    if (const OSStatus open = InvertImageOpen(*bundle, root, root, &c->invertContext, &c->invertOptions); open != noErr)
        return open;
    for (auto [button, command] : {std::pair{c->colorSetup.data(), kColorSetupCommand},
                                   std::pair{c->imageShiftSetup.data(), kImageShiftSetupCommand}})
        QObject::connect(button, &QPushButton::clicked, button,
                         [c, command] { ImageOptionsPanelEventHandler(c, command); });
    RestoreUIValuesFromData(c);
    return noErr;
}

OSStatus Sync(PMPDEContext context, PMPrintSession session, bool reinitializePlugIn)
{
    ImageOptionsContext* c = asContext(context);
    Ticket* ticket = nullptr;
    if (const OSStatus status = panels::PanelSyncTicket(context, session, reinitializePlugIn, &ticket); status != noErr)
        return status;
    if (!ticket)
        return noErr; // nothing to read or write
    if (reinitializePlugIn) {
        c->color = FullColorOptions(pl::as<pl::Dictionary>(ticket->get(kFullColorOptionsKey)));
        readNumber(ticket, kAntialiasingKey, &c->antialiasing);
        SyncResolutionToUI(c, ticket);
        readNumber(ticket, kHalftoneScreenKey, &c->halftoneScreen);
        SyncLightenDarkenToUI(c, ticket);
        SyncTonerSaverToUI(c, ticket);
        RestoreUIValuesFromData(c);
        const OSStatus invert = InvertImageSync(&c->invertContext, &c->invertOptions, true, ticket);
        const OSStatus shift = ImageShiftSync(&c->imageShift, kImageShiftSyncFromTicket, ticket);
        ImageOptionsDrawEventHandler(c);
        return invert != noErr ? invert : shift;
    }
    SaveUIValuesToData(c);
    if (c->built())
        c->trc->commitHistory();
    OSStatus status = ticket->set(kFullColorOptionsKey, c->color.asTicket(), kTalmoHostCreator);
    for (OSStatus next : {SyncResolutionToTicket(c, ticket),
                          ticket->set(kHalftoneScreenKey, pl::makeInt(c->halftoneScreen), kTalmoHostCreator),
                          ticket->set(kAntialiasingKey, pl::makeInt(c->antialiasing), kTalmoHostCreator),
                          SyncLightenDarkenToTicket(c, ticket), SyncTonerSaverToTicket(c, ticket),
                          InvertImageSync(&c->invertContext, &c->invertOptions, false, ticket),
                          ImageShiftSync(&c->imageShift, kImageShiftSyncToTicket, ticket)})
        if (status == noErr)
            status = next;
    return status;
}

OSStatus GetSummaryText(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray)
{
    ImageOptionsContext* c = asContext(context);
    if (!c)
        return kPMNoContext;
    if (!titleArray || !summaryArray)
        return paramErr;
    SaveUIValuesToData(c);
    panels::MakeSummaryArrays(titleArray, summaryArray);
    auto add = [&](std::string_view label, std::string text) {
        panels::AppendSummaryLine(titleArray, summaryArray, titleOf(label), std::move(text));
    };
    std::string color = GenerateFullColorSummary(c->color, kJobContextJob, "; ", &localized);
    add("Color Label", color.empty() ? localized("PrinterDefault") : color);
    add("Anti-aliasing:", popupSummary(_AntialiasingMap, c->antialiasing));
    add("Resolution Label", popupSummary(_ResolutionMap, c->resolution));
    add("Halftone Screen:", popupSummary(_HalftoneScreenMap, c->halftoneScreen));
    std::string invert;
    if (c->invertOptions.negativeImage)
        invert = localized("Negative Image Title");
    if (c->invertOptions.mirrorImage)
        invert += (invert.empty() ? "" : ", ") + localized("Mirror Image Title");
    add("Invert Image Label", invert.empty() ? localized("Off") : invert);
    // One line per summary: the two sides are joined as the colour lines are.
    std::string shift = GenerateImageShiftSummary(c->imageShift, kJobContextJob, &localized);
    if (const size_t newline = shift.find('\n'); newline != std::string::npos)
        shift.replace(newline, 1, "; ");
    add("Image Shift Label", shift);
    return noErr;
}

OSStatus Terminate(PMPDEContext context, OSStatus)
{
    if (ImageOptionsContext* c = asContext(context))
        InvertImageTerminate(&c->invertContext);
    return panels::PanelTerminate(context);
}

} // namespace

OSStatus CreatePanelInterface(PlugInIntf** intf)
{
    return panels::MakePanelInterface(intf, {nullptr, nullptr, nullptr, &Prologue, &Initialize, &Sync, &GetSummaryText,
                                             &panels::PanelOpen, &panels::PanelClose, &Terminate});
}

} // namespace talmo::imageoptions

TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetImageOptionsPanelInterface(talmo::PlugInIntf** intf)
{
    return talmo::imageoptions::CreatePanelInterface(intf);
}
