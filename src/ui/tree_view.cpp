#include "ui/tree_view.h"

#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QScopedValueRollback>
#include <QScrollBar>

namespace vesk {

namespace {

constexpr int usual_width = 290, usual_height = 320;

} // namespace

tree_view::tree_view(editor_tree& tree, runner run, QWidget* parent)
    : QTreeView(parent), tree_(tree), model_(new tree_model(tree, this)), run_(std::move(run)) {
  setObjectName(shown(tree.name()));
  setAccessibleName(shown(tree.root()));
  setModel(model_);
  setHeaderHidden(true);
  setUniformRowHeights(true); // otherwise Qt measures each of 1e5 rows
  setEditTriggers(NoEditTriggers);
  setSelectionMode(SingleSelection);
  setExpandsOnDoubleClick(true);
  header()->setStretchLastSection(true);
}

QSize tree_view::sizeHint() const {
  return {scaled(usual_width, *this), scaled(usual_height, *this)};
}

void tree_view::begin() {
  is_new_ = true;
}

// Queued: during a click its index would refer to the old nodes.
void tree_view::tree_changed() {
  if (!selecting_) return take_tree();
  QMetaObject::invokeMethod(
      this, [this] { attempt([this] { take_tree(); }); }, Qt::QueuedConnection);
}

void tree_view::take_tree() {
  if (menu_) menu_->close(); // its commands may refer to removed nodes
  const QScopedValueRollback guard(taking_, true);
  const bool all = std::exchange(is_new_, false);
  const bool root_is_open = all || isExpanded(model_->index_of({}));
  std::vector<bool> closed(static_cast<std::size_t>(model_->group_count()));
  for (std::size_t group = 0; !all && group < closed.size(); ++group)
    closed[group] = !isExpanded(model_->index_of({group, std::nullopt}));
  const int scrolled = all ? 0 : verticalScrollBar()->value();

  model_->reload();
  // Until executeDelayedItemsLayout this only records which nodes are open.
  closed.resize(static_cast<std::size_t>(model_->group_count()));
  for (std::size_t group = 0; group < closed.size(); ++group)
    if (!closed[group]) setExpanded(model_->index_of({group, std::nullopt}), true);
  setExpanded(model_->index_of({}), root_is_open);
  executeDelayedItemsLayout();
  verticalScrollBar()->setValue(scrolled);
  take_selection();
}

void tree_view::take_selection() {
  const QScopedValueRollback guard(taking_, true);
  const QModelIndex selected = tree_.selected() ? model_->index_of(*tree_.selected()) : QModelIndex();
  if (selected.isValid())
    setCurrentIndex(selected);
  else
    selectionModel()->clear();
}

void tree_view::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTreeView::currentChanged(current, previous);
  if (taking_ || !current.isValid()) return;
  const QScopedValueRollback guard(selecting_, true);
  run_([&] { tree_.select(model_->node_of(current)); });
}

// Qt then selects the first node, which the user did not choose.
void tree_view::focusInEvent(QFocusEvent* event) {
  const QScopedValueRollback guard(taking_, true);
  QTreeView::focusInEvent(event);
}

// Popups.

void tree_view::contextMenuEvent(QContextMenuEvent* event) {
  const bool by_key = event->reason() == QContextMenuEvent::Keyboard;
  const QModelIndex at = by_key ? currentIndex() : indexAt(event->pos());
  if (at.isValid()) show_menu(at, by_key ? viewport()->mapToGlobal(visualRect(at).center()) : event->globalPos());
}

void tree_view::show_menu(const QModelIndex& at, const QPoint& place) {
  attempt([&] {
    const auto node = model_->node_of(at);
    const std::vector<editor_tree::menu_item> items = tree_.menu(node);
    if (items.empty()) return;
    menu_ = new QMenu(this);
    menu_->setAttribute(Qt::WA_DeleteOnClose);
    menu_->setObjectName(node.item ? "SegmentPopupMenu" : "SystemPopupMenu");
    menu_->setAccessibleName(at.data().toString());
    for (const editor_tree::menu_item& item : items) {
      QAction* action = menu_->addAction(shown(item.text));
      action->setObjectName(shown(item.name));
      action->setEnabled(item.enabled);
      // Display only; the tree handles the key.
      if (!item.key.empty()) action->setShortcut(QKeySequence(shown(item.key)));
      connect(action, &QAction::triggered, this, [this, command = item.run] { run_(command); });
    }
    menu_->popup(place);
    menu_->setActiveAction(menu_->actions().front());
  });
}

bool tree_view::run_by_key(const QKeyEvent& event) {
  if (!currentIndex().isValid()) return false;
  const QKeySequence pressed(event.keyCombination());
  for (const editor_tree::menu_item& item : tree_.menu(model_->node_of(currentIndex()))) {
    if (item.key.empty() || !item.enabled || QKeySequence(shown(item.key)) != pressed) continue;
    run_(item.run);
    return true;
  }
  return false;
}

void tree_view::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F6) {
    focusNextPrevChild(!(event->modifiers() & Qt::ShiftModifier));
  } else if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
    if (currentIndex().isValid())
      show_menu(currentIndex(), viewport()->mapToGlobal(visualRect(currentIndex()).center()));
  } else {
    bool ran = false;
    attempt([&] { ran = run_by_key(*event); });
    if (!ran) QTreeView::keyPressEvent(event);
  }
}

} // namespace vesk
