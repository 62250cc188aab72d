// The look of all windows: Qt's Fusion style with a light and a dark palette.
#pragma once

#include <QPalette>

class QApplication;

namespace vesk {

enum class appearance { light, dark };

QPalette palette_of(appearance look);

// Whether the palette in use is dark.
bool is_dark(const QPalette& palette);

// Sets style and palette: from the environment variable VESK_APPEARANCE ("light" or "dark") if set, else from the
// desktop, now and whenever its setting changes.
void follow_the_desktop(QApplication& application);

} // namespace vesk
