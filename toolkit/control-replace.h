// Custom controls in interface descriptions. Designer knows only the standard widgets (its
// custom widgets would need a plug-in, and the loader runs none), so a description holds a
// standard widget with the control's id where a custom control goes, and the code replaces it
// once, when it builds the window:
//
//     auto* quantity = AdoptControl<SpinControl>(window, {FourCC("Qnty"), 1});
//
// The custom control takes the placeholder's place in its layout (or its geometry), its place
// in the tab order, its id and other dynamic properties, its name, tooltips, accessible texts,
// size policy, enabled and visible state, and any label's buddy link; each control's `adopt`
// also takes what it can use of the placeholder's own state (a spin box's range and value, a
// label's text). The placeholder is deleted.
#pragma once

#include "toolkit/interface-description.h"

#include <QWidget>

namespace talmo {

// Puts `control` where `placeholder` is and deletes the placeholder; returns `control`.
QWidget* ReplaceControl(QWidget* placeholder, QWidget* control);

// The control with this id as a T: the custom control made from its placeholder, the control
// itself when it already is a T, or null when the window has no such id.
template <class T> T* AdoptControl(QWidget* root, ControlID id)
{
    QWidget* found = GetControlByID(root, id);
    if (!found)
        return nullptr;
    if (auto* control = qobject_cast<T*>(found))
        return control;
    return T::adopt(found);
}

} // namespace talmo
