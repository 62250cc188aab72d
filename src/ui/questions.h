// Questions to the user: boxes, and names of files and folders.
#pragma once

#include "app/user_interface.h"

#include <QStringList>
#include <optional>
#include <string>

class QWidget;

namespace vesk {

// The parent window for a question; null: no window is visible.
QWidget* window_in_front();

// A box over the frontmost window. Closing it gives the cautious answer.
box_answer ask_in_box(const std::string& title, const std::string& text, box_buttons buttons);

// Starts in the folder of the last chosen or opened file, before that in `first_folder`. Empty if cancelled.
std::optional<std::string> ask_for_file(const file_dialog& dialog, const QString& first_folder);

// A file was opened without asking for it: questions about files start in its folder.
void note_opened_file(const QString& file);

// Starts in `start`. Empty if cancelled.
std::optional<std::string> ask_for_folder(const std::string& title, const std::string& start);

// Qt's list of filters from pairs of description and pattern, all separated by "|".
QStringList name_filters(const std::string& filter);

} // namespace vesk
