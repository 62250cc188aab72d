#include "ui/results/table_page.h"

#include "charts/csv_text.h"
#include "platform/safe_file.h"
#include "ui/copied_cells.h"
#include "ui/grid_view.h"
#include "ui/guard.h"
#include "ui/plain_label.h"
#include "ui/questions.h"
#include "ui/texts.h"
#include "ui/wheel_guard.h"
#include "ui/wrapping_row.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace vesk {

void save_grid(const grid& content) {
  const auto name = ask_for_file({file_dialog::kind::save, "Save the table", "CSV tables|*.csv", "csv", ".csv"}, {});
  if (!name) return;
  safe_file file(*name);
  write_csv(content, [&](std::string_view text) { write_all(file.descriptor(), text, {}, *name); });
  file.commit();
}

table_page::table_page(results_session& session, series_store& store)
    : session_(session), store_(store),
      view_(new grid_view(table_, "Values of the chosen series", this, grid_view::tab_key::leaves_grid)),
      order_(new QComboBox), note_(plain_label("TableNote")) {
  setObjectName("TablePage");
  view_->setObjectName("SeriesTable");
  order_->setObjectName("ColumnOrderBox");
  order_->addItems({"by variable", "by segment"});
  ignore_wheel(*order_);
  auto* label = new QLabel("Colum&ns");
  label->setBuddy(order_);
  auto* copy = new QPushButton("Cop&y");
  copy->setToolTip("Copy the selected cells with their headers (Ctrl+C copies them without)");
  auto* save = new QPushButton("Save as CSV...");
  save->setToolTip("Save the values of the chosen series (Ctrl+S)");
  for (QPushButton* it : {copy, save}) it->setAutoDefault(false);
  auto* column = new QVBoxLayout(this);
  column->addWidget(in_wrapping_row({label, order_, copy, save}));
  column->addWidget(view_, 1);
  column->addWidget(note_);
  connect(order_, &QComboBox::currentIndexChanged, this, [this] { attempt([this] { set_results(); }); });
  connect(copy, &QPushButton::clicked, this, [this] { attempt([this] { copy_cells(table_.do_copy(true)); }); });
  connect(save, &QPushButton::clicked, this, [this] { attempt([this] { this->save(); }); });
}

void table_page::save() {
  save_grid(content_);
}

// Must precede the table that it shows.
table_page::~table_page() {
  delete view_;
}

void table_page::set_results() {
  const results_file* file = session_.baseline_file();
  std::shared_ptr<const std::vector<double>> times;
  if (file && !store_.series().empty()) times = {session_.scenarios()[session_.baseline()].file, &file->times()};
  content_.show(times, store_.series(), session_.scenarios().size() > 1,
                order_->currentIndex() == 1 ? column_order::by_segment : column_order::by_variable);
  table_.show(content_);
  show_text(*note_, store_.is_reading() ? "Reading..." : store_.note());
  set_cursor();
}

void table_page::set_cursor() {
  if (content_.row_count() == 0 || table_.active_row() == session_.cursor_position()) return;
  table_.set_active(session_.cursor_position(), table_.active_column());
}

} // namespace vesk
