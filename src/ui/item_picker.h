// The editor of a combo cell with many items: a line for the number or name of an item, and a list that follows it.
#pragma once

#include "charts/item_list.h"

#include <QLineEdit>
#include <QPointer>
#include <memory>

class QListView;
class QModelIndex;

namespace vesk {

class item_model;

class item_picker final : public QLineEdit {
  Q_OBJECT

public:
  item_picker(QWidget* parent, std::shared_ptr<const item_list> items);
  ~item_picker() override;

signals:
  void chosen(); // by a click in the list; the line holds the item's text

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void moveEvent(QMoveEvent* event) override;

private:
  void place_list();
  void follow_text();
  void take(const QModelIndex& index);

  item_model* model_;
  QPointer<QListView> list_; // a child of the window beside the grid, so that it can extend beyond the cell
};

} // namespace vesk
