#include "ui/cell_delegate.h"

#include "ui/grid_model.h"
#include "ui/texts.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QTimer>

namespace vesk {

namespace {

constexpr int longest_entry = 5000; // the form refuses a text that is too long for the cell, with a reason

cell_kind kind_of(const QModelIndex& index) {
  return static_cast<cell_kind>(index.data(grid_model::cell_kind_role).toInt());
}

const item_list& items_of(const QModelIndex& index) {
  const auto* model = static_cast<const grid_model*>(index.model());
  return *model->table().content().columns()[static_cast<std::size_t>(index.column())].type.items;
}

} // namespace

QWidget* cell_delegate::createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex& index) const {
  const QString name = index.model()->headerData(index.column(), Qt::Horizontal).toString().replace('\n', ' ');
  if (kind_of(index) == cell_kind::combo) {
    auto* combo = new QComboBox(parent);
    combo->setAccessibleName(name);
    const item_list& items = items_of(index);
    for (std::size_t i = 0; i < items.size(); ++i) combo->addItem(shown(items.text(i)));
    connect(combo, &QComboBox::activated, this, [this, combo] {
      emit const_cast<cell_delegate*>(this)->commitData(combo);
      emit const_cast<cell_delegate*>(this)->closeEditor(combo);
    });
    QTimer::singleShot(0, combo, &QComboBox::showPopup);
    return combo;
  }
  auto* line = new QLineEdit(parent);
  line->setAccessibleName(name);
  line->setMaxLength(longest_entry);
  line->setFrame(false);
  return line;
}

void cell_delegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
  const QString text = index.data(Qt::EditRole).toString();
  if (auto* combo = qobject_cast<QComboBox*>(editor))
    combo->setCurrentIndex(combo->findText(text));
  else if (auto* line = qobject_cast<QLineEdit*>(editor); line->text() != text)
    line->setText(text);
}

void cell_delegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const {
  if (auto* combo = qobject_cast<QComboBox*>(editor)) {
    if (combo->currentIndex() >= 0) model->setData(index, combo->currentText(), Qt::EditRole);
  } else if (auto* line = qobject_cast<QLineEdit*>(editor)) {
    // Unchanged text is not an entry: it may be longer than what the cell shows.
    if (line->text() != index.data(Qt::EditRole).toString()) model->setData(index, line->text(), Qt::EditRole);
  }
}

void cell_delegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
  if (kind_of(index) != cell_kind::check) return QStyledItemDelegate::paint(painter, option, index);
  QStyleOptionViewItem cell(option);
  initStyleOption(&cell, index);
  cell.features &= ~QStyleOptionViewItem::HasCheckIndicator;
  QStyle* style = cell.widget ? cell.widget->style() : QApplication::style();
  style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
  const QVariant checked = index.data(Qt::CheckStateRole);
  if (!checked.isValid()) return;
  QStyleOptionButton box;
  box.state = option.state & ~(QStyle::State_HasFocus | QStyle::State_MouseOver);
  box.state |= checked.toInt() == Qt::Checked ? QStyle::State_On : QStyle::State_Off;
  const QSize size = style->subElementRect(QStyle::SE_CheckBoxIndicator, &box, cell.widget).size();
  box.rect = QStyle::alignedRect(option.direction, Qt::AlignCenter, size, option.rect);
  box.palette = option.palette;
  style->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, painter, cell.widget);
}

// A click anywhere in the cell, or Space, is a click on its check box.
bool cell_delegate::editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                                const QModelIndex& index) {
  if (kind_of(index) != cell_kind::check) return QStyledItemDelegate::editorEvent(event, model, option, index);
  if (!(model->flags(index) & Qt::ItemIsUserCheckable)) return false;
  const bool space = event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space;
  const bool click = event->type() == QEvent::MouseButtonRelease &&
                     static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton &&
                     option.rect.contains(static_cast<QMouseEvent*>(event)->position().toPoint());
  return (space || click) && model->setData(index, {}, Qt::CheckStateRole);
}

namespace {

// Undo and Redo belong to what is typed as long as there is some of it, then to the dialog.
bool is_for_the_dialog(const QLineEdit& line, QKeyEvent& keys) {
  return (keys.matches(QKeySequence::Undo) && !line.isUndoAvailable()) ||
         (keys.matches(QKeySequence::Redo) && !line.isRedoAvailable());
}

} // namespace

// The wheel belongs to the grid unless the combo's list is open.
bool cell_delegate::eventFilter(QObject* editor, QEvent* event) {
  if (const auto* line = qobject_cast<QLineEdit*>(editor); line && event->type() == QEvent::ShortcutOverride)
    if (is_for_the_dialog(*line, *static_cast<QKeyEvent*>(event))) {
      event->ignore();
      return true;
    }
  if (event->type() == QEvent::Wheel && qobject_cast<QComboBox*>(editor)) {
    event->ignore();
    return true;
  }
  return QStyledItemDelegate::eventFilter(editor, event);
}

} // namespace vesk
