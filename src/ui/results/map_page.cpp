#include "ui/results/map_page.h"

#include "ui/guard.h"
#include "ui/picture_output.h"
#include "ui/plain_label.h"
#include "ui/results/variable_box.h"
#include "ui/schematic_view.h"
#include "ui/texts.h"
#include "ui/wrapping_row.h"
#include "viewer/river_course.h"

#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <limits>

namespace vesk {

namespace {

constexpr int look_milliseconds = 500;

// Of all finite values; false: none are finite.
bool find_range(const std::vector<double>& least, const std::vector<double>& greatest,
                schematic_view::colouring& scale) {
  double low = std::numeric_limits<double>::infinity(), high = -low;
  for (const double value : least)
    if (std::isfinite(value)) low = std::min(low, value);
  for (const double value : greatest)
    if (std::isfinite(value)) high = std::max(high, value);
  if (low > high) return false;
  scale.least = low;
  scale.greatest = high;
  return true;
}

} // namespace

map_page::map_page(results_session& session, network_watch::data_source data_set)
    : session_(session), variable_(new variable_box("MapVariable")), view_(new schematic_view),
      note_(plain_label("MapNote")), store_(session),
      watch_(std::move(data_set), [this] { attempt([this] { show_all(); }); }) {
  setObjectName("MapPage");
  view_->setAccessibleName("Map of the network");
  auto* label = new QLabel("Sho&w");
  label->setBuddy(variable_);
  const auto add = [&](const char* text, const char* tip, const char* name, auto command) {
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    button->setToolTip(tip);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [command] { attempt(command); });
    return button;
  };
  auto* fit = add("Fit", "Show the whole network (Home)", "MapFitButton", [this] { view_->fit(); });
  auto* print = add("&Print", "Print the map (Ctrl+P)", "MapPrintButton", [this] { this->print(); });
  auto* save = add("Save as...", "Save as PNG, SVG, PDF or CSV (Ctrl+S)", "MapSaveButton", [this] { this->save(); });
  auto* column = new QVBoxLayout(this);
  column->addWidget(in_wrapping_row({label, variable_, fit, print, save}));
  column->addWidget(view_, 1);
  column->addWidget(note_);
  store_.OnChange = [this] { show_all(); };
  connect(variable_, &QComboBox::currentIndexChanged, this, [this] { attempt([this] { set_cursor(); }); });
  connect(view_, &schematic_view::segment_chosen, this,
          [this](std::size_t segment, bool) { attempt([&] { watch_.set_centre(segment); }); });
  auto* clock = new QTimer(this);
  connect(clock, &QTimer::timeout, this, [this] {
    attempt([this] {
      if (isVisible()) watch_.look();
    });
  });
  clock->start(look_milliseconds);
}

picture_output map_page::picture() const {
  return {[this](const QString& name) { return view_->save(name); },
          [this](QPaintDevice& device, const QRect& target) { return view_->paint_on(device, target); }};
}

void map_page::print() {
  print_picture(picture());
}

void map_page::save() {
  save_picture(picture());
}

void map_page::set_results() {
  variable_->show_variables(session_);
  watch_.look();
  set_cursor();
}

void map_page::set_cursor() {
  store_.read(variable_->variable());
  // One scale for the whole period, so that colours mean the same at all times.
  const results_file* file = session_.baseline_file();
  store_.read_bands(file ? std::optional(position_range{0, file->times().size()}) : std::nullopt);
  show_all();
}

void map_page::show_all() {
  const results_file* file = session_.baseline_file();
  const auto& drawn = watch_.network();
  QString note = file ? shown(store_.note()) : "Open a results file, such as river.nc.";
  const network_match match = drawn && file ? match_network(drawn->network, *file) : network_match{};
  if (!drawn)
    note = watch_.is_drawing() ? "Laying out the network..." : "Open the data set of these results to see its network.";
  else if (file && !match.remark.empty())
    note = shown(match.remark);
  if (view_->network() != drawn) view_->show_network(drawn);
  view_->set_note(note);
  show_text(*note_, stored(drawn ? note : QString()));
  const scenario_profile* profile = store_.baseline_profile();
  if (!drawn || !match.fits || !profile) return view_->set_colouring(std::nullopt);
  schematic_view::colouring scale{profile->values, 0, 1, shown(variable_->title(session_))};
  const results_bands* bands = store_.bands();
  if (bands ? !find_range(bands->least, bands->greatest, scale) : !find_range(profile->values, profile->values, scale))
    scale.title += " (no values)";
  view_->set_colouring(std::move(scale));
}

} // namespace vesk
