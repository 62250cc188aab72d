#include "ui/results_model.h"

#include "charts/numeric_picture.h"
#include "ui/texts.h"

namespace vesk {

void results_model::initialize_grid(const std::vector<std::string>& column_labels, int rows) {
  beginResetModel();
  labels_.clear();
  for (const std::string& label : column_labels) labels_ << shown(label);
  rows_ = rows;
  endResetModel();
}

int results_model::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(labels_.size());
}

QVariant results_model::data(const QModelIndex& index, int role) const {
  if (role == Qt::TextAlignmentRole) return static_cast<int>(Qt::AlignCenter);
  if (role != Qt::DisplayRole) return {};
  const std::optional<double> value = read_(index.row(), index.column());
  return value ? QVariant(shown(number_in_picture(*value, picture_))) : QVariant();
}

QVariant results_model::headerData(int section, Qt::Orientation orientation, int role) const {
  const bool columns = orientation == Qt::Horizontal;
  if (role == Qt::ToolTipRole && columns) return tool_tip(labels_[section]);
  if (role != Qt::DisplayRole) return {};
  return columns ? QVariant(labels_[section]) : QVariant(section + 1);
}

} // namespace vesk
