// Adapts the items of a combo cell to Qt. Texts are made when they are shown.
#pragma once

#include "charts/item_list.h"

#include <QAbstractListModel>
#include <memory>

namespace vesk {

class item_model final : public QAbstractListModel {
  Q_OBJECT

public:
  item_model(std::shared_ptr<const item_list> items, QObject* parent)
      : QAbstractListModel(parent), items_(std::move(items)) {}

  const item_list& items() const { return *items_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

private:
  std::shared_ptr<const item_list> items_;
};

} // namespace vesk
