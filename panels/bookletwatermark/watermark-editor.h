// The watermark editor: a modal dialog over a copy of one watermark record, with a preview
// drawn as the panel draws it. OK stores the record and keeps the list of names in step.
#pragma once

#include "marking/marking.h"

#include <string>

class QComboBox;
class QDialog;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QWidget;

namespace talmo {
class ColorSwatch;
}

namespace talmo::bookletwatermark {

inline constexpr uint32_t kWatermarkEditorSignature = FourCC("WmEd");
// The watermark file could not be written.
inline constexpr OSStatus kWatermarkWriteErr = -36;

struct WatermarkEditorContext {
    const Bundle* bundle = nullptr;
    QDialog* window = nullptr;
    QRadioButton* textKind = nullptr;
    QRadioButton* pictureKind = nullptr;
    QLineEdit* text = nullptr;
    QPushButton* choosePicture = nullptr;
    QLabel* pictureName = nullptr;
    QComboBox* font = nullptr;
    QSpinBox* fontSize = nullptr;
    ColorSwatch* color = nullptr;
    QSpinBox* angle = nullptr;
    QSpinBox* density = nullptr;
    QSpinBox* scale = nullptr;
    QDoubleSpinBox* xOffset = nullptr;
    QDoubleSpinBox* yOffset = nullptr;
    QComboBox* units = nullptr;
    QLabel* preview = nullptr;
    _WatermarkData record;
    std::string original; // the name being edited; empty for a new watermark
    double paperWidth = 612, paperHeight = 792;
};

// Edits the watermark `original` (empty: a new one) and on OK saves it under its name, which
// replaces `original` in the list in place (a new name is appended). noErr on OK with the saved
// name in *savedName, userCanceledErr on Cancel, -9530 when the description does not load or a
// control is missing, kWatermarkWriteErr when the file cannot be written.
OSStatus RunModalWatermarkEditorDialog(const Bundle& bundle, const std::string& original, double paperWidth,
                                       double paperHeight, std::string* savedName, QWidget* parent = nullptr);

OSStatus InitializeWatermarkEditor(WatermarkEditorContext& context);
// The record into the controls and the controls into the record; both redraw the preview.
void SyncToUI(WatermarkEditorContext& context);
void SyncFromUI(WatermarkEditorContext& context);
// OK closes only with a name that is not empty and not another watermark's (else a message,
// and the dialog stays); Cancel closes. True when the command was handled.
bool WatermarkEditorEventHandler(WatermarkEditorContext& context, uint32_t command);
// On OK stores the record and the list; false when either cannot be written.
bool FinalizeWatermarkEditor(WatermarkEditorContext& context, bool accepted, std::string* savedName);

// Asks, then deletes `name` from the file and the list; true when it was deleted.
bool ConfirmAndDeleteWatermark(const Bundle& bundle, const std::string& name, QWidget* parent = nullptr);

} // namespace talmo::bookletwatermark
