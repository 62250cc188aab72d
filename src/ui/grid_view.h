// The view of every grid that can be edited: keys, selection and menu on a TFillCalcTable.
#pragma once

#include "ui/grid_model.h"

#include <QTableView>
#include <functional>

namespace vesk {

class grid_view final : public QTableView {
  Q_OBJECT

public:
  grid_view(TFillCalcTable& table, const QString& accessible_name, QWidget* parent);

  grid_model& model() { return *model_; }
  TFillCalcTable& table() { return model_->table(); }
  void commit_open_editor();                      // takes what is being typed
  void keyboardSearch(const QString&) override {} // would read through all the rows

signals:
  void selection_moved();

protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool focusNextPrevChild(bool next) override;
  bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
  void take_active_cell(); // from the table
  void fit_columns();
  void move_active(int rows, int columns);

  grid_model* model_;
  bool taking_ = false; // from the table; nothing goes back to it meanwhile
};

} // namespace vesk
