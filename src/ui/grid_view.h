// The view of every grid of the program: keys, selection and menu on a TFillCalcTable.
#pragma once

#include "ui/grid_model.h"

#include <QTableView>
#include <optional>
#include <vector>

namespace vesk {

class grid_view : public QTableView {
  Q_OBJECT

public:
  // Tab moves through editable cells, and leaves a read-only grid.
  enum class tab_key { moves_in_grid, leaves_grid };

  grid_view(TFillCalcTable& table, const QString& accessible_name, QWidget* parent,
            tab_key tab = tab_key::moves_in_grid);

  grid_model& model() { return *model_; }
  TFillCalcTable& table() const { return model_->table(); }
  void commit_open_editor();                      // commits the open entry
  void keyboardSearch(const QString&) override {} // Qt's would read all rows
  QSize sizeHint() const override;                // all columns, and as many rows as fit on any screen

signals:
  void selection_moved();

protected:
  // No cell in sight and no label is cut. What has been made narrower by hand stays so until a cell needs more than any
  // before. A hidden grid is only measured for new columns, and again when it is shown; then it also takes the table's
  // active cell and selection, and columns lose the room for content that has gone.
  // While the user scrolls, only the columns in sight are measured.
  enum class columns_to_measure { all, in_sight };
  void widen_to_contents(columns_to_measure which);
  void showEvent(QShowEvent* event) override;
  void reset() override;
  void keyPressEvent(QKeyEvent* event) override;
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
  bool focusNextPrevChild(bool next) override;
  QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
  bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
  void commitData(QWidget* editor) override;
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
  void take_active_cell(); // from the table
  void take_block();       // the selected cells, from the table
  void take_size();        // of new rows or columns
  void narrow_to_contents();
  void widen_soon(columns_to_measure which);
  int width_in_sight(int column) const;
  int usual_width(int column) const;
  void move_active(int rows, int columns);
  std::optional<QModelIndex> refused_cell() const;
  void show_menu(); // at the active cell

  grid_model* model_;
  const tab_key tab_;
  std::vector<int> asked_for_;                   // widest content of each column since the columns changed
  std::vector<int> given_;                       // width of each column for its content; one that differs is the user's
  std::optional<columns_to_measure> will_widen_; // when the pending events are processed
  bool taking_ = false;                          // from the table; changes are not sent back meanwhile
  bool resetting_ = false;
};

} // namespace vesk
