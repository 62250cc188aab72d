#include "ui/results_table.h"

#include "ui/measures.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QScrollBar>
#include <algorithm>

namespace vesk {

namespace {

constexpr int row_height = 20, row_header_width = 30, column_width = 75, column_width_of_a_job = 60;
constexpr int widest_column = 260, columns_to_widen = 200;

} // namespace

results_table::results_table(QWidget* parent, results_model::reader read)
    : QTableView(parent), model_(std::move(read)) {
  setObjectName("ResultsTable");
  setAccessibleName("Results");
  setModel(&model_);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setWordWrap(false);
  setTabKeyNavigation(false); // there is nothing to enter: Tab goes on to the next control
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(scaled(row_height, *this));
  horizontalHeader()->setResizeContentsPrecision(0); // what is in sight tells enough
  verticalHeader()->setMinimumWidth(scaled(row_header_width, *this));
  horizontalHeader()->setDefaultSectionSize(scaled(column_width, *this));
  horizontalHeader()->setTextElideMode(Qt::ElideRight);
  connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { widen_to_contents(); });
  auto* copy = new QAction("&Copy", this);
  copy->setShortcut(QKeySequence::Copy);
  copy->setShortcutContext(Qt::WidgetShortcut);
  connect(copy, &QAction::triggered, this, [this] { copy_selected(); });
  addAction(copy);
  setContextMenuPolicy(Qt::ActionsContextMenu);
}

void results_table::initialize_grid(const std::vector<std::string>& column_labels, int rows) {
  horizontalHeader()->setDefaultSectionSize(scaled(column_width_of_a_job, *this));
  model_.initialize_grid(column_labels, rows);
  asked_for_.clear();
}

void results_table::repaint_cells() {
  widen_to_contents();
  viewport()->update();
}

// No number in sight and no label is cut: the width that columns have is the least. What has been made narrower by hand
// stays so until a number needs more than any before. A table that is hidden would go through all its rows.
void results_table::widen_to_contents() {
  if (!isVisible() || !model_.index(0, 0).data().isValid()) return;
  const int widest = scaled(widest_column, *this);
  asked_for_.resize(static_cast<std::size_t>(model_.columnCount()));
  for (int column = 0; column < std::min(model_.columnCount(), columns_to_widen); ++column) {
    const int wanted =
        std::min(std::max(sizeHintForColumn(column), horizontalHeader()->sectionSizeHint(column)), widest);
    int& before = asked_for_[static_cast<std::size_t>(column)];
    if (wanted <= before) continue;
    before = wanted;
    if (wanted > columnWidth(column)) setColumnWidth(column, wanted);
  }
}

void results_table::copy_selected() const {
  QString text;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row) {
      for (int column = range.left(); column <= range.right(); ++column) {
        if (column > range.left()) text += '\t';
        text += model_.index(row, column).data().toString();
      }
      text += '\n';
    }
  }
  if (!text.isEmpty()) QApplication::clipboard()->setText(text);
}

} // namespace vesk
