#include "ui/results/river_page.h"

#include "ui/chart_view.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/plain_label.h"
#include "ui/results/segment_box.h"
#include "ui/results/variable_box.h"
#include "ui/schematic_view.h"
#include "ui/texts.h"
#include "ui/wheel_guard.h"
#include "ui/wrapping_row.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

constexpr int look_milliseconds = 500;
constexpr double seconds_in_a_day = 86400;
enum column { number_column, length_column, flow_column, segments_column, columns };

QDateTime as_shown(double date_time) {
  return QDateTime::fromSecsSinceEpoch(std::llround((date_time - days_to_1970) * seconds_in_a_day), Qt::UTC);
}

double as_number(const QDateTime& moment) {
  return static_cast<double>(moment.toSecsSinceEpoch()) / seconds_in_a_day + days_to_1970;
}

QDateTimeEdit* make_moment(const char* name, const char* object_name) {
  auto* edit = new QDateTimeEdit;
  edit->setObjectName(object_name);
  edit->setAccessibleName(name);
  edit->setDisplayFormat("yyyy-MM-dd HH:mm");
  edit->setTimeSpec(Qt::UTC);
  edit->setKeyboardTracking(false);
  ignore_wheel(*edit);
  return edit;
}

} // namespace

river_page::river_page(results_session& session, network_watch::data_source data_set)
    : session_(session), variable_(new variable_box("RiverVariable")),
      from_(new segment_box("From segment", "FromSegment")), to_(new segment_box("To segment", "ToSegment")),
      band_(new QCheckBox("Ra&nge from")), begin_(make_moment("Start of the range", "RangeBegin")),
      end_(make_moment("End of the range", "RangeEnd")), charts_(new chart_stack(this)), legend_(new QHBoxLayout),
      ways_(new QTreeWidget), view_(new schematic_view), note_(plain_label("RiverNote")), store_(session),
      watch_(std::move(data_set), [this] { attempt([this] { take_network(); }); }) {
  setObjectName("RiverPage");
  auto* upper = new QWidget;
  auto* upper_column = new QVBoxLayout(upper);
  upper_column->setContentsMargins(0, 0, 0, 0);
  upper_column->addWidget(charts_, 1);
  upper_column->addLayout(legend_);
  auto* halves = new QSplitter(Qt::Vertical);
  halves->setChildrenCollapsible(false);
  halves->addWidget(upper);
  halves->addWidget(make_network_part());
  halves->setSizes({scaled(330, *this), scaled(190, *this)});
  auto* column = new QVBoxLayout(this);
  column->addWidget(make_choices());
  column->addWidget(halves, 1);
  column->addWidget(note_);
  store_.OnChange = [this] { show_chart(); };
  connect(charts_, &chart_stack::x_clicked, this, [this](double x) { attempt([&] { go_to(x); }); });
  auto* clock = new QTimer(this);
  connect(clock, &QTimer::timeout, this, [this] {
    attempt([this] {
      if (isVisible()) watch_.look();
    });
  });
  clock->start(look_milliseconds);
}

QWidget* river_page::make_choices() {
  auto* part = new QWidget;
  auto* lines = new QVBoxLayout(part);
  lines->setContentsMargins(0, 0, 0, 0);
  const auto label = [](const char* text, QWidget* of) {
    auto* made = new QLabel(text);
    made->setBuddy(of);
    return made;
  };
  lines->addWidget(in_wrapping_row({label("&From", from_), from_, label("to", to_), to_}));
  lines->addWidget(in_wrapping_row({label("Sho&w", variable_), variable_, band_, begin_, label("to", end_), end_}));
  band_->setObjectName("RangeBox");
  band_->setToolTip("Also show the minimum, mean and maximum of each segment over this period");
  connect(variable_, &QComboBox::currentIndexChanged, this, [this] { attempt([this] { set_cursor(); }); });
  for (segment_box* box : {from_, to_})
    connect(box, &QSpinBox::valueChanged, this, [this] {
      attempt([this] {
        course_.set_ends(from_->segment(), to_->segment());
        course_changed();
      });
    });
  connect(band_, &QCheckBox::toggled, this, [this] { attempt([this] { set_cursor(); }); });
  for (QDateTimeEdit* edit : {begin_, end_})
    connect(edit, &QDateTimeEdit::dateTimeChanged, this, [this] { attempt([this] { set_cursor(); }); });
  return part;
}

QWidget* river_page::make_network_part() {
  ways_->setObjectName("WayList");
  ways_->setAccessibleName("Ways from the first segment to the last");
  ways_->setColumnCount(columns);
  ways_->setHeaderLabels({"Way", "Length, km", "Flow, m3/s", "Segments"});
  ways_->headerItem()->setToolTip(flow_column, "The smallest mean flow between neighbouring segments of the way");
  ways_->setRootIsDecorated(false);
  ways_->setUniformRowHeights(true);
  for (int i = 0; i < segments_column; ++i) ways_->header()->setSectionResizeMode(i, QHeaderView::ResizeToContents);
  connect(ways_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item, QTreeWidgetItem*) {
    if (!item) return;
    attempt([&] {
      course_.choose(static_cast<std::size_t>(ways_->indexOfTopLevelItem(item)));
      if (course_.way()) view_->set_way(course_.way()->segments);
      show_chart();
    });
  });
  view_->setObjectName("RiverSchematic");
  view_->setAccessibleName("Network, for choosing the way");
  view_->setToolTip("Click the start of the way, then its end. Ctrl+click adds or removes a waypoint.");
  connect(view_, &schematic_view::segment_chosen, this, [this](std::size_t segment, bool with_control) {
    attempt([&] {
      course_.click(static_cast<segment_number>(segment), with_control);
      course_changed();
    });
  });
  auto* part = new QSplitter(Qt::Horizontal);
  part->setChildrenCollapsible(false);
  part->addWidget(view_);
  part->addWidget(ways_);
  part->setSizes({scaled(420, *this), scaled(330, *this)});
  return part;
}

void river_page::set_results() {
  variable_->show_variables(session_);
  take_period();
  watch_.look();
  take_network();
  set_cursor();
}

void river_page::set_cursor() {
  store_.read(variable_->variable());
  for (QDateTimeEdit* edit : {begin_, end_}) edit->setEnabled(band_->isChecked());
  store_.read_bands(band_->isChecked() ? period() : std::nullopt);
  show_chart();
}

void river_page::take_period() {
  if (session_.scenarios().empty()) return;
  const scenario& baseline = session_.scenarios()[session_.baseline()];
  if (std::exchange(period_of_, baseline.number) == baseline.number) return;
  const QSignalBlocker quiet_begin(begin_), quiet_end(end_);
  const QDateTime first = as_shown(baseline.file->times().front()), last = as_shown(baseline.file->times().back());
  for (QDateTimeEdit* edit : {begin_, end_}) edit->setDateTimeRange(first, last);
  begin_->setDateTime(first);
  end_->setDateTime(last);
}

// The times between the two fields; at least the one nearest to the first.
std::optional<position_range> river_page::period() const {
  const results_file* file = session_.baseline_file();
  if (!file) return std::nullopt;
  constexpr double half_a_minute = 30 / seconds_in_a_day; // the fields show minutes
  const std::vector<double>& times = file->times();
  const auto first = std::ranges::lower_bound(times, as_number(begin_->dateTime()) - half_a_minute) - times.begin();
  const auto end = std::ranges::upper_bound(times, as_number(end_->dateTime()) + half_a_minute) - times.begin();
  if (end <= first) return position_range{nearest_time(times, as_number(begin_->dateTime())), 1};
  return position_range{static_cast<std::size_t>(first), static_cast<std::size_t>(end - first)};
}

void river_page::take_network() {
  const auto& drawn = watch_.network();
  const results_file* file = session_.baseline_file();
  const bool fits = drawn && file && match_network(drawn->network, *file).fits;
  std::shared_ptr<const network_graph> network;
  if (fits) network = std::shared_ptr<const network_graph>(drawn, &drawn->network);
  if (view_->network() != (fits ? drawn : nullptr)) view_->show_network(fits ? drawn : nullptr);
  if (network.get() == course_.network()) return course_changed();
  course_.set_network(network);
  for (segment_box* box : {from_, to_}) box->set_network(network);
  course_changed();
}

void river_page::course_changed() {
  from_->show_segment(course_.from());
  to_->show_segment(course_.to());
  std::vector<segment_number> marked = course_.waypoints();
  if (course_.way()) marked = course_.way()->segments;
  view_->set_way(std::move(marked));
  show_ways();
  show_chart();
}

void river_page::show_ways() {
  const QSignalBlocker quiet(ways_);
  ways_->clear();
  const auto& found = course_.ways().ways;
  for (std::size_t i = 0; i < found.size(); ++i) {
    auto* item = new QTreeWidgetItem(ways_);
    item->setText(number_column, QString::number(i + 1));
    item->setText(length_column,
                  std::isnan(found[i].length) ? QString("unknown") : QString::number(found[i].length / 1000, 'g', 4));
    item->setText(flow_column, QString::number(found[i].flow, 'g', 4));
    item->setText(segments_column, shown(segments_in_words(found[i])));
    item->setToolTip(segments_column, tool_tip(shown(segments_in_words(found[i]))));
    for (const int number : {number_column, length_column, flow_column})
      item->setTextAlignment(number, Qt::AlignRight | Qt::AlignVCenter);
  }
  if (auto* item = ways_->topLevelItem(static_cast<int>(course_.chosen()))) ways_->setCurrentItem(item);
}

void river_page::show_chart() {
  const auto& drawn = watch_.network();
  const results_file* file = session_.baseline_file();
  const network_match match = drawn && file ? match_network(drawn->network, *file) : network_match{};
  std::string note = match.fits ? course_.note() : match.remark;
  if (!drawn && watch_.is_drawing()) note = "Laying out the network...";
  if (!drawn && !watch_.is_drawing()) note = course_.note();
  for (const std::string& more : {match.fits ? match.remark : std::string(), store_.note(),
                                  store_.is_reading_bands() ? std::string("Reading the range...") : std::string()})
    if (!more.empty()) note += (note.empty() ? "" : " ") + more;
  show_text(*note_, file ? note : std::string());
  std::vector<std::unique_ptr<TGraphForm>> charts;
  if (match.fits && course_.way() && !store_.profiles().empty()) {
    const std::vector<double> lengths = lengths_of(drawn->network);
    river_chart_content content{course_.way(), &lengths, {}, store_.bands(), variable_->title(session_)};
    for (const scenario_profile& one : store_.profiles()) // others must have the same network
      if (one.values.size() == drawn->network.segments.size()) content.profiles.push_back(one);
    charts.push_back(river_chart(content));
  }
  show_legend(charts.empty() ? nullptr : charts.front().get());
  charts_->show_charts(std::move(charts),
                       file ? "Nothing to show along this way." : "Open a results file, such as river.nc.");
}

void river_page::show_legend(const TGraphForm* chart) {
  while (QLayoutItem* item = legend_->takeAt(0)) {
    delete item->widget();
    delete item;
  }
  if (!chart) return;
  const int size = scaled(24, *this);
  for (const auto& series : chart->series()) {
    auto* sample = new QLabel;
    sample->setPixmap(chart_view::line_icon(*series->look).pixmap(size, size));
    auto* text = new QLabel(shown(series->label));
    text->setTextFormat(Qt::PlainText);
    legend_->addWidget(sample);
    legend_->addWidget(text);
  }
  legend_->addStretch(1);
}

// The segment of the way nearest to this x.
void river_page::go_to(double x) {
  if (!course_.way() || charts_->rows().size() == 0) return;
  const auto& at = charts_->rows()[0].series().front()->x;
  const auto nearest = std::ranges::min_element(at, {}, [x](double one) { return std::abs(one - x); });
  const auto position = static_cast<std::size_t>(nearest - at.begin());
  if (position < course_.way()->segments.size()) view_->select(course_.way()->segments[position]);
}

} // namespace vesk
