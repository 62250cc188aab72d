#include "ui/results/agreement_page.h"

#include "charts/general_graph_data.h"
#include "ui/grid_view.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/plain_label.h"
#include "ui/questions.h"
#include "ui/results/chart_stack.h"
#include "ui/results/measured_dialog.h"
#include "ui/results/table_page.h"
#include "ui/texts.h"
#include "ui/wheel_guard.h"
#include "ui/wrapping_row.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSplitter>
#include <QVBoxLayout>

namespace vesk {

namespace {

constexpr int letters_in_sight = 24; // of a measured series' name

} // namespace

agreement_page::agreement_page(results_session& session, user_questions& questions)
    : session_(session), questions_(questions), list_(session), series_(new QComboBox),
      edit_(new QPushButton("Edit...")), remove_(new QPushButton("Remove")),
      whole_(new QCheckBox("&Whole period only")), chart_(new chart_stack(this)), scatter_(new chart_stack(this)),
      view_(new grid_view(table_, "Scores", this, grid_view::tab_key::leaves_grid)),
      save_(new QPushButton("Save scores as CSV...")), note_(plain_label("AgreementNote")) {
  setObjectName("AgreementPage");
  series_->setObjectName("MeasuredSeriesBox");
  series_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  series_->setMinimumContentsLength(letters_in_sight);
  ignore_wheel(*series_);
  view_->setObjectName("ScoreTable");
  whole_->setObjectName("WholePeriodCheckBox");
  auto* label = new QLabel("Meas&ured series");
  label->setBuddy(series_);
  auto* add = new QPushButton("&New...");
  add->setObjectName("NewMeasuredButton");
  add->setToolTip("Compare with measured values from a table: text, workbook or database");
  edit_->setObjectName("EditMeasuredButton");
  remove_->setObjectName("RemoveMeasuredButton");
  for (QPushButton* it : {add, edit_, remove_, save_}) it->setAutoDefault(false);
  auto* pictures = new QSplitter(Qt::Horizontal);
  pictures->setChildrenCollapsible(false);
  pictures->addWidget(chart_);
  pictures->addWidget(scatter_);
  pictures->setStretchFactor(0, 3);
  pictures->setStretchFactor(1, 2);
  auto* halves = new QSplitter(Qt::Vertical);
  halves->setChildrenCollapsible(false);
  halves->addWidget(pictures);
  halves->addWidget(view_);
  halves->setSizes({scaled(330, *this), scaled(200, *this)});
  auto* column = new QVBoxLayout(this);
  column->addWidget(in_wrapping_row({label, series_, add, edit_, remove_}));
  column->addWidget(halves, 1);
  column->addWidget(note_);
  column->addWidget(in_wrapping_row({whole_, save_}));
  connect(series_, &QComboBox::currentIndexChanged, this, [this](int position) {
    if (!is_filling_ && position >= 0) attempt([&] { list_.look(static_cast<std::size_t>(position)); });
  });
  connect(add, &QPushButton::clicked, this, [this] { attempt([this] { edit(true); }); });
  connect(edit_, &QPushButton::clicked, this, [this] { attempt([this] { edit(false); }); });
  connect(remove_, &QPushButton::clicked, this, [this] { attempt([this] { remove(); }); });
  connect(save_, &QPushButton::clicked, this, [this] { attempt([this] { save_grid(scores_); }); });
  connect(whole_, &QCheckBox::toggled, this, [this] { attempt([this] { show_scores(); }); });
  connect(chart_, &chart_stack::x_clicked, this,
          [this](double x) { attempt([&] { session_.set_cursor(x + days_to_1970); }); });
  list_.listen([this] {
    if (isVisible()) show_all();
  });
}

// Must precede the table that it shows.
agreement_page::~agreement_page() {
  delete view_;
}

void agreement_page::set_results() {
  show_all();
}

void agreement_page::set_cursor() {
  chart_->set_cursor(session_.scenarios().empty() ? std::nullopt : std::optional(session_.cursor() - days_to_1970));
}

chart_stack& agreement_page::chart_in_use() const {
  return scatter_->isAncestorOf(QApplication::focusWidget()) ? *scatter_ : *chart_;
}

void agreement_page::print() {
  chart_in_use().print();
}

void agreement_page::save() {
  chart_in_use().save();
}

QString agreement_page::why_empty() const {
  if (session_.scenarios().empty()) return "Open a results file, such as river.nc.";
  if (list_.is_reading()) return "Reading...";
  if (list_.series().empty()) return "No measured series yet. Choose New to compare with a table of measured values.";
  return "Nothing to draw.";
}

void agreement_page::show_all() {
  {
    const QScopedValueRollback filling(is_filling_, true);
    series_->clear();
    for (const measured_series& it : list_.series())
      series_->addItem(shown(it.name.empty() ? it.variable + ", " + it.segment : it.name));
    series_->setCurrentIndex(list_.series().empty() ? -1 : static_cast<int>(list_.position()));
  }
  series_->setEnabled(!list_.series().empty());
  for (QPushButton* it : {edit_, remove_}) it->setEnabled(!list_.series().empty());
  show_scores();
  std::string units;
  bool has_any = false;
  for (std::size_t i = 0; i < list_.outcomes().size(); ++i) { // one per scenario
    const auto& found = list_.outcomes()[i].found;
    if (!found || std::exchange(has_any, true)) continue;
    units = session_.scenarios()[i].file->variables()[found->variable].units;
  }
  std::vector<std::unique_ptr<TGraphForm>> chart, scatter;
  if (has_any) {
    chart.push_back(agreement_chart(list_.outcomes(), units));
    scatter.push_back(agreement_scatter(list_.outcomes(), units));
  }
  chart_->show_charts(std::move(chart), why_empty());
  scatter_->show_charts(std::move(scatter), {});
  set_cursor();
}

void agreement_page::show_scores() {
  scores_.show(list_.outcomes(), whole_->isChecked());
  table_.show(scores_);
  save_->setEnabled(scores_.row_count() > 0);
  std::string text = list_.note();
  for (const agreement_outcome& it : list_.outcomes()) text += (text.empty() ? "" : "\n") + in_words(it);
  show_text(*note_, text);
}

void agreement_page::edit(bool is_new) {
  const results_file* file = session_.baseline_file();
  if (!file) return questions_.message_box("Measured series", "Open a results file first.", box_buttons::ok), void();
  const std::size_t position = list_.position();
  measured_form form = is_new ? measured_form() : measured_form::of(list_.series().at(position));
  if (is_new) {
    const auto variables = session_.variables.positions(), segments = session_.segments.positions();
    if (!variables.empty()) form.variable = session_.variables.names[variables.front()].name;
    if (!segments.empty()) form.segment = session_.segments.names[segments.front()].name;
  }
  measured_dialog dialog(this, form, session_, questions_, list_.file().parent_path());
  if (dialog.exec() != QDialog::Accepted) return;
  if (is_new)
    list_.add(form.series());
  else
    list_.replace(position, form.series());
}

void agreement_page::remove() {
  const std::size_t position = list_.position();
  const std::string name = stored(series_->currentText());
  const std::string question = "Remove the measured series \"" + name + "\"? Its table is kept.";
  if (questions_.message_box("Measured series", question, box_buttons::yes_no) == box_answer::yes)
    list_.remove(position);
}

} // namespace vesk
