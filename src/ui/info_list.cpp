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
#include <QStyledItemDelegate>
#include <algorithm>
#include <chrono>

namespace vesk {

namespace {

constexpr int column_width = 600;         // at least
constexpr int picture_width = 40;         // with the space around it
constexpr int catch_up_milliseconds = 30; // painting the list takes up to 5

// The icons' meaning in words: neither icon nor colour is ever the only sign.
constexpr const char* words[] = {"", "Note: ", "Failure: "};

// Shows the icon's word, and headings in bold.
class line_delegate final : public QStyledItemDelegate {
public:
  using QStyledItemDelegate::QStyledItemDelegate;

  // A tree asks for the height of a line without saying how wide it is.
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyleOptionViewItem known = option;
    const auto* view = qobject_cast<const QTreeView*>(parent());
    if (view && view->wordWrap()) known.rect = QRect(0, 0, view->columnWidth(0), 1);
    return QStyledItemDelegate::sizeHint(known, index);
  }

protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    option->text = index.data(info_lines::whole_text).toString();
    if (!index.data(info_lines::named_file).toString().isEmpty()) option->font.setUnderline(true);
    if (!index.data(info_lines::is_heading).toBool()) return;
    option->font.setBold(true);
    option->backgroundBrush = option->palette.alternateBase();
  }
};

} // namespace

info_lines::info_lines() : icons_{info_image(0), info_image(1), info_image(2)} {}

void info_lines::push(line added) {
  const int row = rowCount();
  beginInsertRows({}, row, row);
  lines_.push_back(std::move(added));
  endInsertRows();
}

void info_lines::append(const std::string& text, int icon) {
  push({shown(text), std::max(icon, 0)}); // an engine may send any number
}

void info_lines::begin_section(const std::string& heading) {
  heading_text_ = shown(heading);
  heading_ = rowCount();
  push({heading_text_, heading_icon});
}

void info_lines::end_section(const std::string& outcome) {
  const QString text = heading_text_ + ": " + shown(outcome);
  if (heading_ < 0) return push({text, heading_icon});
  lines_[static_cast<std::size_t>(heading_)].text = text;
  emit dataChanged(index(heading_), index(heading_));
  heading_ = -1;
}

void info_lines::set_file_of_newest(const QString& file) {
  if (!lines_.empty()) lines_.back().file = file;
}

void info_lines::clear() {
  beginResetModel();
  lines_.clear();
  heading_ = -1;
  endResetModel();
}

QString info_lines::whole(const line& of) const {
  const auto icon = static_cast<std::size_t>(std::max(of.icon, 0));
  return (icon < std::size(words) ? words[icon] : "") + of.text;
}

QString info_lines::all_text() const {
  QString text;
  for (const line& it : lines_) {
    if (it.icon == heading_icon && !text.isEmpty()) text += '\n'; // a blank line between sections
    text += whole(it) + '\n';
  }
  return text;
}

int info_lines::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QVariant info_lines::data(const QModelIndex& index, int role) const {
  const line& at = lines_[static_cast<std::size_t>(index.row())];
  switch (role) {
  case Qt::DisplayRole: return at.text;
  case whole_text:
  case Qt::AccessibleTextRole: return whole(at);
  case is_heading: return at.icon == heading_icon;
  case named_file: return at.file;
  case Qt::ToolTipRole:
    return tool_tip(at.file.isEmpty() ? at.text : at.text + "\nA double click or Enter shows these results.");
  case Qt::DecorationRole:
    if (at.icon < 0 || at.icon >= static_cast<int>(icons_.size())) return {};
    return icons_[static_cast<std::size_t>(at.icon)];
  case Qt::AccessibleDescriptionRole: return at.icon == 2 ? QString("failure") : QString();
  default: return {};
  }
}

info_list::info_list(QWidget* parent) : QTreeView(parent) {
  setObjectName("InfoListView");
  setAccessibleName("Messages");
  setModel(&lines_);
  setItemDelegate(new line_delegate(this));
  setHeaderHidden(true);
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  header()->setStretchLastSection(false);
  connect(verticalScrollBar(), &QScrollBar::actionTriggered, this,
          [this] { QTimer::singleShot(0, this, [this] { note_scrolling(); }); }); // after the list has scrolled
  catch_up_soon_.setSingleShot(true);
  catch_up_soon_.setInterval(catch_up_milliseconds);
  connect(&catch_up_soon_, &QTimer::timeout, this, [this] { catch_up(); });
  connect(this, &QTreeView::activated, this, [this](const QModelIndex& line) {
    const QString file = line.data(info_lines::named_file).toString();
    if (OnFileChosen && !file.isEmpty()) OnFileChosen(file);
  });
  auto* copy = new QAction("&Copy", this);
  copy->setShortcut(QKeySequence::Copy);
  copy->setShortcutContext(Qt::WidgetShortcut);
  connect(copy, &QAction::triggered, this, [this] { copy_selected(); });
  addAction(copy);
  setContextMenuPolicy(Qt::ActionsContextMenu);
}

void info_list::append(const std::string& text, int icon) {
  lines_.append(text, icon);
  note_newest();
}

void info_list::begin_section(const std::string& heading) {
  lines_.begin_section(heading);
  note_newest();
}

void info_list::end_section(const std::string& outcome) {
  lines_.end_section(outcome);
  note_newest();
}

// Painting the list for each of 8,000 lines that an engine sends would take longer than a short run.
void info_list::note_newest() {
  const QModelIndex newest = lines_.index(lines_.rowCount() - 1);
  const int width =
      fontMetrics().horizontalAdvance(newest.data(info_lines::whole_text).toString()) + scaled(picture_width, *this);
  if (width > longest_) {
    longest_ = width;
    is_wider_ = true;
  }
  catch_up_later();
}

void info_list::catch_up_later() {
  if (catch_up_soon_.isActive()) return;
  catch_up_soon_.start();
  setUpdatesEnabled(false); // until then
}

// Laying out the lines takes as long as there are lines: once for each of 8,000 would take minutes.
void info_list::catch_up() {
  const auto begin = std::chrono::steady_clock::now();
  if (std::exchange(is_wider_, false)) fit_column();
  if (std::exchange(selects_last_, false) && !is_empty()) {
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false); // the user may be reading elsewhere
    setCurrentIndex(lines_.index(lines_.rowCount() - 1));
    setAutoScroll(scrolls);
  }
  if (follows_) show_newest();
  setUpdatesEnabled(true);
  constexpr int share = 9; // at most a tenth of the time is spent here
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
  catch_up_soon_.setInterval(std::max(catch_up_milliseconds, share * static_cast<int>(took.count())));
}

// From its first character, even after a longer line was scrolled to its end.
void info_list::show_newest() {
  scrollToBottom();
  horizontalScrollBar()->setValue(0);
}

void info_list::select_last() {
  selects_last_ = true;
  catch_up_later();
}

void info_list::clear() {
  lines_.clear();
  longest_ = 0;
  follows_ = true;
  fit_column();
}

void info_list::wrap_lines(bool wanted) {
  setWordWrap(wanted);
  setUniformRowHeights(!wanted);
  fit_column();
  if (follows_) show_newest();
}

// A long line is read by scrolling or wrapped, not cut.
void info_list::fit_column() {
  const int wide = std::max({scaled(column_width, *this), longest_, viewport()->width()});
  setColumnWidth(0, wordWrap() ? viewport()->width() : wide);
  if (wordWrap()) scheduleDelayedItemsLayout(); // the lines have other heights
}

void info_list::resizeEvent(QResizeEvent* event) {
  QTreeView::resizeEvent(event);
  fit_column();
  if (follows_) show_newest();
}

// Only scrolling by the user counts; the end also moves when lines arrive or the list shrinks.
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
  for (const QModelIndex& row : rows) texts << row.data(info_lines::whole_text).toString();
  if (!texts.isEmpty()) QApplication::clipboard()->setText(texts.join('\n'));
}

} // namespace vesk
