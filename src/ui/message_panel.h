// The messages with their commands: copy, save, clear.
#pragma once

#include <QWidget>
#include <functional>
#include <string>

namespace vesk {

class info_list;

class message_panel final : public QWidget {
public:
  // `save` is called with the text of all messages.
  message_panel(QWidget* parent, std::function<void(const std::string& text)> save);

  info_list* list() { return list_; }

private:
  info_list* list_;
};

} // namespace vesk
