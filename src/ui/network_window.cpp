#include "ui/network_window.h"

#include "network/segment_text.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/picture_output.h"
#include "ui/plain_label.h"
#include "ui/texts.h"

#include <QAction>
#include <QLabel>
#include <QShowEvent>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWindow>

namespace vesk {

namespace {

constexpr int look_milliseconds = 300;

} // namespace

network_window::network_window(QWidget* owner, editor_host& host, std::function<void(std::size_t)> go_to)
    : QWidget(owner, Qt::Window), host_(host), go_to_(std::move(go_to)), view_(new schematic_view(this)),
      details_(plain_label("SegmentLabel")), remark_(plain_label("RemarkLabel")),
      watch_([&host] { return host.data_set(); }, [this] { take(); }) {
  setObjectName("NetworkWindow");
  setWindowTitle("Network");
  auto* tools = new QToolBar(this);
  const auto add = [&](const char* text, const char* tip, const QKeySequence& keys, auto command) {
    QAction* action = tools->addAction(text, this, [command] { attempt(command); });
    action->setToolTip(QString("%1 (%2)").arg(tip, keys.toString()));
    action->setShortcut(keys);
    auto* button = qobject_cast<QToolButton*>(tools->widgetForAction(action));
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(text);
  };
  add("Zoom in", "Show a smaller part", Qt::Key_Plus, [this] { view_->zoom_in(); });
  add("Zoom out", "Show a larger part", Qt::Key_Minus, [this] { view_->zoom_out(); });
  add("Fit", "Show all", Qt::Key_Home, [this] { view_->fit(); });
  tools->addSeparator();
  const auto picture = [this] {
    return picture_output{
        [this](const QString& name) { return view_->save(name); },
        [this](QPaintDevice& device, const QRect& target) { return view_->paint_on(device, target); }};
  };
  add("Print", "Print the network", QKeySequence::Print, [picture] { print_picture(picture()); });
  add("Save as...", "Save as PNG, SVG, PDF or CSV", QKeySequence::Save, [picture] { save_picture(picture()); });
  auto* column = new QVBoxLayout(this);
  column->addWidget(tools);
  column->addWidget(view_, 1);
  column->addWidget(details_);
  column->addWidget(remark_);
  connect(view_, &schematic_view::segment_chosen, this,
          [this](std::size_t segment) { attempt([&] { chosen(segment); }); });
  auto* watch = new QTimer(this);
  connect(watch, &QTimer::timeout, this, [this] { attempt([this] { look(); }); });
  watch->start(look_milliseconds);
  resize(scaled(900, *this), scaled(560, *this));
}

void network_window::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  follow(followed_);
  attempt([this] { look(); });
}

// A window owned by the modal one is not blocked by it.
void network_window::follow(QWidget* dialog) {
  followed_ = dialog;
  QWidget* above = dialog ? dialog : parentWidget();
  if (!isVisible() || !above) return; // if hidden, this is done when it is shown
  above->winId();                     // creates its handle
  windowHandle()->setTransientParent(above->windowHandle());
}

void network_window::select(std::optional<std::size_t> segment) {
  view_->select(segment);
  watch_.set_centre(segment);
  wanted_ = segment;
  show_texts();
}

void network_window::look() {
  if (!isVisible()) return;
  const prevesk_dataset_data_type* now = host_.data_set();
  if (!now) return hide();
  watch_.look();
  if (!watch_.network()) view_->set_note("Laying out " + QString::number(now->segments.size()) + " segments...");
}

void network_window::take() {
  view_->set_note("No segments.");
  view_->show_network(watch_.network());
  if (!view_->selected()) view_->select(wanted_);
  show_texts();
}

void network_window::chosen(std::size_t segment) {
  select(segment);
  go_to_(segment);
}

void network_window::show_texts() {
  const auto& drawn = view_->network();
  if (!drawn) return;
  show_text(*remark_, remark_on(drawn->picture, drawn->network));
  std::string details = "Click a segment, or choose one by the arrow keys and Return, to go to its row in the editor.";
  if (const auto segment = view_->selected()) {
    details = describe_segment(drawn->network, *segment);
    for (std::size_t at = 0; (at = details.find('\n', at)) != std::string::npos;) details.replace(at, 1, ". ");
  }
  show_text(*details_, details);
}

} // namespace vesk
