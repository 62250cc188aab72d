// Adapts an editor's tree to Qt.
//
// An index contains its node: `internalId` is 0 for the root, 1 for a group, and 2 plus the group for an item. Nothing
// is stored per item, so a tree of 1e5 opens at once.
#pragma once

#include "editors/editor.h"

#include <QAbstractItemModel>
#include <QIcon>
#include <array>
#include <vector>

namespace vesk {

class tree_model final : public QAbstractItemModel {
  Q_OBJECT

public:
  using node = editor_tree::node;

  tree_model(editor_tree& tree, QObject* parent);

  void reload(); // the tree's nodes have been replaced
  int group_count() const { return static_cast<int>(counts_.size()); }

  QModelIndex index_of(const node& which) const; // invalid: no such node
  node node_of(const QModelIndex& index) const;  // of a valid one

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  using QObject::parent;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex&) const override { return 1; }
  QVariant data(const QModelIndex& index, int role) const override;

private:
  bool is_there(const node& which) const; // the data set may have changed since `reload`
  const QIcon& icon(const node& which) const;
  QVariant data_of_item(std::size_t group, std::size_t item, int role) const;

  editor_tree& tree_;
  const std::array<QIcon, 5> icons_; // see tree_image
  const QIcon mark_;
  std::vector<int> counts_; // of items, by group
};

} // namespace vesk
