#include "ui/item_picker.h"

#include "ui/item_model.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QListView>
#include <algorithm>
#include <utility>

namespace vesk {

namespace {

constexpr int rows_in_sight = 12, least_width = 220;

bool moves_in_list(int key) {
  return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
}

} // namespace

item_picker::item_picker(QWidget* parent, std::shared_ptr<const item_list> items)
    : QLineEdit(parent), model_(new item_model(std::move(items), this)) {
  connect(this, &QLineEdit::textChanged, this, [this] { follow_text(); });
}

item_picker::~item_picker() {
  delete list_;
}

void item_picker::showEvent(QShowEvent* event) {
  QLineEdit::showEvent(event);
  if (!list_) {
    list_ = new QListView(window());
    list_->setObjectName("ItemList");
    list_->setAccessibleName(accessibleName());
    list_->setFocusPolicy(Qt::NoFocus); // the line keeps the keyboard
    list_->setUniformItemSizes(true);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list_->setModel(model_);
    connect(list_, &QListView::clicked, this, [this](const QModelIndex& index) {
      take(index);
      emit chosen();
    });
  }
  place_list();
  list_->show();
  list_->raise();
  follow_text();
}

void item_picker::hideEvent(QHideEvent* event) {
  QLineEdit::hideEvent(event);
  if (list_) list_->hide();
}

void item_picker::moveEvent(QMoveEvent* event) {
  QLineEdit::moveEvent(event);
  if (list_) place_list();
}

// Below the cell, or above it where there is more room.
void item_picker::place_list() {
  const QPoint top = mapTo(window(), QPoint(0, 0));
  const int above = top.y(), below = window()->height() - top.y() - height();
  const int wanted = rows_in_sight * list_->sizeHintForRow(0) + 2 * list_->frameWidth();
  const int size = std::min(wanted, std::max(above, below));
  const int wide = std::min(std::max(width(), scaled(least_width, *this)), window()->width());
  const int left = std::clamp(top.x(), 0, window()->width() - wide);
  list_->setGeometry(left, below >= size ? top.y() + height() : above - size, wide, size);
}

void item_picker::follow_text() {
  if (!list_) return;
  const auto item = model_->items().find(stored(text()));
  list_->setCurrentIndex(item ? model_->index(static_cast<int>(*item)) : QModelIndex()); // none: Enter takes none
}

void item_picker::take(const QModelIndex& index) {
  setText(index.data().toString());
  selectAll();
}

void item_picker::keyPressEvent(QKeyEvent* event) {
  if (!list_ || !moves_in_list(event->key())) return QLineEdit::keyPressEvent(event);
  QCoreApplication::sendEvent(list_, event);
  if (list_->currentIndex().isValid()) take(list_->currentIndex());
}

} // namespace vesk
