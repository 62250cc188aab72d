// Questions to the user: boxes, and names of files and folders.
#pragma once

#include "app/user_interface.h"

#include <QStringList>
#include <optional>
#include <string>

class QWidget;

namespace vesk {

// The window that a question belongs to; null: the program has none in sight.
QWidget* window_in_front();

// A box over the window in front. Closing it is the cautious answer.
box_answer ask_in_box(const std::string& title, const std::string& text, box_buttons buttons);

// Begins in the folder of the last file that was chosen, at first in `first_folder`. Nothing when cancelled.
std::optional<std::string> ask_for_file(const file_dialog& dialog, const QString& first_folder);

// Begins at `start`. Nothing when cancelled.
std::optional<std::string> ask_for_folder(const std::string& title, const std::string& start);

// The toolkit's list of filters from pairs of a description and a pattern, all separated by "|".
QStringList name_filters(const std::string& filter);

} // namespace vesk
