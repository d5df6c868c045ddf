// The Image Options panel's operations beside the panel record: the context's values and the
// controls, the invert image and image shift groups, and the panel's summary.
#pragma once

#include "settings/settings.h"
#include "ticket/full-color.h"
#include "ticket/image-shift.h"

#include <QPointer>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QWidget;

namespace talmo {
class HistoryComboBox;
}

namespace talmo::imageoptions {

struct ImageOptionsContext;

// The controls' ids: signature "TImg", ids 1-10 in the order of the panel.
inline constexpr uint32_t kImageOptionsSignature = FourCC("TImg");
inline constexpr uint32_t kColorSetupCommand = FourCC("TClr");
inline constexpr uint32_t kImageShiftSetupCommand = FourCC("TIsh");

// The two invert image flags, stored as integers; non-zero is on.
struct InvertImageOptions {
    CFIndex negativeImage = 0;
    CFIndex mirrorImage = 0;
    friend bool operator==(const InvertImageOptions&, const InvertImageOptions&) = default;
};

struct InvertImageContext {
    QPointer<QCheckBox> negative;
    QPointer<QCheckBox> mirror;
};

inline constexpr const char* kNegativeImageField = "NegativeImage";
inline constexpr const char* kMirrorImageField = "MirrorImage";

// Both flags off and no controls. paramErr for a null argument.
OSStatus InvertImageInitialize(InvertImageContext* context, InvertImageOptions* options);
// Finds the two check boxes in `pane` (by id, inside `window`), gives the mirror box its title
// and shows `options`. kPMNoContext when a box is missing.
OSStatus InvertImageOpen(const Bundle& bundle, QWidget* window, QWidget* pane, InvertImageContext* context,
                         const InvertImageOptions* options);
// Direction true reads the ticket's dictionary into `options` and the boxes; false reads the
// boxes into `options` and writes the dictionary with the creator "T".
OSStatus InvertImageSync(InvertImageContext* context, InvertImageOptions* options, bool direction, Ticket* ticket);
// A key that is missing or not an integer leaves its flag as it was; a null dictionary
// changes nothing.
void InvertImageSetOptionsFromTicket(InvertImageOptions* options, const pl::DictPtr& dict);
pl::DictPtr InvertImageCreateTicketFromOptions(const InvertImageOptions* options);
void InvertImageTerminate(InvertImageContext* context);

void InitContext(ImageOptionsContext* context);
// Controls to context, and context to controls.
void SaveUIValuesToData(ImageOptionsContext* context);
void RestoreUIValuesFromData(ImageOptionsContext* context);
// The resolution item: a missing one reads as printer default.
OSStatus SyncResolutionToUI(ImageOptionsContext* context, const Ticket* ticket);
OSStatus SyncResolutionToTicket(ImageOptionsContext* context, Ticket* ticket);

// Lighten/darken and toner saver are not offered here; they reach the ticket only by import.
OSStatus SyncLightenDarkenToTicket(ImageOptionsContext* context, Ticket* ticket);
OSStatus SyncLightenDarkenToUI(ImageOptionsContext* context, const Ticket* ticket);
OSStatus SyncTonerSaverToTicket(ImageOptionsContext* context, Ticket* ticket);
OSStatus SyncTonerSaverToUI(ImageOptionsContext* context, const Ticket* ticket);
void UpdateHalftoneScreenMenu(ImageOptionsContext* context);

// Runs the panel's commands (the two setup buttons); false for any other command.
bool ImageOptionsPanelEventHandler(ImageOptionsContext* context, uint32_t command);
// Shows the colour and image shift summaries of the context.
void ImageOptionsDrawEventHandler(ImageOptionsContext* context);

} // namespace talmo::imageoptions
