#include "ui/tree_model.h"

#include "ui/images.h"
#include "ui/texts.h"

#include <QApplication>
#include <QStyle>

namespace vesk {

namespace {

constexpr quintptr root_id = 0, group_id = 1, first_item_id = 2;

std::size_t position(int row) {
  return static_cast<std::size_t>(row);
}

} // namespace

tree_model::tree_model(editor_tree& tree, QObject* parent)
    : QAbstractItemModel(parent),
      tree_(tree), icons_{tree_image(0), tree_image(1), tree_image(2), tree_image(3), tree_image(4)},
      mark_(QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning)) {}

const QIcon& tree_model::icon(const node& which) const {
  return icons_[static_cast<std::size_t>(tree_.image(which))];
}

void tree_model::reload() {
  beginResetModel();
  counts_.resize(tree_.group_count());
  for (std::size_t group = 0; group < counts_.size(); ++group)
    counts_[group] = static_cast<int>(tree_.item_count(group));
  endResetModel();
}

QModelIndex tree_model::index_of(const node& which) const {
  if (!which.group) return createIndex(0, 0, root_id);
  if (*which.group >= counts_.size()) return {};
  if (!which.item) return createIndex(static_cast<int>(*which.group), 0, group_id);
  if (*which.item >= position(counts_[*which.group])) return {};
  return createIndex(static_cast<int>(*which.item), 0, first_item_id + *which.group);
}

tree_model::node tree_model::node_of(const QModelIndex& index) const {
  const quintptr id = index.internalId();
  if (id == root_id) return {};
  if (id == group_id) return {position(index.row()), std::nullopt};
  return {id - first_item_id, position(index.row())};
}

QModelIndex tree_model::index(int row, int column, const QModelIndex& parent) const {
  if (column != 0 || row < 0 || row >= rowCount(parent)) return {};
  if (!parent.isValid()) return createIndex(row, column, root_id);
  if (parent.internalId() == root_id) return createIndex(row, column, group_id);
  return createIndex(row, column, first_item_id + static_cast<quintptr>(parent.row()));
}

QModelIndex tree_model::parent(const QModelIndex& child) const {
  if (!child.isValid() || child.internalId() == root_id) return {};
  if (child.internalId() == group_id) return createIndex(0, 0, root_id);
  return createIndex(static_cast<int>(child.internalId() - first_item_id), 0, group_id);
}

int tree_model::rowCount(const QModelIndex& parent) const {
  if (!parent.isValid()) return 1;
  if (parent.column() != 0) return 0;
  if (parent.internalId() == root_id) return group_count();
  return parent.internalId() == group_id ? counts_[position(parent.row())] : 0;
}

bool tree_model::is_there(const node& which) const {
  return !which.group ||
         (*which.group < tree_.group_count() && (!which.item || *which.item < tree_.item_count(*which.group)));
}

QVariant tree_model::data_of_item(std::size_t group, std::size_t item, int role) const {
  switch (role) {
  case Qt::DisplayRole: return shown(tree_.item_text(group, item));
  case Qt::AccessibleTextRole: {
    const std::string name = tree_.item_text(group, item);
    return shown(name.empty() ? tree_.item_tip(group, item) : name);
  }
  case Qt::ToolTipRole: return tool_tip(shown(tree_.item_tip(group, item)));
  case Qt::AccessibleDescriptionRole: return shown(tree_.item_tip(group, item));
  case Qt::DecorationRole:
    return tree_.item_mark(group, item) ? with_mark(icon({group, item}), mark_) : icon({group, item});
  default: return {};
  }
}

QVariant tree_model::data(const QModelIndex& index, int role) const {
  const node at = node_of(index);
  if (!is_there(at)) return {};
  if (at.item) return data_of_item(*at.group, *at.item, role);
  switch (role) {
  case Qt::DisplayRole: return shown(at.group ? tree_.group_text(*at.group) : std::string(tree_.root()));
  case Qt::DecorationRole: return icon(at);
  default: return {};
  }
}

} // namespace vesk
