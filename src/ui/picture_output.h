// Saves and prints pictures.
#pragma once

#include <QString>
#include <functional>

class QPaintDevice;
class QRect;

namespace vesk {

struct picture_output {
  // The extension selects the format: png, svg, pdf or csv. False: not written.
  std::function<bool(const QString& file_name)> save;
  std::function<bool(QPaintDevice&, const QRect&)> paint; // false: cannot paint on the device
};

// Ask for a name, and report failures in a box.
void save_picture(const picture_output& picture);
void print_picture(const picture_output& picture); // to the default printer; to a PDF file if there is none

} // namespace vesk
