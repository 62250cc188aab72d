// The messages with their commands: wrap, copy, save, clear.
#pragma once

#include <QWidget>
#include <functional>
#include <string>

namespace vesk {

class info_list;

class message_panel final : public QWidget {
public:
  // `save` is called with the text of all messages. `wraps_lines`, which must outlive the panel, is the user's choice.
  message_panel(QWidget* parent, std::function<void(const std::string& text)> save, bool& wraps_lines);

  info_list* list() { return list_; }

private:
  info_list* list_;
};

} // namespace vesk
