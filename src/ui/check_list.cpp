#include "ui/check_list.h"

#include "editors/name_search.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QAction>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace vesk {

namespace {

constexpr int usual_width = 340, usual_height = 380;

} // namespace

check_list_model::check_list_model(text_of text, std::vector<bool>& checked, QObject* parent)
    : QAbstractListModel(parent), text_(std::move(text)), checked_(checked) {}

void check_list_model::reload() {
  beginResetModel();
  rows_ = static_cast<int>(checked_.size());
  endResetModel();
}

int check_list_model::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

Qt::ItemFlags check_list_model::flags(const QModelIndex&) const {
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}

QVariant check_list_model::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row());
  if (row >= checked_.size()) return {};
  switch (role) {
  case Qt::DisplayRole: return shown(text_(row));
  case Qt::ToolTipRole: return tool_tip(shown(text_(row)));
  case Qt::CheckStateRole: return checked_[row] ? Qt::Checked : Qt::Unchecked;
  default: return {};
  }
}

bool check_list_model::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::CheckStateRole || index.row() >= static_cast<int>(checked_.size())) return false;
  check({index}, value.toInt() == Qt::Checked);
  return true;
}

void check_list_model::check(const QModelIndexList& rows, bool on) {
  for (const QModelIndex& index : rows)
    if (const auto row = static_cast<std::size_t>(index.row()); row < checked_.size()) checked_[row] = on;
  if (rowCount() > 0) emit dataChanged(index(0), index(rowCount() - 1), {Qt::CheckStateRole});
  emit changed();
}

check_list_view::check_list_view(check_list_model& model) : model_(model) {
  setModel(&model);
  setUniformItemSizes(true); // otherwise Qt measures each of 1e5 names
  setSelectionMode(ExtendedSelection);
  setTextElideMode(Qt::ElideRight);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // the first name sets the width
}

QSize check_list_view::sizeHint() const {
  return {scaled(usual_width, *this), scaled(usual_height, *this)};
}

// Space toggles the active name and gives all selected names its new state.
void check_list_view::keyPressEvent(QKeyEvent* event) {
  const bool space = event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier;
  if (!space || !currentIndex().isValid()) return QListView::keyPressEvent(event);
  const bool on = currentIndex().data(Qt::CheckStateRole).toInt() != Qt::Checked;
  QModelIndexList rows = selectionModel()->selectedRows();
  if (!rows.contains(currentIndex())) rows = {currentIndex()};
  model_.check(rows, on);
}

check_list::check_list(const QString& name, const QString& caption, check_list_model::text_of text,
                       std::vector<bool>& checked, std::function<void()> changed)
    : model_(new check_list_model(std::move(text), checked, this)), view_(new check_list_view(*model_)),
      wanted_(new QLineEdit), answer_(new QLabel) {
  view_->setObjectName(name);
  auto* label = new QLabel(caption);
  label->setBuddy(view_);
  QString plain = caption;
  view_->setAccessibleName(plain.remove('&'));
  wanted_->setObjectName(name + "Find");
  wanted_->setPlaceholderText("Find a name; Enter or F3 for the next one");
  wanted_->setAccessibleName("Find a name");
  wanted_->setClearButtonEnabled(true);
  answer_->setTextFormat(Qt::PlainText);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(label);
  column->addWidget(wanted_);
  column->addWidget(view_, 1);
  column->addWidget(answer_);
  connect(model_, &check_list_model::changed, this,
          [changed = std::move(changed)] { attempt([&changed] { changed(); }); });
  connect(wanted_, &QLineEdit::textEdited, this, [this] { find(false); });
  const auto bind = [this](const QKeySequence& keys, Qt::ShortcutContext context, QWidget* on, auto command) {
    auto* action = new QAction(this);
    action->setShortcut(keys);
    action->setShortcutContext(context);
    connect(action, &QAction::triggered, this, command);
    on->addAction(action);
  };
  bind(Qt::Key_F3, Qt::WidgetWithChildrenShortcut, this, [this] { find(true); });
  bind(QKeySequence::Find, Qt::WidgetWithChildrenShortcut, this, [this] { start(); });
  bind(Qt::Key_Return, Qt::WidgetShortcut, wanted_, [this] { find(true); }); // not the dialog's OK
  bind(Qt::Key_Enter, Qt::WidgetShortcut, wanted_, [this] { find(true); });
  bind(Qt::Key_Down, Qt::WidgetShortcut, wanted_, [this] { view_->setFocus(); });
}

void check_list::reload() {
  model_->reload();
  answer_->hide();
  if (model_->rowCount() > 0) view_->setCurrentIndex(model_->index(0));
}

void check_list::start() {
  wanted_->setFocus();
  wanted_->selectAll();
}

void check_list::find(bool next) {
  attempt([&] {
    const int now = view_->currentIndex().row();
    const auto from = static_cast<std::size_t>(std::max(next ? now + 1 : now, 0));
    const auto found = find_name(
        static_cast<std::size_t>(model_->rowCount()), from,
        [this](std::size_t row) { return stored(shown(model_->text(static_cast<int>(row)))); },
        stored(wanted_->text()));
    if (found) view_->setCurrentIndex(model_->index(static_cast<int>(*found)));
    answer_->setText("No name contains \"" + wanted_->text() + "\".");
    answer_->setVisible(!found && !wanted_->text().isEmpty());
  });
}

} // namespace vesk
