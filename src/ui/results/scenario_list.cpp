#include "ui/results/scenario_list.h"

#include "platform/counted.h"
#include "results/measured_series.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>

namespace vesk {

namespace {

constexpr int lines_in_sight = 4;

std::string described(const scenario& it) {
  const auto& times = it.file->times();
  return it.path.string() + "\n" + it.file->title() + "\n" + counted(it.file->segments(), "segment") + ", " +
         counted(times.size(), "time") + " from " + text_of_moment(times.front()) + " to " +
         text_of_moment(times.back());
}

QPushButton* button(const char* text, const char* name, const char* tip) {
  auto* made = new QPushButton(text);
  made->setObjectName(name);
  made->setToolTip(tip);
  made->setAutoDefault(false);
  return made;
}

} // namespace

scenario_list::scenario_list(results_session& session, std::function<void()> open, QWidget* parent)
    : QWidget(parent), session_(session), list_(new QTreeWidget),
      close_(button("Clos&e", "CloseButton", "Close the selected results; the file is kept")),
      rename_(button("&Rename", "RenameButton", "Rename the selected results (F2)")),
      baseline_(button("Base&line", "BaselineButton", "Compare the others with the selected results")) {
  list_->setObjectName("ScenarioList");
  list_->setAccessibleName("Scenarios");
  list_->setColumnCount(2);
  list_->setHeaderHidden(true);
  list_->setRootIsDecorated(false);
  list_->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::DoubleClicked);
  list_->setTextElideMode(Qt::ElideMiddle);
  list_->header()->setStretchLastSection(false);
  list_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  list_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  list_->setMinimumHeight(lines_in_sight * (list_->fontMetrics().height() + scaled(4, *this)) + scaled(6, *this));
  auto* label = new QLabel("Scenar&ios");
  label->setBuddy(list_);
  auto* opener = button("&Open...", "OpenButton", "Open another results file (Ctrl+O)");
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->addWidget(label, 0, 0, 1, 2);
  grid->addWidget(list_, 1, 0, 1, 2);
  grid->addWidget(opener, 2, 0);
  grid->addWidget(close_, 2, 1);
  grid->addWidget(rename_, 3, 0);
  grid->addWidget(baseline_, 3, 1);
  connect(opener, &QPushButton::clicked, this, [open = std::move(open)] { attempt(open); });
  connect(close_, &QPushButton::clicked, this, [this] { attempt([this] { session_.close(active()); }); });
  connect(baseline_, &QPushButton::clicked, this, [this] { attempt([this] { session_.set_baseline(active()); }); });
  connect(rename_, &QPushButton::clicked, this, [this] {
    if (QTreeWidgetItem* item = list_->currentItem()) list_->editItem(item);
  });
  connect(list_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item) {
    // Queued until the editor has closed, since this recreates the lines.
    QMetaObject::invokeMethod(
        this, [this, item] { attempt([&] { rename(item); }); }, Qt::QueuedConnection);
  });
  connect(list_, &QTreeWidget::currentItemChanged, this,
          [this] { baseline_->setEnabled(active() != session_.baseline()); });
  show_results();
}

std::size_t scenario_list::active() const {
  return static_cast<std::size_t>(std::max(list_->currentIndex().row(), 0));
}

void scenario_list::rename(QTreeWidgetItem* item) {
  const int row = list_->indexOfTopLevelItem(item);
  if (row < 0 || row >= static_cast<int>(session_.scenarios().size())) return;
  session_.rename(static_cast<std::size_t>(row), stored(item->text(0).trimmed()));
}

void scenario_list::show_results() {
  const QSignalBlocker quiet(list_);
  const int row = list_->currentIndex().row();
  const auto& scenarios = session_.scenarios();
  list_->clear();
  for (std::size_t i = 0; i < scenarios.size(); ++i) {
    auto* item = new QTreeWidgetItem(list_);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    item->setText(0, shown(scenarios[i].name));
    item->setText(1, i == session_.baseline() && scenarios.size() > 1 ? "baseline" : "");
    item->setToolTip(0, tool_tip(shown(described(scenarios[i]))));
  }
  if (!scenarios.empty())
    list_->setCurrentItem(list_->topLevelItem(std::clamp(row, 0, static_cast<int>(scenarios.size()) - 1)));
  for (QPushButton* it : {close_, rename_}) it->setEnabled(!scenarios.empty());
  baseline_->setEnabled(scenarios.size() > 1 && active() != session_.baseline());
}

} // namespace vesk
