#include "ui/find_bar.h"

#include "ui/texts.h"

#include <QAction>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vesk {

find_bar::find_bar(editor& form, runner run, std::function<editor_panel*()> panel_with_focus, QWidget& window)
    : QWidget(&window), form_(form), run_(std::move(run)), panel_with_focus_(std::move(panel_with_focus)),
      open_(new QAction("&Find a name...", &window)), wanted_(new QLineEdit) {
  setObjectName("FindBar");
  wanted_->setObjectName("FindEdit");
  auto* label = new QLabel("Find:");
  label->setBuddy(wanted_);
  auto* next = new QPushButton("Next");
  next->setObjectName("FindNextButton");
  next->setToolTip("Go to the next name that contains this text (F3)");
  auto* close = new QPushButton("Close");
  close->setObjectName("FindCloseButton");
  close->setToolTip("Hide this line (Esc)");
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(label);
  row->addWidget(wanted_, 1);
  row->addWidget(next);
  row->addWidget(close);
  open_->setObjectName("FindAction");
  open_->setShortcut(QKeySequence::Find);
  auto* again = new QAction(&window);
  again->setShortcut(Qt::Key_F3);
  window.addActions({open_, again});
  connect(open_, &QAction::triggered, this, [this] { open(); });
  connect(again, &QAction::triggered, this, [this] { wanted_->text().isEmpty() ? open() : find(); });
  connect(next, &QPushButton::clicked, this, [this] { find(); });
  connect(close, &QPushButton::clicked, this, [this] { close_line(); });
  hide();
}

void find_bar::open() {
  QWidget* focus = window()->focusWidget();
  if (!isAncestorOf(focus)) {
    came_from_ = focus;
    searched_ = panel_with_focus_();
  }
  show();
  wanted_->setFocus();
  wanted_->selectAll();
}

// The line keeps the focus, so that Enter finds the next name.
void find_bar::find() {
  QWidget* before = window()->focusWidget();
  const bool is_typing = isAncestorOf(before);
  if (!is_typing) searched_ = panel_with_focus_();
  run_([&] { form_.find_next(searched_, stored(wanted_->text())); });
  QWidget* after = window()->focusWidget();
  if (!is_typing || after == before) return;
  came_from_ = after;
  before->setFocus();
}

void find_bar::close_line() {
  hide();
  if (came_from_) came_from_->setFocus();
}

void find_bar::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (event->key() == Qt::Key_Escape) return close_line();
  if (enter && wanted_->hasFocus()) return find();
  QWidget::keyPressEvent(event);
}

} // namespace vesk
