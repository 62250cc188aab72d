#include "ui/grid_model.h"

#include "ui/guard.h"
#include "ui/texts.h"

#include <QApplication>
#include <QBrush>
#include <QColor>
#include <QIcon>
#include <QPalette>
#include <QStyle>
#include <algorithm>

namespace vesk {

namespace {

std::size_t row_of(const QModelIndex& index) {
  return static_cast<std::size_t>(index.row());
}

std::size_t column_of(const QModelIndex& index) {
  return static_cast<std::size_t>(index.column());
}

const QColor refused_ground(Qt::red);
const QColor marked_ground(0xFF, 0xE0, 0x80);

} // namespace

grid_model::grid_model(TFillCalcTable& table, QObject* parent) : QAbstractTableModel(parent), table_(table) {
  table_.set_view(this);
}

grid_model::~grid_model() {
  table_.set_view(nullptr);
}

void grid_model::set_background(const QColor& background) {
  if (background == background_) return;
  background_ = background;
  if (rowCount() > 0 && columnCount() > 0)
    emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1), {Qt::BackgroundRole, Qt::ForegroundRole});
}

int grid_model::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(table_.row_limit());
}

int grid_model::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(table_.content().columns().size());
}

cell_kind grid_model::kind_of(const QModelIndex& index) const {
  return table_.content().columns()[column_of(index)].type.kind;
}

bool grid_model::is_refused(const QModelIndex& index) const {
  const auto& refused = table_.refused();
  return refused && refused->row == row_of(index) && refused->column == column_of(index);
}

Qt::ItemFlags grid_model::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (!table_.is_editable(row_of(index), column_of(index))) return flags;
  return kind_of(index) == cell_kind::check ? flags | Qt::ItemIsUserCheckable : flags | Qt::ItemIsEditable;
}

// Display-only cells among editable ones.
bool grid_model::is_for_reading(const QModelIndex& index) const {
  const auto columns = table_.content().columns();
  return !columns[column_of(index)].editable && std::ranges::any_of(columns, &grid_column::editable);
}

// Every background has its own text colour, since the palette's may be light.
grid_model::colours grid_model::colours_of(const QModelIndex& index) const {
  if (is_refused(index)) return {QBrush(refused_ground), QBrush(Qt::black)};
  if (!table_.is_shown_as_empty() && table_.content().mark(row_of(index), column_of(index)))
    return {QBrush(marked_ground), QBrush(Qt::black)};
  if (background_.isValid()) return {QBrush(background_), QBrush(Qt::black)};
  const QPalette palette = QApplication::palette();
  if (is_for_reading(index)) return {palette.brush(QPalette::Window), palette.brush(QPalette::WindowText)};
  return {};
}

QVariant grid_model::data(const QModelIndex& index, int role) const {
  const std::size_t row = row_of(index), column = column_of(index);
  const bool check = kind_of(index) == cell_kind::check;
  switch (role) {
  case Qt::DisplayRole: return check ? QVariant() : QVariant(shown(table_.text(row, column)));
  case Qt::EditRole: return shown(table_.entry_text(row, column));
  case Qt::CheckStateRole:
    if (!check || table_.is_shown_as_empty()) return {};
    return table_.text(row, column) == "1" ? Qt::Checked : Qt::Unchecked;
  case Qt::ToolTipRole: return tool_tip(shown(table_.tool_tip(row, column)));
  case Qt::AccessibleTextRole:
    if (!check) return {};
    return table_.text(row, column) == "1" ? tr("on") : tr("off");
  case Qt::AccessibleDescriptionRole: return shown(table_.tool_tip(row, column));
  case Qt::BackgroundRole: return colours_of(index).ground;
  case Qt::ForegroundRole: return colours_of(index).text;
  case Qt::DecorationRole:
    if (is_refused(index) || table_.is_shown_as_empty() || !table_.content().mark(row, column)) return {};
    return QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning);
  case Qt::TextAlignmentRole: {
    const bool number = kind_of(index) == cell_kind::number;
    return static_cast<int>((number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
  }
  case cell_kind_role: return static_cast<int>(kind_of(index));
  default: return {};
  }
}

bool grid_model::setData(const QModelIndex& index, const QVariant& value, int role) {
  bool taken = false;
  attempt([&] {
    if (role == Qt::CheckStateRole) {
      table_.click(row_of(index), column_of(index));
      taken = true;
    } else if (role == Qt::EditRole || role == choice_role) {
      taken = table_.enter(row_of(index), column_of(index), stored(value.toString()), role == choice_role);
    }
  });
  return taken;
}

QVariant grid_model::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Vertical) {
    if (role != Qt::DisplayRole) return {};
    return table_.is_shown_as_empty() ? QVariant(QString()) : QVariant(section + 1);
  }
  const QString header = shown(table_.content().columns()[static_cast<std::size_t>(section)].header);
  if (role == Qt::ToolTipRole) return tool_tip(header); // in case a narrow column cuts it
  return role == Qt::DisplayRole ? QVariant(header) : QVariant();
}

void grid_model::columns_changed() {
  emit columns_replaced();
}

void grid_model::rows_changed() {
  beginResetModel();
  endResetModel();
  emit active_moved();
}

void grid_model::cells_changed(const cell_range& cells) {
  if (table_.is_shown_as_empty()) return;
  // The neighbours above and below can also change their marks.
  const int top = std::max(static_cast<int>(cells.top) - 1, 0);
  const int bottom = std::min(static_cast<int>(cells.bottom) + 1, rowCount() - 1);
  emit dataChanged(index(top, static_cast<int>(cells.left)), index(bottom, static_cast<int>(cells.right)));
}

void grid_model::entry_refused() {
  if (rowCount() > 0 && columnCount() > 0) emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
  emit refusal_changed();
}

} // namespace vesk
