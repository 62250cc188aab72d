#include "ui/results_table.h"

#include "ui/copied_cells.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QAction>
#include <QApplication>
#include <QHeaderView>

namespace vesk {

namespace {

constexpr int row_height = 20, column_width = 75, column_width_of_a_job = 60;

} // namespace

void result_cells::initialize_grid(const std::vector<std::string>& column_labels, std::size_t rows) {
  columns_.clear();
  for (const std::string& label : column_labels) columns_.push_back({label, number_cell(picture_), false});
  rows_ = rows;
}

void result_cells::set_picture(const std::string& picture) {
  picture_ = picture;
  for (grid_column& column : columns_) column.type.picture = picture;
}

cell_value result_cells::value(std::size_t row, std::size_t column) const {
  const std::optional<double> element = read_(static_cast<int>(row), static_cast<int>(column));
  return element ? cell_value(*element) : cell_value();
}

results_table::results_table(QWidget* parent, result_cells::reader read)
    : result_content(std::move(read)), grid_view(result_table, "Results", parent, tab_key::leaves_grid) {
  setObjectName("ResultsTable");
  verticalHeader()->setDefaultSectionSize(scaled(row_height, *this));
  horizontalHeader()->setDefaultSectionSize(scaled(column_width, *this));
  const auto add_copy = [this](const char* text, const QKeySequence& keys, bool with_headers) {
    auto* copy = new QAction(text, this);
    copy->setShortcut(keys);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, [this, with_headers] {
      const std::string cells = table().do_copy(with_headers);
      if (!cells.empty()) copy_cells(cells);
    });
    addAction(copy);
  };
  add_copy("&Copy", QKeySequence::Copy, false);
  add_copy("Copy with &headers", QKeySequence("Ctrl+Shift+C"), true);
  setContextMenuPolicy(Qt::ActionsContextMenu);
}

void results_table::initialize_grid(const std::vector<std::string>& column_labels, int rows) {
  horizontalHeader()->setDefaultSectionSize(scaled(column_width_of_a_job, *this));
  results.initialize_grid(column_labels, static_cast<std::size_t>(std::max(rows, 0)));
  table().show(results);
}

void results_table::repaint_cells() {
  if (!isVisible()) return;
  widen_to_contents(columns_to_measure::all);
  viewport()->update();
}

std::vector<live_cell> results_table::chosen_cells() {
  std::vector<live_cell> cells;
  const cell_range chosen = table().selection();
  const auto columns = results.columns();
  for (std::size_t row = chosen.top; row <= chosen.bottom && row < results.row_count(); ++row)
    for (std::size_t column = chosen.left; column <= chosen.right && column < columns.size(); ++column) {
      if (cells.size() == live_samples::most_cells) return cells;
      cells.push_back({static_cast<int>(row), static_cast<int>(column),
                       columns[column].header + ", row " + std::to_string(row + 1)});
    }
  return cells;
}

} // namespace vesk
