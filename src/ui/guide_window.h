// A simple viewer for the user guide, for systems without a browser.
#pragma once

class QString;
class QWidget;

namespace vesk {

// Shows an HTML file in a window beside `parent`, which owns it. A window that is already open comes to the front.
void show_guide(QWidget& parent, const QString& file);

} // namespace vesk
