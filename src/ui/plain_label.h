// Labels for texts that may hold anything, such as names of segments.
#pragma once

#include <string>

class QLabel;

namespace vesk {

// Shows each letter as it is and breaks long lines. The caller's layout owns it.
QLabel* plain_label(const std::string& name);

// An empty text takes no room.
void show_text(QLabel& label, const std::string& text);

// Keeps its room, and a screen reader says a new text.
void announce(QLabel& label, const std::string& text);

} // namespace vesk
