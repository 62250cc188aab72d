// The view of an editor's tree: selection, popups and keys.
#pragma once

#include "ui/tree_model.h"

#include <QPointer>
#include <QTreeView>
#include <functional>

class QMenu;

namespace vesk {

class tree_view final : public QTreeView {
  Q_OBJECT

public:
  using runner = std::function<void(const std::function<void()>&)>; // runs a command of the window

  tree_view(editor_tree& tree, runner run, QWidget* parent);

  void begin();        // before the window is shown: opens all nodes of the next tree
  void tree_changed(); // its nodes or the selection
  QSize sizeHint() const override;

protected:
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

private:
  void take_tree();
  void take_selection();
  void show_menu(const QModelIndex& at, const QPoint& place);
  bool run_by_key(const QKeyEvent& event); // a command of the popup with a shortcut

  editor_tree& tree_;
  tree_model* model_;
  const runner run_;
  QPointer<QMenu> menu_; // while it is open
  bool is_new_ = true;   // no open nodes to restore
  bool taking_ = false;  // from the tree; changes are not sent back meanwhile
  bool selecting_ = false;
};

} // namespace vesk
