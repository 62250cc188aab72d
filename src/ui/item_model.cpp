#include "ui/item_model.h"

#include "ui/texts.h"

namespace vesk {

int item_model::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(items_->size());
}

QVariant item_model::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
  return shown(items_->text(static_cast<std::size_t>(index.row())));
}

} // namespace vesk
