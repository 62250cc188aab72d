#include "ui/editor_panel_view.h"

#include "ui/chart_view.h"
#include "ui/grid_view.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/plain_label.h"
#include "ui/texts.h"

#include <QAction>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace vesk {

namespace {

constexpr int least_grid_height = 100;
constexpr int mark_width = 4, mark_gap = 4; // of the bar beside the active grid

const QColor deferred_ground(0x00, 0xFF, 0xFF);

// Index in the chart of the row's point: the chart sorts points by time.
std::optional<std::size_t> point_of_row(const TGraphForm& graph, std::size_t row) {
  if (graph.series().empty()) return std::nullopt;
  const std::vector<std::size_t>& rows = graph.series().front()->rows;
  if (rows.empty()) return row;
  const auto found = std::ranges::find(rows, row);
  return found == rows.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - rows.begin()));
}

} // namespace

editor_panel_view::editor_panel_view(editor& form, editor_panel& panel, const QString& name, QWidget* buttons,
                                     command_runner run)
    : form_(form), panel_(panel), name_(name), run_(std::move(run)), label_(plain_label(panel.label_name)),
      grid_(new grid_view(panel.table, name, this)), status_(plain_label(panel.name + "Status")) {
  grid_->setObjectName(shown(panel.name));
  grid_->setMinimumHeight(scaled(least_grid_height, *this));
  grid_->installEventFilter(this);
  label_->setBuddy(grid_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(buttons ? 0 : scaled(mark_width + mark_gap, *this), 0, 0, 0);
  column->addWidget(label_);
  if (panel.series)
    make_chart(*column);
  else
    column->addWidget(grid_, 1);
  if (buttons) column->addWidget(buttons);
  column->addWidget(status_);
  if (panel.series) {
    add_deferred_note(*column);
    add_source_note(*column);
  }
  add_menu();
  connect(grid_, &grid_view::selection_moved, this, [this] { show_selection(); });
  connect(&grid_->model(), &grid_model::refusal_changed, this, [this] { show_text(*status_, form_.status(panel_)); });
}

editor_panel_view::~editor_panel_view() = default;

// Beside the grid, which keeps its width.
void editor_panel_view::make_chart(QBoxLayout& column) {
  graph_ = std::make_unique<TGraphForm>();
  chart_ = new chart_view(this, chart_view::kind::beside_a_grid);
  chart_->setObjectName(shown(panel_.name + "Chart"));
  beside_ = new QSplitter(Qt::Horizontal);
  beside_->setChildrenCollapsible(false);
  beside_->addWidget(grid_);
  beside_->addWidget(chart_);
  beside_->setStretchFactor(0, 0);
  beside_->setStretchFactor(1, 1);
  connect(beside_, &QSplitter::splitterMoved, this, [this] { moved_by_hand_ = true; });
  column.addWidget(beside_, 1);
  connect(chart_, &chart_view::point_clicked, this, [this](std::size_t point) {
    panel_.table.set_active(graph_->series().front()->row_of(point), panel_.table.active_column());
    grid_->setFocus();
  });
  chart_->show_graph(graph_.get());
}

void editor_panel_view::add_deferred_note(QBoxLayout& column) {
  deferred_note_ = plain_label("DeferredNote");
  keep_points_ = new QPushButton("&Keep these points");
  keep_points_->setObjectName("KeepPointsButton");
  keep_points_->setToolTip("Runs use the points shown here; the query is kept, but no longer executed.");
  connect(keep_points_, &QPushButton::clicked, this, [this] { run_([this] { form_.keep_these_points(panel_); }); });
  auto* line = new QHBoxLayout;
  line->addWidget(deferred_note_, 1);
  line->addWidget(keep_points_);
  column.addLayout(line);
}

void editor_panel_view::add_source_note(QBoxLayout& column) {
  source_note_ = plain_label("SourceNote");
  refresh_button_ = new QPushButton("Re&fresh this series");
  refresh_button_->setObjectName("RefreshSeriesButton");
  refresh_button_->setToolTip("Executes the series' stored query and replaces its points.");
  connect(refresh_button_, &QPushButton::clicked, this,
          [this] { run_([this] { form_.refresh_from_source(panel_); }); });
  auto* line = new QHBoxLayout;
  line->addWidget(source_note_, 1);
  line->addWidget(refresh_button_);
  column.addLayout(line);
}

QAction* editor_panel_view::add_action(const char* text, const QKeySequence& keys,
                                       const std::function<void()>& command) {
  auto* action = new QAction(text, grid_);
  action->setShortcut(keys);
  action->setShortcutContext(Qt::WidgetShortcut);
  connect(action, &QAction::triggered, this, [this, command] { run_(command); });
  grid_->addAction(action);
  return action;
}

void editor_panel_view::add_menu() {
  add_action("&Copy", QKeySequence::Copy, [this] { form_.CopyButtonClick(panel_); });
  add_action("Copy with &headers", QKeySequence("Ctrl+Shift+C"), [this] { form_.CopyButtonClick(panel_, true); });
  if (panel_.buttons & paste_button)
    add_action("&Paste", QKeySequence::Paste, [this] { form_.PasteButtonClick(panel_); });
  if (panel_.buttons & (insert_button | row_keys)) {
    add_action("&Insert row", QKeySequence("Ctrl++"), [this] { form_.InsertRowButtonClick(panel_); });
    add_action("&Delete selected rows", QKeySequence("Ctrl+-"), [this] { form_.delete_selected_rows(panel_); });
  }
  if (panel_.series) {
    add_action("&Sort by date and time", {}, [this] { form_.sort_by_date_and_time(panel_); });
    add_action("&Regular times...", {}, [this] { form_.regular_times_click(panel_); });
    add_action("I&nterpolate between the selected rows", {}, [this] { form_.interpolate_between(panel_); });
    refresh_ = add_action("R&efresh this series", {}, [this] { form_.refresh_from_source(panel_); });
  }
  back_to_default_ = add_action("&Back to the default", {}, [this] { form_.back_to_default(panel_); });
  add_action("E&xport as CSV...", {}, [this] { form_.export_csv(panel_); });
  grid_->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void editor_panel_view::mark_as_active(bool active) {
  if (std::exchange(is_active_, active) == active) return;
  QFont font = label_->font();
  font.setBold(active);
  label_->setFont(font);
  update();
}

void editor_panel_view::paintEvent(QPaintEvent*) {
  if (!is_active_) return;
  QPainter(this).fillRect(0, 0, scaled(mark_width, *this), height(), palette().highlight());
}

bool editor_panel_view::eventFilter(QObject* watched, QEvent* event) {
  if (watched == grid_ && event->type() == QEvent::FocusIn) emit entered();
  return QWidget::eventFilter(watched, event);
}

void editor_panel_view::take_first_size(int width) {
  if (beside_) beside_->setSizes({grid_->sizeHint().width(), std::max(width - grid_->sizeHint().width(), 1)});
}

// The first points or marks need wider columns than an empty grid.
void editor_panel_view::make_room_for_grid() {
  const int wanted = grid_->sizeHint().width();
  const int rest = beside_->width() - beside_->handleWidth() - wanted;
  if (moved_by_hand_ || grid_->width() >= wanted || rest < chart_->minimumSizeHint().width()) return;
  beside_->setSizes({wanted, rest});
}

void editor_panel_view::texts_changed() {
  show_text(*label_, panel_.label);
  grid_->setAccessibleName(panel_.label.empty() ? name_ : shown(panel_.label));
  show_text(*status_, form_.status(panel_));
  if (!panel_.series) return;
  const std::string note = form_.deferred_note(panel_);
  show_text(*deferred_note_, note);
  keep_points_->setVisible(!note.empty());
  const std::string newer = form_.source_note(panel_);
  show_text(*source_note_, newer);
  refresh_button_->setVisible(!newer.empty());
  refresh_->setEnabled(form_.has_source(panel_));
  grid_->model().set_background(note.empty() ? QColor() : deferred_ground);
}

// The sums over a whole series are not recomputed at each cursor step.
void editor_panel_view::show_selection() {
  const cell_range cells = panel_.table.selection();
  const bool block = cells.rows() > 1 || cells.columns() > 1;
  if (block || shows_block_) show_text(*status_, form_.status(panel_));
  shows_block_ = block;
  back_to_default_->setEnabled(panel_.table.has_default());
  if (chart_ && !chart_is_old_)
    chart_->mark_point(panel_.table.is_shown_as_empty() ? std::nullopt
                                                        : point_of_row(*graph_, panel_.table.active_row()));
}

// Once per turn of the event loop: a series may have a million points.
void editor_panel_view::series_changed() {
  if (!chart_ || std::exchange(chart_is_old_, true)) return;
  QMetaObject::invokeMethod(
      this, [this] { attempt([this] { feed_chart(); }); }, Qt::QueuedConnection);
}

void editor_panel_view::feed_chart() {
  chart_is_old_ = false;
  const auto ref = panel_.series->ref();
  if (charted_ != ref) graph_->unzoom_completely();
  charted_ = ref;
  graph_->replace_series(form_.graph_data(panel_));
  chart_->data_changed();
  make_room_for_grid();
  show_selection();
}

} // namespace vesk
