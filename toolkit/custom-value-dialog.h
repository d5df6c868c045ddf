// The generic dialog that asks for one whole number between two limits: the window
// "CustomValue" of the "Utilities" interface description. OK is the default button and takes
// only a number within the limits; Escape and Cancel leave the outputs untouched.
#pragma once

#include "settings/settings.h"

#include <QString>

#include <cstdint>

class QDialog;
class QLineEdit;
class QWidget;

namespace talmo {

inline constexpr OSStatus userCanceledErr = -128;
inline constexpr uint32_t kCommandOK = FourCC("ok  ");
inline constexpr uint32_t kCommandCancel = FourCC("not!");

// Control ids of the description.
inline constexpr uint32_t kCustomValueSignature = FourCC("CVal");
inline constexpr int32_t kCustomValueFieldID = 1;
inline constexpr int32_t kCustomValuePromptID = 2;
inline constexpr int32_t kCustomValueRangeID = 3;
inline constexpr int32_t kCustomValueOKID = 4;
inline constexpr int32_t kCustomValueCancelID = 5;

struct CustomValueContext {
    QDialog* window = nullptr;
    QLineEdit* field = nullptr;
    int32_t minimum = 0;
    int32_t maximum = 0;
};

// Shows the dialog with `valueString` as the starting text. On OK: noErr, the text in
// `valueString` and the number in `value`. Cancel: userCanceledErr, both untouched. -50 for a
// null output or limits that leave no 16-bit value (the limits are narrowed to 16 bits);
// -9530 when the description does not load.
OSStatus RunModalCustomValueDialog(const Bundle& bundle, int32_t minimum, int32_t maximum, QString* valueString,
                                   int16_t* value, QWidget* parent = nullptr);

// Finds the controls, localizes them, limits the field and connects the buttons (the window's
// command handler refers to `context`, which must outlive the window); -9530 when a control is
// missing.
OSStatus InitializeCustomValue(const Bundle& bundle, CustomValueContext& context, const QString& startText);
// On OK copies the field into the outputs.
void FinalizeCustomValue(const CustomValueContext& context, bool accepted, QString* valueString, int16_t* value);
// OK closes the dialog only with a number within the limits (else the field is selected again
// and the dialog stays); Cancel closes it. True when the command was handled.
bool CustomValueEventHandler(CustomValueContext& context, uint32_t command);

} // namespace talmo
