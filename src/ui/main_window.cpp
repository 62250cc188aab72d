#include "ui/main_window.h"

#include "documents/xml_documentation_index.h"
#include "platform/file_io.h"
#include "platform/safe_file.h"
#include "query/import_query.h"
#include "ui/copied_cells.h"
#include "ui/form_windows.h"
#include "ui/front_page.h"
#include "ui/guard.h"
#include "ui/guide_window.h"
#include "ui/images.h"
#include "ui/info_list.h"
#include "ui/measures.h"
#include "ui/message_panel.h"
#include "ui/progress_box.h"
#include "ui/progress_panel.h"
#include "ui/questions.h"
#include "ui/results/results_window.h"
#include "ui/results_table.h"
#include "ui/splash_form.h"
#include "ui/texts.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDialog>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QScreen>
#include <QSplitter>
#include <QUrl>
#include <QVBoxLayout>

namespace vesk {

namespace {

// The design size of a window without a stored position.
constexpr int design_width = 980, design_height = 640, design_results_height = 260;

constexpr int least_height_of_messages = 120;

constexpr int frame = 32; // above a window's content

// Moves and shrinks the window onto the screen that shows most of it: scale or screens may have changed since the
// position was stored.
QRect on_a_screen(QRect place) {
  const QScreen* best = QGuiApplication::primaryScreen();
  int most = 0;
  for (const QScreen* screen : QGuiApplication::screens()) {
    const QRect common = screen->availableGeometry().intersected(place);
    if (const int area = common.width() * common.height(); !common.isEmpty() && area > most) {
      best = screen;
      most = area;
    }
  }
  const QRect all = best->availableGeometry(), room = all.adjusted(0, std::min(frame, all.height() / 2), 0, 0);
  place.setSize(place.size().boundedTo(room.size()));
  const bool is_inside = all.contains(place);
  if (most == 0) return {room.topLeft(), place.size()};
  if (is_inside) return place;
  place.moveLeft(std::clamp(place.left(), room.left(), room.left() + room.width() - place.width()));
  place.moveTop(std::clamp(place.top(), room.top(), room.top() + room.height() - place.height()));
  return place;
}

run_record head_of_records() {
  std::vector<std::string> arguments;
  for (const QString& argument : QCoreApplication::arguments()) arguments.push_back(argument.toStdString());
  return record_of_this_program("vesk", QCoreApplication::applicationVersion().toStdString(), std::move(arguments));
}

} // namespace

main_window::main_window(const std::filesystem::path& settings_file)
    : form_(std::make_unique<TPreveskMainForm>(*this, settings_file)) {
  form_->record_head = head_of_records();
  form_->serve_a_window();
  form_->document_index = std::make_unique<xml_documentation_index>();
  setObjectName("PreveskMainForm");
  setWindowIcon(program_image());
  lay_out();
  forms_ = std::make_unique<form_windows>(*this);
  controls_ = std::make_unique<command_controls>(
      *this, *form_, [this](const std::string& caption) { form_->DocumentationItemClick(caption); });
  controls_->show_recent_files(form_->settings.recent_files());
  form_->FormCreate();
  form_->set_window_handle(
      static_cast<std::int32_t>(winId())); // last: creating the window handle earlier would affect its position
  for (const QScreen* each : QGuiApplication::screens())
    connect(
        each, &QScreen::availableGeometryChanged, this, [this] { keep_on_screen(); }, Qt::QueuedConnection);
  UIUpdateTimer.setObjectName("UIUpdateTimer");
  connect(&UIUpdateTimer, &QTimer::timeout, this, [this] {
    attempt([this] {
      form_->UpdateTimerTimer();
      sample_results_grid();
    });
  });
  UIUpdateTimer.start(TPreveskMainForm::ui_update_interval);
}

main_window::~main_window() = default;

void main_window::lay_out() {
  auto* content = new QWidget(this);
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  splitter_ = new QSplitter(Qt::Vertical, content);
  splitter_->setChildrenCollapsible(false);
  front_page_ = new front_page(splitter_, *form_);
  auto* messages = new message_panel(
      splitter_, [this](const std::string& text) { save_messages(text); }, form_->settings.WrapMessages);
  InfoListView = messages->list();
  InfoListView->OnFileChosen = [this](const QString& file) { attempt([&] { show_results(stored(file), false); }); };
  ResultsTable =
      new results_table(splitter_, [this](int row, int cell) { return form_->ResultsTableGetCellData(row, cell); });
  ResultsTable->hide();
  splitter_->setStretchFactor(1, 1);
  connect(splitter_, &QSplitter::splitterMoved, this, [this] {
    if (front_page_->isVisible()) page_height_ = front_page_->height();
    if (ResultsTable->isVisible()) results_height_ = ResultsTable->height();
  });
  InfoPanel = new progress_panel(
      content, [this](int position) { attempt([=, this] { form_->PriorityTrackBarChange(position); }); },
      [this] { attempt([this] { form_->cancel_job(); }); });
  column->addWidget(splitter_, 1);
  column->addWidget(InfoPanel);
  setCentralWidget(content);
  results_height_ = scaled(design_results_height, *this);
  setAcceptDrops(true);
  refresh_soon_.setSingleShot(true);
  connect(&refresh_soon_, &QTimer::timeout, this, [this] { attempt([this] { refresh_front_page(); }); });
  refresh_front_page();
  const QSize room = screen()->availableGeometry().size() - QSize(0, frame);
  resize(QSize(scaled(design_width, *this), scaled(design_height, *this)).boundedTo(room));
}

void main_window::set_start(std::vector<std::string> arguments, splash_form* splash) {
  arguments_ = std::move(arguments);
  splash_ = splash;
}

// The first showing continues once the window is visible, so that its questions appear above it.
void main_window::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (has_been_shown_) return;
  has_been_shown_ = true;
  QMetaObject::invokeMethod(
      this, [this] { attempt([this] { form_->FormShow(arguments_); }); }, Qt::QueuedConnection);
}

void main_window::closeEvent(QCloseEvent* event) {
  event->accept();
  if (std::exchange(has_closed_, true)) return;
  attempt([this] { form_->FormClose(); });
  if (results_) attempt([this] { results_->save_settings(); });
  QCoreApplication::quit();
}

void main_window::close_main_window() {
  close();
}

// Dialogs.

box_answer main_window::message_box(const std::string& title, const std::string& text, box_buttons buttons) {
  return ask_in_box(title, text, buttons);
}

std::optional<std::string> main_window::ask_file(const file_dialog& dialog) {
  return ask_for_file(dialog, shown(form_->documents_directory));
}

std::optional<std::string> main_window::ask_folder(const std::string& title, const std::string& start) {
  return ask_for_folder(title, start);
}

bool main_window::run_long_work(const std::string& what, const std::function<void(work_progress&)>& work) {
  return run_behind_box(what, work);
}

void main_window::set_busy(bool busy) {
  if (busy)
    QApplication::setOverrideCursor(Qt::WaitCursor);
  else
    QApplication::restoreOverrideCursor();
}

// A form without a window counts as cancelled.
bool main_window::show_form(vesk::form& wanted) {
  if (forms_->has_window_for(wanted)) return forms_->show(wanted);
  add_info_line("The window \"" + wanted.caption() +
                    "\" is not available yet. Change these values as text with vki dump and vki load.",
                icon_note);
  select_last_info_line();
  return false;
}

void main_window::show_graph(std::shared_ptr<TGraphForm> graph, const vesk::form& owner) {
  forms_->show_graph(std::move(graph), owner);
}

void main_window::show_network() {
  forms_->show_network(*form_);
}

std::string main_window::clipboard_text() {
  return stored(QApplication::clipboard()->text());
}

void main_window::set_clipboard_text(const std::string& text) {
  copy_cells(text);
}

// The window itself.

void main_window::set_commands(const command_conditions& conditions) {
  controls_->set_commands(conditions);
  InfoPanel->show_cancel(conditions.running);
  forms_->job_changed();
  refresh_soon_.start(0);
}

void main_window::set_caption(const std::string& caption) {
  setWindowTitle(shown(caption));
  refresh_soon_.start(0);
}

window_geometry main_window::geometry() {
  if (ResultsTable->isVisible()) results_height_ = ResultsTable->height();
  window_geometry now;
  now.results_table_height = results_height_;
  note_normal_place();
  // Size of the content without the frame, which is unknown before the window is shown.
  const QRect inner = normal_place_.isValid() ? normal_place_ : QMainWindow::geometry();
  now.left = inner.x();
  now.top = inner.y();
  now.width = inner.width();
  now.height = inner.height();
  now.state = isMinimized()   ? window_geometry::window_minimised
              : isMaximized() ? window_geometry::window_maximised
                              : window_geometry::window_normal;
  return now;
}

void main_window::set_geometry(const window_geometry& wanted) {
  set_results_height(wanted.results_table_height);
  const QRect place(wanted.left, wanted.top, wanted.width, wanted.height);
  const QRect fitting = on_a_screen(place);
  if (place.topLeft() == QMainWindow::geometry().topLeft())
    resize(fitting.size()); // the window manager chooses the position
  else
    QMainWindow::setGeometry(fitting);
  normal_place_ = QMainWindow::geometry();
  switch (wanted.state) {
  case window_geometry::window_minimised: setWindowState(Qt::WindowMinimized); break;
  case window_geometry::window_maximised: setWindowState(Qt::WindowMaximized); break;
  default: setWindowState(Qt::WindowNoState);
  }
}

// A minimised or maximised window no longer knows its normal position.
void main_window::note_normal_place() {
  if (isVisible() && !(windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen)))
    normal_place_ = QMainWindow::geometry();
}

// The scale or size of the screen has changed at run time.
void main_window::keep_on_screen() {
  if (!isVisible() || windowState() != Qt::WindowNoState) return;
  const QRect fitting = on_a_screen(QMainWindow::geometry());
  if (fitting != QMainWindow::geometry()) QMainWindow::setGeometry(fitting);
}

void main_window::moveEvent(QMoveEvent* event) {
  QMainWindow::moveEvent(event);
  note_normal_place();
}

void main_window::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  note_normal_place();
  QTimer::singleShot(0, this, [this] { share_the_height(); }); // after the layout
}

void main_window::minimise_main_window() {
  setWindowState(windowState() | Qt::WindowMinimized);
}

void main_window::hide_splash() {
  if (splash_) splash_->hide();
}

void main_window::data_set_replaced() {
  forms_->data_set_replaced();
  refresh_soon_.start(0);
}

void main_window::recent_files_changed() {
  controls_->show_recent_files(form_->settings.recent_files());
  refresh_soon_.start(0);
}

void main_window::refresh_front_page() {
  front_page_->refresh();
  share_the_height();
}

// Messages and grid have priority: the page is hidden if it would leave them too little room.
void main_window::share_the_height() {
  const bool with_grid = !ResultsTable->isHidden();
  const int handle = splitter_->handleWidth(), grid = with_grid ? results_height_ : 0;
  const int page = page_height_ > 0 ? page_height_ : front_page_->wanted_height();
  int all = splitter_->height() - (with_grid ? handle : 0);
  const int room = all - handle - grid - scaled(least_height_of_messages, *this);
  const bool with_page = !with_grid || room >= page;
  front_page_->setVisible(with_page);
  if (with_page) all -= handle;
  const int shown_page = with_page ? std::clamp(page, 0, std::max({room, all / 2, 0})) : 0;
  splitter_->setSizes({shown_page, std::max(all - shown_page - grid, 0), grid});
}

// Files.

void main_window::save_messages(const std::string& text) {
  static const file_dialog dialog{file_dialog::kind::save, "Save messages", "Text files (*.txt)|*.txt", "txt", ".txt"};
  const auto name = ask_file(dialog);
  if (!name) return;
  try {
    safe_file file(*name);
    write_all(file.descriptor(), text, {}, *name);
    file.commit();
  } catch (const file_exception& error) {
    message_box("Error", error.what(), box_buttons::ok);
  }
}

// Only local files that can be opened, no remote links.
static QStringList files_in(const QMimeData& data) {
  static const QStringList endings{"vki", "vkp", "inp", "nc"};
  QStringList files;
  for (const QUrl& url : data.urls())
    if (url.isLocalFile() && endings.contains(QFileInfo(url.toLocalFile()).suffix().toLower()))
      files << url.toLocalFile();
  return files;
}

void main_window::dragEnterEvent(QDragEnterEvent* event) {
  if (!files_in(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

// Queued: opening may ask a question, and the program the file comes from waits until the drop ends.
void main_window::dropEvent(QDropEvent* event) {
  for (const QString& file : files_in(*event->mimeData()))
    QMetaObject::invokeMethod(
        this, [this, file] { attempt([&] { form_->open_dropped(stored(file)); }); }, Qt::QueuedConnection);
  event->acceptProposedAction();
}

bool main_window::show_results(const std::string& file, bool after_run) {
  if (after_run) InfoListView->set_file_of_newest(shown(file)); // the line that names what was written
  const bool is_open = results_ && results_->isVisible();
  if (after_run && !is_open && !form_->settings.ShowResultsAfterRun) return true;
  if (!results_) {
    results_ = std::make_unique<results_window>(
        *this, [this] { return form_->data_set(); }, form_->settings.file());
    results_->OnNewMeasuredFile = [this](const std::filesystem::path& measured) { form_->list_related_file(measured); };
  }
  if (!file.empty()) results_->open(file);
  if (!is_open) show_results_window();
  if (!after_run) results_->activateWindow();
  return true;
}

// A dialog would be covered by the window, and keep it from being used.
void main_window::show_results_window() {
  if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
    connect(dialog, &QDialog::finished, this, &main_window::show_results_window,
            Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
  else
    results_->show();
}

void main_window::sample_results_grid() {
  if (!form_->active_thread || !results_ || !results_->isVisible() || form_->simulation_time() == 0) return;
  results_->sample(form_->simulation_time(), ResultsTable->chosen_cells(),
                   [this](int row, int cell) { return form_->ResultsTableGetCellData(row, cell); });
}

// Job events.

// A series without points makes the model run on zeros; rows that were left out may be typing errors.
void main_window::query_executed(const std::string& series, const import_query_descriptor& query,
                                 const query_report& report) {
  const bool left_out = report.without_moment + report.without_value > 0;
  add_info_line(in_words(series, query, report), report.points == 0 ? icon_failure : left_out ? icon_note : icon_plain);
}

void main_window::set_priority_position(int position) {
  InfoPanel->set_priority_position(position);
}

void main_window::add_info_line(const std::string& text, int icon) {
  InfoListView->append(text, icon);
}

void main_window::select_last_info_line() {
  InfoListView->select_last();
}

void main_window::clear_info_lines() {
  InfoListView->clear();
}

void main_window::begin_job_messages(const std::string& heading) {
  InfoListView->begin_section(heading);
}

void main_window::end_job_messages(const std::string& outcome) {
  InfoListView->end_section(outcome);
}

bool main_window::show_page(const std::string& file) {
  show_guide(*this, shown(file));
  return true;
}

void main_window::set_progress(int percent) {
  InfoPanel->set_progress(percent);
}

void main_window::set_info_label(const std::string& text) {
  InfoPanel->set_info(text);
}

void main_window::set_time_remaining_label(const std::string& text) {
  InfoPanel->set_time_remaining(text);
}

void main_window::show_run_controls(bool running) {
  controls_->show_run_face(running);
  InfoPanel->show_priority(running);
}

void main_window::initialize_grid(const std::vector<std::string>& column_labels, int rows) {
  ResultsTable->set_picture(form_->number_format("MainFormResultsNumericField"));
  ResultsTable->initialize_grid(column_labels, rows);
}

void main_window::set_results_height(int height) {
  results_height_ = height;
  if (ResultsTable->isVisible()) share_the_height();
}

void main_window::show_results_grid(bool visible) {
  if (visible == !ResultsTable->isHidden()) return;
  if (!visible && ResultsTable->isVisible()) results_height_ = ResultsTable->height();
  ResultsTable->setVisible(visible);
  share_the_height();
}

void main_window::repaint_results_grid() {
  ResultsTable->repaint_cells();
}

} // namespace vesk
