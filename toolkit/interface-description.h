// Interface descriptions: Qt Designer files in the bundle's Resources/, loaded at run time, and
// controls found in them by their control id (signature and number), as the panels' code
// addresses them.
//
// A description "<name>" with a window "<window>" is the file Resources/<name>.<window>.ui;
// its top-level widget is that window. A control's id is given in Designer as two dynamic
// properties: "controlSignature" (four characters) and "controlID" (a number).
#pragma once

#include "platform/platform.h"

#include <QString>
#include <QWidget>

#include <cstdint>
#include <memory>

namespace talmo {

inline constexpr char kControlSignatureProperty[] = "controlSignature";
inline constexpr char kControlIDProperty[] = "controlID";

struct ControlID {
    uint32_t signature; // four characters, FourCC order
    int32_t id;
};

// The window of a description, created as a child of `parent` (or top-level). Null, with the
// reason on stderr and -9530 in `status`, when the file is missing or does not load.
std::unique_ptr<QWidget> CreateWindowFromDescription(const Bundle& bundle, const QString& name, const QString& window,
                                                     QWidget* parent = nullptr, OSStatus* status = nullptr);

// The id Designer gave a widget; {0, 0} when it has none.
ControlID GetControlID(const QWidget* control);
void SetControlID(QWidget* control, ControlID id);

// The first descendant of `root` (or `root` itself) with this id, or null.
QWidget* GetControlByID(QWidget* root, ControlID id);
template <class T> T* GetControlByID(QWidget* root, ControlID id) { return qobject_cast<T*>(GetControlByID(root, id)); }

// "Tshl" <-> FourCC; a text that is not four Latin-1 characters gives 0.
uint32_t FourCCFromText(const QString& text);
QString TextFromFourCC(uint32_t code);

} // namespace talmo
