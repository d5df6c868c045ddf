// Texts of an interface description from the bundle's "Localizable" table: a widget names the
// key of its text in the dynamic property "localizedText" (a label's, button's or group box's
// text, a window's title) and of its tool tip in "localizedToolTip"; the tool tip is also its
// accessible name (picture buttons have no text of their own).
#pragma once

#include "platform/platform.h"

class QWidget;

namespace talmo {

inline constexpr char kLocalizedTextProperty[] = "localizedText";
inline constexpr char kLocalizedToolTipProperty[] = "localizedToolTip";

void LocalizeDescription(const Bundle& bundle, QWidget* root);

} // namespace talmo
