// Enter in windows without a default button, because their grids need the key.
#pragma once

#include <QDialog>
#include <QKeyEvent>

namespace vesk {

// Presses the button that has the focus. False: the event is not Enter, or no button has the focus.
bool press_focused_button(const QDialog& dialog, const QKeyEvent& event);

// Ctrl+Enter accepts the dialog, wherever the focus is.
void accept_by_ctrl_enter(QDialog& dialog);

} // namespace vesk
