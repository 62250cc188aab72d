// Converts texts between the data, where they are bytes, and the screen.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace vesk {

// For display: UTF-8 where the bytes are valid UTF-8, else Windows-1252.
QString shown(std::string_view bytes);

// For storage: UTF-8.
std::string stored(const QString& text);

// A text of the program with the line ends that Qt expects.
QString shown_lines(std::string_view text);

// `text` as a tool tip, shown literally, in lines of readable length. Qt treats a text that looks like HTML as HTML and
// opens the images it names, and a segment's name may look like that. Use it for every tip that is not a text of the
// program. Labels are set to Qt::PlainText for the same reason.
QString tool_tip(const QString& text);

// `text` as a label or caption that shows each "&" literally, without a mnemonic.
QString without_mnemonics(QString text);

} // namespace vesk
