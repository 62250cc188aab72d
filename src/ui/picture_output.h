// Pictures that go to a file or to a printer.
#pragma once

#include <QString>
#include <functional>

class QPaintDevice;
class QRect;

namespace vesk {

struct picture_output {
  std::function<bool(const QString& file_name)> save;     // by the ending: png, svg, pdf or csv; false: not written
  std::function<bool(QPaintDevice&, const QRect&)> paint; // false: the device takes no picture
};

// Ask for a name, and say in a box what failed.
void save_picture(const picture_output& picture);
void print_picture(const picture_output& picture); // to the default printer; without one as a PDF file

} // namespace vesk
