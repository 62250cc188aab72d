#include "ui/results/results_window.h"

#include "platform/counted.h"
#include "ui/check_list.h"
#include "ui/guard.h"
#include "ui/images.h"
#include "ui/measures.h"
#include "ui/plain_label.h"
#include "ui/questions.h"
#include "ui/results/agreement_page.h"
#include "ui/results/compare_page.h"
#include "ui/results/cursor_bar.h"
#include "ui/results/map_page.h"
#include "ui/results/river_page.h"
#include "ui/results/scenario_list.h"
#include "ui/results/table_page.h"
#include "ui/results/time_series_view.h"
#include "ui/texts.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace vesk {

namespace {

namespace fs = std::filesystem;

constexpr int usual_width = 1040, usual_height = 700, choice_width = 260, screen_margin = 60;
constexpr int look_milliseconds = 2000; // between checks for changed files
constexpr int time_for_the_run = 99;    // for each that goes into drawing its dots

const file_dialog results_dialog{file_dialog::kind::open, "Open results", "Results (*.nc)|*.nc;*.nc4;*.cdf|All files|*",
                                 "nc"};

} // namespace

void results_window::add_views() {
  add_view(new time_series_view(session_, store_, live_), "&Time series");
  auto* agreement = new agreement_page(session_, questions_);
  agreement->list().OnNewFile = [this](const fs::path& file) {
    if (OnNewMeasuredFile) OnNewMeasuredFile(file);
  };
  add_view(agreement, "&Agreement");
  add_view(new table_page(session_, store_), "Ta&ble");
  add_view(new compare_page(session_, store_), "&Compare");
  add_view(new river_page(session_, data_set_), "Alon&g the river");
  add_view(new map_page(session_, data_set_), "&Map");
}

results_window::results_window(user_questions& questions, std::function<const prevesk_dataset_data_type*()> data_set,
                               fs::path settings)
    : questions_(questions), data_set_(std::move(data_set)), session_([this](std::function<void()> call) {
        QMetaObject::invokeMethod(
            this, [call = std::move(call)] { attempt(call); }, Qt::QueuedConnection);
      }),
      store_(session_, std::move(settings)), pages_(new QTabWidget), message_(plain_label("MessageLabel")),
      age_(plain_label("AgeLabel")), reload_(new QPushButton("Reloa&d")) {
  setObjectName("ResultsWindow");
  setWindowTitle("Results");
  setWindowIcon(program_image());
  setAttribute(Qt::WA_ShowWithoutActivating); // it opens after a run, while the user may be typing elsewhere
  pages_->setObjectName("ResultPages");
  pages_->setAccessibleName("Pages of the results");
  cursor_ = new cursor_bar(session_, this);
  reload_->setObjectName("ReloadButton");
  reload_->setToolTip("Reload the files that have changed (F5)");
  reload_->setAutoDefault(false);
  auto* right = new QWidget;
  auto* column = new QVBoxLayout(right);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(pages_, 1);
  column->addWidget(cursor_);
  auto* halves = new QSplitter(Qt::Horizontal);
  halves->setChildrenCollapsible(false);
  halves->addWidget(choice_part());
  halves->addWidget(right);
  halves->setStretchFactor(0, 0);
  halves->setStretchFactor(1, 1);
  halves->setSizes({scaled(choice_width, *this), scaled(usual_width - choice_width, *this)});
  auto* age_row = new QHBoxLayout;
  age_row->addWidget(age_, 1);
  age_row->addWidget(reload_);
  auto* all = new QVBoxLayout(this);
  all->addWidget(halves, 1);
  all->addWidget(message_);
  all->addLayout(age_row);
  add_views();
  session_.listen({[this] { show_results(); },
                   {},
                   [this] {
                     cursor_->show_cursor();
                     if (pages_->count() > 0) page().set_cursor();
                   }});
  store_.listen([this] { show_page(); });
  session_.OnMessage = [this](const std::string& message) { say(shown(message)); };
  connect(pages_, &QTabWidget::currentChanged, this, [this] { attempt([this] { show_page(); }); });
  connect(reload_, &QPushButton::clicked, this, [this] { attempt([this] { session_.reload_changed(); }); });
  const auto bind = [this](const QKeySequence& keys, std::function<void()> command) {
    auto* action = new QAction(this);
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, [command = std::move(command)] { attempt(command); });
    addAction(action);
  };
  bind(QKeySequence::Open, [this] { ask_and_open(); });
  bind(Qt::Key_F5, [this] { session_.reload_changed(); });
  bind(QKeySequence::Close, [this] { close(); });
  bind(QKeySequence::Print, [this] { page().print(); });
  bind(QKeySequence::Save, [this] { page().save(); });
  auto* watch = new QTimer(this);
  connect(watch, &QTimer::timeout, this, [this] { attempt([this] { look_at_files(); }); });
  watch->start(look_milliseconds);
  const int margin = scaled(screen_margin, *this);
  resize(QSize(scaled(usual_width, *this), scaled(usual_height, *this))
             .boundedTo(screen()->availableGeometry().size() - QSize(margin, margin)));
  say({});
  show_results();
}

// The pages use the session until they are destroyed.
results_window::~results_window() {
  delete pages_;
}

void results_window::add_view(results_view* view, const QString& title) {
  views_.push_back(view);
  pages_->addTab(view, title);
}

QWidget* results_window::choice_part() {
  scenarios_ = new scenario_list(
      session_, [this] { ask_and_open(); }, this);
  const auto changed = [this] { session_.selection_was_changed(); };
  variables_ = new check_list(
      "VariableList", "&Variables",
      [this](std::size_t i) {
        const named_choice& it = session_.variables.names[i];
        return it.units.empty() ? it.name : it.name + " (" + it.units + ")";
      },
      session_.variables.chosen, changed);
  segments_ = new check_list(
      "SegmentList", "&Segments", [this](std::size_t i) { return session_.segments.names[i].name; },
      session_.segments.chosen, changed);
  auto* part = new QSplitter(Qt::Vertical);
  part->setChildrenCollapsible(false);
  part->addWidget(scenarios_);
  part->addWidget(variables_);
  part->addWidget(segments_);
  part->setSizes({scaled(150, *this), scaled(200, *this), scaled(350, *this)});
  return part;
}

void results_window::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  show_page();
}

void results_window::open(const fs::path& file) {
  say({});
  live_.clear();
  note_opened_file(shown(file.native()));
  session_.open(file);
}

void results_window::sample(double date_time, const std::vector<live_cell>& cells,
                            const std::function<std::optional<double>(int row, int column)>& read) {
  if (live_.sample(date_time, cells, read) && pages_->currentIndex() == 0) draw_samples();
}

void results_window::draw_samples() {
  const auto begin = std::chrono::steady_clock::now();
  if (begin < no_samples_drawn_before_) return;
  no_samples_drawn_before_ = begin + std::chrono::hours(1); // until the charts, which draw later, are done
  show_page();
  QMetaObject::invokeMethod(
      this,
      [this, begin] {
        const auto end = std::chrono::steady_clock::now();
        no_samples_drawn_before_ = end + time_for_the_run * (end - begin);
      },
      Qt::QueuedConnection);
}

void results_window::ask_and_open() {
  if (const auto name = ask_for_file(results_dialog, {})) open(*name);
}

void results_window::show_results() {
  scenarios_->show_results();
  cursor_->show_results();
  variables_->reload();
  segments_->reload();
  const auto& scenarios = session_.scenarios();
  QString title = "Results";
  if (!scenarios.empty()) title += " - " + shown(scenarios[session_.baseline()].path.filename().string());
  if (scenarios.size() > 1) title += QString(" and %1 more").arg(scenarios.size() - 1);
  setWindowTitle(title);
  look_at_files();
}

results_view& results_window::page() const {
  return *static_cast<results_view*>(pages_->currentWidget());
}

void results_window::show_page() {
  if (pages_->count() > 0 && isVisible()) page().set_results();
}

// A replaced file stays readable, so the user chooses when to reload.
void results_window::look_at_files() {
  session_.forget_outdated_message();
  QString changed;
  bool can_reload = false;
  for (const scenario& it : session_.scenarios()) {
    if (it.file->is_current()) continue;
    std::error_code missing;
    const bool exists = fs::exists(it.path, missing);
    can_reload = can_reload || exists;
    if (!changed.isEmpty()) changed += '\n';
    changed += shown(it.path.string()) +
               (exists                 ? " has changed since it was opened."
                : it.file->is_intact() ? " was deleted; its values can still be shown."
                                       : " was changed and then deleted; only what is shown now can still be shown.");
  }
  age_->setText(changed);
  age_->setVisible(!changed.isEmpty());
  reload_->setVisible(can_reload);
}

void results_window::say(const QString& message) {
  message_->setText(message);
  message_->setVisible(!message.isEmpty());
}

} // namespace vesk
