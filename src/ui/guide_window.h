// A plain reader for the user guide, where there is no browser.
#pragma once

class QString;
class QWidget;

namespace vesk {

// Shows an HTML file in a window beside `parent`, which owns it. A window that is open comes to the front.
void show_guide(QWidget& parent, const QString& file);

} // namespace vesk
