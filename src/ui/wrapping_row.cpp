#include "ui/wrapping_row.h"

#include <QStyle>
#include <QWidget>
#include <algorithm>

namespace vesk {

wrapping_row::wrapping_row(QWidget* parent) : QLayout(parent) {
  setContentsMargins(0, 0, 0, 0);
  setSpacing(parent->style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing, nullptr, parent));
}

wrapping_row::~wrapping_row() {
  qDeleteAll(items_);
}

void wrapping_row::addItem(QLayoutItem* item) {
  items_.append(item);
}

int wrapping_row::count() const {
  return static_cast<int>(items_.size());
}

QLayoutItem* wrapping_row::itemAt(int index) const {
  return items_.value(index);
}

QLayoutItem* wrapping_row::takeAt(int index) {
  return index >= 0 && index < count() ? items_.takeAt(index) : nullptr;
}

int wrapping_row::heightForWidth(int width) const {
  return lay_out(QRect(0, 0, width, 0), false);
}

QSize wrapping_row::sizeHint() const {
  QSize size(std::max(count() - 1, 0) * spacing(), 0);
  for (const QLayoutItem* item : items_)
    size = {size.width() + item->sizeHint().width(), std::max(size.height(), item->sizeHint().height())};
  return size;
}

QSize wrapping_row::minimumSize() const {
  QSize size;
  for (const QLayoutItem* item : items_) size = size.expandedTo(item->minimumSize());
  return size;
}

void wrapping_row::setGeometry(const QRect& area) {
  QLayout::setGeometry(area);
  lay_out(area, true);
}

int wrapping_row::lay_out(const QRect& area, bool move) const {
  int x = area.x(), y = area.y(), line_height = 0;
  for (QLayoutItem* item : items_) {
    if (item->isEmpty()) continue;
    const int most = std::max(area.width(), item->minimumSize().width());
    const QSize size(std::min(item->sizeHint().width(), most), item->sizeHint().height());
    if (line_height > 0 && x + size.width() > area.x() + area.width()) {
      x = area.x();
      y += line_height + spacing();
      line_height = 0;
    }
    if (move) item->setGeometry(QRect(QPoint(x, y), size));
    x += size.width() + spacing();
    line_height = std::max(line_height, size.height());
  }
  return y + line_height - area.y();
}

QWidget* in_wrapping_row(std::initializer_list<QWidget*> widgets) {
  auto* part = new QWidget;
  auto* row = new wrapping_row(part);
  int height = 0;
  for (QWidget* it : widgets) {
    row->addWidget(it);
    height = std::max(height, it->sizeHint().height());
  }
  for (QWidget* it : widgets) it->setMinimumHeight(height);
  return part;
}

} // namespace vesk
