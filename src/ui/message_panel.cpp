#include "ui/message_panel.h"

#include "ui/guard.h"
#include "ui/info_list.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace vesk {

message_panel::message_panel(QWidget* parent, std::function<void(const std::string&)> save, bool& wraps_lines)
    : QWidget(parent), list_(new info_list(this)) {
  setObjectName("MessagePanel");
  auto* row = new QHBoxLayout;
  row->setContentsMargins(scaled(8, *this), 0, scaled(4, *this), 0);
  row->setSpacing(0);
  row->addWidget(new QLabel("Messages"));
  row->addStretch(1);
  const auto add = [&](const char* name, const char* text, const char* hint) {
    auto* button = new QToolButton;
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(hint);
    button->setAccessibleName(QString(text) + " messages");
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    row->addWidget(button);
    return button;
  };
  QToolButton* wrap = add("WrapMessagesButton", "Wrap", "Break long messages to the width of the window");
  wrap->setCheckable(true);
  connect(wrap, &QToolButton::toggled, this, [this, &wraps_lines](bool wanted) {
    wraps_lines = wanted;
    list_->wrap_lines(wanted);
  });
  wrap->setChecked(wraps_lines);
  connect(add("CopyMessagesButton", "Copy", "Copy all messages as text"), &QToolButton::clicked, this,
          [this] { QApplication::clipboard()->setText(list_->all_text()); });
  connect(add("SaveMessagesButton", "Save...", "Save all messages as a text file"), &QToolButton::clicked, this,
          [this, save = std::move(save)] { attempt([&] { save(stored(list_->all_text())); }); });
  connect(add("ClearMessagesButton", "Clear", "Remove all messages"), &QToolButton::clicked, this,
          [this] { list_->clear(); });
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addLayout(row);
  column->addWidget(list_, 1);
}

} // namespace vesk
