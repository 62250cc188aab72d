#include "ui/grid_view.h"

#include "ui/cell_delegate.h"
#include "ui/guard.h"
#include "ui/measures.h"

#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <algorithm>

namespace vesk {

namespace {

constexpr int row_height = 22, column_width = 90, widest_column = 260;
constexpr int columns_to_fit = 40; // the others keep the usual width until they are moved by hand

} // namespace

grid_view::grid_view(TFillCalcTable& table, const QString& accessible_name, QWidget* parent)
    : QTableView(parent), model_(new grid_model(table, this)) {
  setAccessibleName(accessible_name);
  setModel(model_);
  setItemDelegate(new cell_delegate(this));
  setSelectionMode(QAbstractItemView::ContiguousSelection);
  setEditTriggers(QAbstractItemView::AnyKeyPressed | QAbstractItemView::DoubleClicked |
                  QAbstractItemView::EditKeyPressed);
  setTabKeyNavigation(false);
  setWordWrap(false);
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(scaled(row_height, *this));
  horizontalHeader()->setDefaultSectionSize(scaled(column_width, *this));
  horizontalHeader()->setResizeContentsPrecision(0); // rows in sight
  connect(model_, &grid_model::active_moved, this, [this] { take_active_cell(); });
  connect(model_, &grid_model::modelReset, this, [this] { fit_columns(); });
  fit_columns();
  take_active_cell();
}

void grid_view::fit_columns() {
  for (int column = 0; column < std::min(model_->columnCount(), columns_to_fit); ++column) {
    const int wanted =
        std::max(sizeHintForColumn(column), horizontalHeader()->sectionSizeHint(column)) + scaled(6, *this);
    setColumnWidth(column, std::clamp(wanted, columnWidth(column), scaled(widest_column, *this)));
  }
}

void grid_view::take_active_cell() {
  if (model_->columnCount() == 0) return;
  const QScopedValueRollback guard(taking_, true);
  const QModelIndex active =
      model_->index(static_cast<int>(table().active_row()), static_cast<int>(table().active_column()));
  if (currentIndex() == active && selectionModel()->isSelected(active)) return;
  selectionModel()->setCurrentIndex(active, QItemSelectionModel::ClearAndSelect);
  scrollTo(active);
}

void grid_view::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTableView::currentChanged(current, previous);
  if (taking_ || !current.isValid()) return;
  const QScopedValueRollback guard(taking_, true);
  attempt(
      [&] { table().set_active(static_cast<std::size_t>(current.row()), static_cast<std::size_t>(current.column())); });
}

void grid_view::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTableView::selectionChanged(selected, deselected);
  const QItemSelection now = selectionModel()->selection();
  if (now.isEmpty()) {
    table().set_selection(std::nullopt);
  } else {
    const QItemSelectionRange& range = now.first(); // contiguous: there is one
    table().set_selection(cell_range{static_cast<std::size_t>(range.top()), static_cast<std::size_t>(range.left()),
                                     static_cast<std::size_t>(range.bottom()),
                                     static_cast<std::size_t>(range.right())});
  }
  emit selection_moved();
}

// While an entry is refused no other cell can be edited.
bool grid_view::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
  const auto& refused = table().refused();
  const bool other =
      refused && (static_cast<int>(refused->row) != index.row() || static_cast<int>(refused->column) != index.column());
  if (!other || trigger == NoEditTriggers || trigger == CurrentChanged) return QTableView::edit(index, trigger, event);
  const bool would_edit = editTriggers() & trigger;
  if (would_edit) table().set_active(refused->row, refused->column);
  return false;
}

void grid_view::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
  if (hint == QAbstractItemDelegate::RevertModelCache) table().give_up_refused();
  const bool next = hint == QAbstractItemDelegate::EditNextItem,
             previous = hint == QAbstractItemDelegate::EditPreviousItem;
  QTableView::closeEditor(editor, next || previous ? QAbstractItemDelegate::NoHint : hint);
  if (next || previous) move_active(0, next ? 1 : -1);
}

void grid_view::commit_open_editor() {
  for (QWidget* editor : findChildren<QWidget*>()) {
    if (!editor->isVisible() || (!qobject_cast<QLineEdit*>(editor) && !qobject_cast<QComboBox*>(editor))) continue;
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
    return;
  }
}

void grid_view::move_active(int rows, int columns) {
  const QModelIndex now = currentIndex();
  const QModelIndex next = model_->index(std::clamp(now.row() + rows, 0, std::max(model_->rowCount() - 1, 0)),
                                         std::clamp(now.column() + columns, 0, std::max(model_->columnCount() - 1, 0)));
  setCurrentIndex(next);
}

// Tab moves in the grid; F6 leaves it.
bool grid_view::focusNextPrevChild(bool next) {
  move_active(0, next ? 1 : -1);
  return true;
}

// Enter moves down like the arrow; only Down out of the last row appends one. Escape gives up a refused entry and never
// closes the dialog.
void grid_view::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
  case Qt::Key_Return:
  case Qt::Key_Enter: return move_active(1, 0);
  case Qt::Key_F6: QTableView::focusNextPrevChild(!(event->modifiers() & Qt::ShiftModifier)); return;
  case Qt::Key_Escape: table().give_up_refused(); return;
  case Qt::Key_Down: {
    bool appended = false;
    commit_open_editor(); // Down also leaves a line that is being typed
    if (event->modifiers() == Qt::NoModifier) attempt([&] { appended = table().extend_on_down(move_command::down); });
    if (appended) return;
    break;
  }
  default: break;
  }
  QTableView::keyPressEvent(event);
}

} // namespace vesk
