// Labels for arbitrary texts, such as names of segments.
#pragma once

#include <string>

class QLabel;

namespace vesk {

// Shows the text literally and wraps long lines. The caller's layout owns the label.
QLabel* plain_label(const std::string& name);

// An empty text takes no room.
void show_text(QLabel& label, const std::string& text);

// Reserves its line; screen readers announce a new text.
void announce(QLabel& label, const std::string& text);

} // namespace vesk
