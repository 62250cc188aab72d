// The look of all windows: the toolkit's Fusion style with a light and a dark palette.
#pragma once

#include <QPalette>

class QApplication;

namespace vesk {

enum class appearance { light, dark };

QPalette palette_of(appearance look);

// Whether colours for a dark ground are wanted; from the palette in use.
bool is_dark(const QPalette& palette);

// Sets style and palette: as the environment variable VESK_APPEARANCE says ("light" or "dark"), else as the desktop
// does, now and whenever it changes.
void follow_the_desktop(QApplication& application);

} // namespace vesk
