#include "ui/grid_view.h"

#include "ui/cell_delegate.h"
#include "ui/guard.h"
#include "ui/measures.h"

#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>
#include <algorithm>
#include <utility>

namespace vesk {

namespace {

constexpr int row_height = 22, column_width = 70, widest_column = 420;
constexpr int least_digits = 2, least_digits_of_series = 4; // of row numbers: keeps the header width as rows are added
constexpr int fewest_rows = 6, most_rows = 22;              // that the size hint allows for
constexpr int columns_to_fit = 200; // the others keep the usual width until the user resizes them

// A free row's column starts with room for this text, so that it keeps its width as rows are added.
const char* usual_text(const cell_type& type) {
  switch (type.kind) {
  case cell_kind::date: return "88/88/8888";
  case cell_kind::time: return "88:88:88";
  case cell_kind::number: return "8888.8888";
  case cell_kind::text:
  case cell_kind::combo: return "88: Segment";
  default: return "";
  }
}

// Qt's own header measures up to 200 row numbers after each change of their number. The last one is the longest.
class row_numbers final : public QHeaderView {
public:
  explicit row_numbers(QWidget* parent) : QHeaderView(Qt::Vertical, parent) {
    setSectionsClickable(true);
    setHighlightSections(true);
  }
  QSize sizeHint() const override {
    return count() == 0 ? QHeaderView::sizeHint() : sectionSizeFromContents(count() - 1);
  }
};

bool is_move(int key) {
  switch (key) {
  case Qt::Key_Left:
  case Qt::Key_Right:
  case Qt::Key_Up:
  case Qt::Key_Down:
  case Qt::Key_Home:
  case Qt::Key_End:
  case Qt::Key_PageUp:
  case Qt::Key_PageDown: return true;
  default: return false;
  }
}

} // namespace

grid_view::grid_view(TFillCalcTable& table, const QString& accessible_name, QWidget* parent, tab_key tab)
    : QTableView(parent), model_(new grid_model(table, this)), tab_(tab) {
  setAccessibleName(accessible_name);
  setItemDelegate(new cell_delegate(this));
  setSelectionMode(QAbstractItemView::ContiguousSelection);
  setEditTriggers(QAbstractItemView::AnyKeyPressed | QAbstractItemView::DoubleClicked |
                  QAbstractItemView::EditKeyPressed);
  setTabKeyNavigation(false);
  setWordWrap(false);
  setVerticalHeader(new row_numbers(this));
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(scaled(row_height, *this));
  horizontalHeader()->setDefaultSectionSize(scaled(column_width, *this));
  horizontalHeader()->setResizeContentsPrecision(0); // only visible rows
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setTextElideMode(Qt::ElideRight);
  setModel(model_); // after the sizes: a header with rows signals each row that changes its size
  connect(model_, &grid_model::active_moved, this, [this] { take_active_cell(); });
  connect(model_, &grid_model::columns_replaced, this, [this] { asked_for_.clear(); });
  connect(model_, &grid_model::modelReset, this, [this] {
    take_size();
    take_block();
  });
  for (QScrollBar* bar : {verticalScrollBar(), horizontalScrollBar()})
    connect(bar, &QScrollBar::valueChanged, this, [this] { widen_soon(columns_to_measure::in_sight); });
  take_size();
}

// While the table is hidden, Qt's own size hint of a column visits all its rows.
int grid_view::width_in_sight(int column) const {
  QStyleOptionViewItem option;
  initViewItemOption(&option);
  const int first = std::max(rowAt(0), 0);
  const int in_sight = viewport()->height() / verticalHeader()->defaultSectionSize() + 2;
  const int end = std::min(first + std::max(in_sight, most_rows), model_->rowCount());
  int width = std::max(horizontalHeader()->sectionSizeHint(column), usual_width(column));
  for (int row = first; row < end; ++row)
    width = std::max(width, itemDelegate()->sizeHint(option, model_->index(row, column)).width());
  return width + scaled(6, *this);
}

// With room for a mark, except in the time column, which never has one.
int grid_view::usual_width(int column) const {
  const grid& content = model_->table().content();
  if (!content.has_free_rows()) return 0;
  const auto columns = content.columns();
  const cell_type& type = columns[static_cast<std::size_t>(column)].type;
  const bool is_series = columns[0].type.kind == cell_kind::date;
  if (type.kind == cell_kind::number && !is_series) return 0; // tables that are not series can have many number columns
  const int margins = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1);
  const int mark = type.kind == cell_kind::time ? 0 : style()->pixelMetric(QStyle::PM_SmallIconSize) + margins;
  return fontMetrics().horizontalAdvance(usual_text(type)) + margins + mark;
}

// New columns of a hidden page count for the first size of its window; to measure all pages at each new row is slow.
void grid_view::widen_to_contents(columns_to_measure which) {
  if (!isVisible() && !asked_for_.empty()) return;
  asked_for_.resize(static_cast<std::size_t>(model_->columnCount()));
  given_.resize(asked_for_.size());
  for (int column = 0; column < std::min(model_->columnCount(), columns_to_fit); ++column) {
    const int left = columnViewportPosition(column);
    if (which == columns_to_measure::in_sight && (left >= viewport()->width() || left + columnWidth(column) <= 0))
      continue;
    const int wanted = std::min(width_in_sight(column), scaled(widest_column, *this));
    int& before = asked_for_[static_cast<std::size_t>(column)];
    if (wanted <= before) continue;
    before = wanted;
    if (wanted <= columnWidth(column)) continue;
    setColumnWidth(column, wanted);
    given_[static_cast<std::size_t>(column)] = wanted;
  }
}

// Back to the usual width, for `widen_to_contents`. A name that was undone would keep the other columns off the screen.
void grid_view::narrow_to_contents() {
  const int columns = std::min({model_->columnCount(), columns_to_fit, static_cast<int>(given_.size())});
  for (int column = 0; column < columns; ++column) {
    if (columnWidth(column) != given_[static_cast<std::size_t>(column)]) continue;
    setColumnWidth(column, horizontalHeader()->defaultSectionSize());
  }
  asked_for_.clear();
}

// Once before the next paint: a row that is appended resets the model and then scrolls to it.
void grid_view::widen_soon(columns_to_measure which) {
  if (!isVisible()) return widen_to_contents(which);
  const bool is_waiting = will_widen_.has_value();
  if (!is_waiting || which == columns_to_measure::all) will_widen_ = which;
  if (is_waiting) return;
  QMetaObject::invokeMethod(
      this, [this] { widen_to_contents(*std::exchange(will_widen_, std::nullopt)); }, Qt::QueuedConnection);
}

void grid_view::showEvent(QShowEvent* event) {
  QTableView::showEvent(event);
  if (!event->spontaneous()) narrow_to_contents();
  widen_to_contents(columns_to_measure::all);
  take_block();
  take_active_cell();
}

// A reset removes the open editor. Qt then passes the focus on as Tab does, although the user goes on in this grid.
void grid_view::reset() {
  const QWidget* focused = QApplication::focusWidget();
  const bool had_focus = focused && isAncestorOf(focused);
  {
    const QScopedValueRollback guard(resetting_, true);
    QTableView::reset();
  }
  const QScopedValueRollback guard(taking_, true); // without an active cell, Qt takes the first one
  if (had_focus) setFocus();
}

void grid_view::take_size() {
  widen_soon(columns_to_measure::all);
  const int digits = table().content().has_free_rows() ? least_digits_of_series : least_digits;
  const QString longest = QString::number(model_->rowCount()).rightJustified(digits, '0');
  verticalHeader()->setMinimumWidth(fontMetrics().horizontalAdvance(longest) + scaled(10, *this));
  const auto columns = table().content().columns();
  horizontalHeader()->setStretchLastSection(columns.size() == 1 && columns[0].type.kind == cell_kind::text);
  updateGeometry();
}

QSize grid_view::sizeHint() const {
  const int rows = std::clamp(model_->rowCount(), fewest_rows, most_rows);
  const int frame = 2 * frameWidth() + scaled(4, *this);
  return {std::max(verticalHeader()->sizeHint().width(), verticalHeader()->minimumWidth()) +
              horizontalHeader()->length() + verticalScrollBar()->sizeHint().width() + frame,
          horizontalHeader()->sizeHint().height() + rows * verticalHeader()->defaultSectionSize() + frame};
}

// Qt walks through all rows before a row to find its position: too much for a hidden page.
void grid_view::take_active_cell() {
  if (!isVisible() || model_->columnCount() == 0) return;
  const QScopedValueRollback guard(taking_, true);
  const QModelIndex active =
      model_->index(static_cast<int>(table().active_row()), static_cast<int>(table().active_column()));
  if (currentIndex() == active && selectionModel()->isSelected(active)) return;
  selectionModel()->setCurrentIndex(active, QItemSelectionModel::ClearAndSelect);
  scrollTo(active);
}

// A reset of the model clears the view's selection, not the table's.
void grid_view::take_block() {
  const cell_range block = table().selection();
  if (!isVisible() || model_->columnCount() == 0) return;
  if (!block.contains(table().active_row(), table().active_column())) return;
  const auto at = [this](std::size_t row, std::size_t column) {
    return model_->index(static_cast<int>(row), static_cast<int>(column));
  };
  const QScopedValueRollback guard(taking_, true);
  selectionModel()->setCurrentIndex(at(table().active_row(), table().active_column()), QItemSelectionModel::NoUpdate);
  selectionModel()->select(QItemSelection(at(block.top, block.left), at(block.bottom, block.right)),
                           QItemSelectionModel::ClearAndSelect);
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
    const QItemSelectionRange& range = now.first(); // contiguous, so there is one
    table().set_selection(cell_range{static_cast<std::size_t>(range.top()), static_cast<std::size_t>(range.left()),
                                     static_cast<std::size_t>(range.bottom()),
                                     static_cast<std::size_t>(range.right())});
  }
  emit selection_moved();
}

std::optional<QModelIndex> grid_view::refused_cell() const {
  const auto& refused = table().refused();
  if (!refused) return std::nullopt;
  return model_->index(static_cast<int>(refused->row), static_cast<int>(refused->column));
}

// While an entry is refused, here or in another grid, no other cell can be edited. Text typed elsewhere is ignored as a
// whole: it is not meant for the refused cell.
bool grid_view::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
  if (trigger == NoEditTriggers || trigger == CurrentChanged) return QTableView::edit(index, trigger, event);
  const auto refused = refused_cell();
  const bool itself = refused == index;
  const bool would_edit = editTriggers() & trigger;
  if (refused && !itself) {
    if (would_edit && trigger != AnyKeyPressed) setCurrentIndex(*refused);
    if (trigger == AnyKeyPressed) QApplication::beep();
    return false;
  }
  if (would_edit && !itself && !table().allows_edit()) return false;
  return QTableView::edit(index, trigger, event);
}

// The delegate queues the commit on Enter. A command may have committed the entry and closed its editor by then.
void grid_view::commitData(QWidget* editor) {
  if (!editor->isHidden()) QTableView::commitData(editor);
}

void grid_view::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
  if (hint == QAbstractItemDelegate::RevertModelCache) table().give_up_refused();
  const bool next = hint == QAbstractItemDelegate::EditNextItem,
             previous = hint == QAbstractItemDelegate::EditPreviousItem;
  const bool enter = hint == QAbstractItemDelegate::SubmitModelCache;
  if (!editor->isHidden()) QTableView::closeEditor(editor, next || previous ? QAbstractItemDelegate::NoHint : hint);
  if (table().refused()) return; // the active cell stays on the refused entry
  if (next || previous) move_active(0, next ? 1 : -1);
  if (enter) move_active(1, 0);
}

void grid_view::commit_open_editor() {
  for (QWidget* editor : findChildren<QWidget*>()) {
    if (editor->parentWidget() != viewport() || !editor->isVisible()) continue; // a combo box contains a line edit
    if (!qobject_cast<QLineEdit*>(editor) && !qobject_cast<QComboBox*>(editor)) continue;
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
    return;
  }
}

void grid_view::show_menu() {
  const QPoint place = visualRect(currentIndex()).center();
  QContextMenuEvent event(QContextMenuEvent::Keyboard, place, viewport()->mapToGlobal(place));
  QApplication::sendEvent(this, &event);
}

// Keys lead to a refused entry and stay there until it is corrected or given up.
QModelIndex grid_view::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
  if (const auto refused = refused_cell()) return *refused;
  return QTableView::moveCursor(action, modifiers);
}

void grid_view::move_active(int rows, int columns) {
  if (const auto refused = refused_cell()) return setCurrentIndex(*refused);
  const QModelIndex now = currentIndex();
  const QModelIndex next = model_->index(std::clamp(now.row() + rows, 0, std::max(model_->rowCount() - 1, 0)),
                                         std::clamp(now.column() + columns, 0, std::max(model_->columnCount() - 1, 0)));
  setCurrentIndex(next);
}

// Ctrl+Shift+End and the like extend the selection, as in a spreadsheet; Qt would only move the active cell.
QItemSelectionModel::SelectionFlags grid_view::selectionCommand(const QModelIndex& index, const QEvent* event) const {
  constexpr auto both = Qt::ControlModifier | Qt::ShiftModifier;
  if (event && event->type() == QEvent::KeyPress && (static_cast<const QKeyEvent*>(event)->modifiers() & both) == both)
    return QItemSelectionModel::SelectCurrent;
  return QTableView::selectionCommand(index, event);
}

// F6 leaves every grid.
bool grid_view::focusNextPrevChild(bool next) {
  if (resetting_) return true;
  if (tab_ == tab_key::leaves_grid) return QTableView::focusNextPrevChild(next);
  move_active(0, next ? 1 : -1);
  return true;
}

// Enter moves down like the arrow; only Down on the last row appends one. Escape gives up a refused entry and never
// closes the dialog.
void grid_view::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
  case Qt::Key_Return:
  case Qt::Key_Enter: // an open editor passes the key on; closeEditor moves then
    if (state() != EditingState) move_active(1, 0);
    return;
  case Qt::Key_F6: QTableView::focusNextPrevChild(!(event->modifiers() & Qt::ShiftModifier)); return;
  case Qt::Key_Escape: table().give_up_refused(); return;
  case Qt::Key_F10: // Qt only knows the Menu key
    if (event->modifiers() != Qt::ShiftModifier) break;
    show_menu();
    return;
  case Qt::Key_Down: {
    bool appended = false;
    commit_open_editor(); // Down also commits the open entry
    if (!(event->modifiers() & ~Qt::KeypadModifier))
      attempt([&] { appended = table().extend_on_down(move_command::down); });
    if (appended) return;
    break;
  }
  default: break;
  }
  const QModelIndex before = currentIndex();
  QTableView::keyPressEvent(event);
  // A move that ends where it began drops the selection as any other does; Qt would keep it.
  if (is_move(event->key()) && !(event->modifiers() & Qt::ShiftModifier) && before.isValid() &&
      currentIndex() == before && state() != EditingState)
    selectionModel()->select(before, QItemSelectionModel::ClearAndSelect);
}

} // namespace vesk
