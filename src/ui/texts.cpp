#include "ui/texts.h"

#include "dataset/text_encoding.h"

namespace vesk {

QString shown(std::string_view bytes) {
  return QString::fromStdString(shown_text(bytes));
}

std::string stored(const QString& text) {
  return text.toStdString();
}

QString shown_lines(std::string_view text) {
  return shown(text).replace("\r\n", "\n").trimmed();
}

QString tool_tip(const QString& text) {
  return text.isEmpty() ? text : "<qt>" + text.toHtmlEscaped().replace('\n', "<br>") + "</qt>";
}

QString without_mnemonics(QString text) {
  return text.replace('&', "&&");
}

} // namespace vesk
