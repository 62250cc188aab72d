#include "ui/info_list.h"

#include "ui/images.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QScrollBar>
#include <QStringList>
#include <QTimer>
#include <algorithm>

namespace vesk {

namespace {

constexpr int column_width = 600; // at least
constexpr int picture_width = 40; // with the space around it

} // namespace

info_lines::info_lines() : icons_{info_image(0), info_image(1), info_image(2)} {}

void info_lines::append(const std::string& text, int icon) {
  const int row = rowCount();
  beginInsertRows({}, row, row);
  lines_.push_back({shown(text), icon});
  endInsertRows();
}

void info_lines::clear() {
  beginResetModel();
  lines_.clear();
  endResetModel();
}

int info_lines::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QVariant info_lines::data(const QModelIndex& index, int role) const {
  const line& at = lines_[static_cast<std::size_t>(index.row())];
  switch (role) {
  case Qt::DisplayRole: return at.text;
  case Qt::ToolTipRole: return tool_tip(at.text);
  case Qt::DecorationRole:
    if (at.icon < 0 || at.icon >= static_cast<int>(icons_.size())) return {}; // an engine may send any number
    return icons_[static_cast<std::size_t>(at.icon)];
  case Qt::AccessibleDescriptionRole: return at.icon == 2 ? QString("failure") : QString();
  default: return {};
  }
}

info_list::info_list(QWidget* parent) : QTreeView(parent) {
  setObjectName("InfoListView");
  setAccessibleName("Messages");
  setModel(&lines_);
  setHeaderHidden(true);
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  header()->setStretchLastSection(false);
  connect(verticalScrollBar(), &QScrollBar::actionTriggered, this,
          [this] { QTimer::singleShot(0, this, [this] { note_scrolling(); }); }); // once it has scrolled
  auto* copy = new QAction("&Copy", this);
  copy->setShortcut(QKeySequence::Copy);
  copy->setShortcutContext(Qt::WidgetShortcut);
  connect(copy, &QAction::triggered, this, [this] { copy_selected(); });
  addAction(copy);
  setContextMenuPolicy(Qt::ActionsContextMenu);
}

void info_list::append(const std::string& text, int icon) {
  lines_.append(text, icon);
  const QModelIndex newest = lines_.index(lines_.rowCount() - 1);
  const int width = fontMetrics().horizontalAdvance(newest.data().toString()) + scaled(picture_width, *this);
  if (width > longest_) {
    longest_ = width;
    fit_column();
  }
  if (follows_) show_newest();
}

// From its first character on, also after a longer line was read to its end.
void info_list::show_newest() {
  scrollToBottom();
  horizontalScrollBar()->setValue(0);
}

void info_list::select_last() {
  const bool scrolls = hasAutoScroll();
  setAutoScroll(false); // where the user reads is his own matter
  setCurrentIndex(lines_.index(lines_.rowCount() - 1));
  setAutoScroll(scrolls);
}

void info_list::clear() {
  lines_.clear();
  longest_ = 0;
  follows_ = true;
  fit_column();
}

// A long line is read by scrolling, not cut.
void info_list::fit_column() {
  setColumnWidth(0, std::max({scaled(column_width, *this), longest_, viewport()->width()}));
}

void info_list::resizeEvent(QResizeEvent* event) {
  QTreeView::resizeEvent(event);
  fit_column();
  if (follows_) scrollToBottom();
}

// Only the user's own scrolling counts; the end moves by itself when lines come or the list gets smaller.
void info_list::note_scrolling() {
  follows_ = verticalScrollBar()->value() == verticalScrollBar()->maximum();
}

void info_list::wheelEvent(QWheelEvent* event) {
  QTreeView::wheelEvent(event);
  note_scrolling();
}

void info_list::keyPressEvent(QKeyEvent* event) {
  QTreeView::keyPressEvent(event);
  note_scrolling();
}

void info_list::copy_selected() const {
  QModelIndexList rows = selectionModel()->selectedRows();
  std::sort(rows.begin(), rows.end());
  QStringList texts;
  for (const QModelIndex& row : rows) texts << row.data().toString();
  if (!texts.isEmpty()) QApplication::clipboard()->setText(texts.join('\n'));
}

} // namespace vesk
