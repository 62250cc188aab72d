// Adapts a table's rows and columns to Qt.
#pragma once

#include "charts/fill_calc_table.h"

#include <QAbstractTableModel>
#include <QColor>

namespace vesk {

class grid_model final : public QAbstractTableModel, public table_view {
  Q_OBJECT

public:
  enum : int {
    cell_kind_role = Qt::UserRole,
    choice_role, // of setData: the item's text, chosen from the list
  };

  explicit grid_model(TFillCalcTable& table, QObject* parent);
  ~grid_model() override;

  TFillCalcTable& table() { return table_; }
  const TFillCalcTable& table() const { return table_; }
  bool is_refused(const QModelIndex& index) const; // whether the cell shows a refused entry
  // Of cells neither refused nor marked; invalid: the palette's own.
  void set_background(const QColor& background);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  void columns_changed() override;
  void rows_changed() override;
  void cells_changed(const cell_range& cells) override;
  void active_cell_changed() override { emit active_moved(); }
  void entry_refused() override;

signals:
  void columns_replaced();
  void refusal_changed(); // an entry was refused, corrected or given up
  void active_moved();    // the table has another active cell, or the model was reset

private:
  cell_kind kind_of(const QModelIndex& index) const;
  bool is_for_reading(const QModelIndex& index) const;
  struct colours {
    QVariant ground, text; // invalid: the palette's own
  };
  colours colours_of(const QModelIndex& index) const;

  TFillCalcTable& table_;
  QColor background_;
};

} // namespace vesk
