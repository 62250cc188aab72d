#include "ui/cell_delegate.h"

#include "ui/grid_model.h"
#include "ui/item_model.h"
#include "ui/item_picker.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <utility>

namespace vesk {

namespace {

constexpr int longest_entry = 5000; // beyond the limit of any cell, so that the form refuses a long text with a reason

cell_kind kind_of(const QModelIndex& index) {
  return static_cast<cell_kind>(index.data(grid_model::cell_kind_role).toInt());
}

constexpr std::size_t most_items_of_combo = 20; // numbers of longer lists need a line to type in
constexpr const char* chosen = "chosen";        // property of a combo: the user has chosen an item
constexpr int items_to_fit = 200, widest_list = 420;

std::shared_ptr<const item_list> items_of(const QModelIndex& index) {
  const auto* model = static_cast<const grid_model*>(index.model());
  return model->table().content().columns()[static_cast<std::size_t>(index.column())].type.items;
}

// Letters go to the open list, which finds the item that starts with all of them. The closed box would take the first
// letter for itself.
class item_combo final : public QComboBox {
public:
  using QComboBox::QComboBox;

protected:
  void keyPressEvent(QKeyEvent* event) override {
    const QString text = event->text();
    if (isEditable() || text.isEmpty() || !text.front().isPrint() || text == " ")
      return QComboBox::keyPressEvent(event);
    showPopup();
    QCoreApplication::sendEvent(view(), event);
  }
};

// The list is as wide as its items, which may be wider than the cell. Qt would measure all of them.
QComboBox* make_combo(QWidget* parent, std::shared_ptr<const item_list> items) {
  auto* combo = new item_combo(parent);
  combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  auto* model = new item_model(std::move(items), combo);
  combo->setModel(model);
  auto* list = qobject_cast<QListView*>(combo->view());
  list->setUniformItemSizes(true);
  int width = 0;
  for (int i = 0; i < std::min(model->rowCount(), items_to_fit); ++i)
    width = std::max(width, combo->fontMetrics().horizontalAdvance(model->index(i).data().toString()));
  const int margin = list->verticalScrollBar()->sizeHint().width() + scaled(12, *combo);
  list->setMinimumWidth(std::min(width + margin, scaled(widest_list, *combo)));
  return combo;
}

} // namespace

QWidget* cell_delegate::createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex& index) const {
  const QString name = index.model()->headerData(index.column(), Qt::Horizontal).toString().replace('\n', ' ');
  if (kind_of(index) == cell_kind::combo) {
    std::shared_ptr<const item_list> items = items_of(index);
    if (items->size() > most_items_of_combo || items->has_short_texts())
      return make_picker(parent, name, std::move(items));
    const bool takes_other_texts = items->takes_other_texts();
    QComboBox* combo = make_combo(parent, std::move(items));
    combo->setAccessibleName(name);
    connect(combo, &QComboBox::activated, this, [this, combo] {
      combo->setProperty(chosen, true);
      emit const_cast<cell_delegate*>(this)->commitData(combo);
      emit const_cast<cell_delegate*>(this)->closeEditor(combo);
    });
    if (takes_other_texts) {
      combo->setEditable(true);
      combo->setInsertPolicy(QComboBox::NoInsert);
    } else {
      QTimer::singleShot(0, combo, [combo] {
        if (!combo->view()->isVisible()) combo->showPopup();
      });
    }
    return combo;
  }
  auto* line = new QLineEdit(parent);
  line->setAccessibleName(name);
  line->setMaxLength(longest_entry);
  line->setFrame(false);
  return line;
}

QWidget* cell_delegate::make_picker(QWidget* parent, const QString& name,
                                    std::shared_ptr<const item_list> items) const {
  auto* picker = new item_picker(parent, std::move(items));
  picker->setAccessibleName(name);
  picker->setFrame(false);
  connect(picker, &item_picker::chosen, this, [this, picker] {
    emit const_cast<cell_delegate*>(this)->commitData(picker);
    emit const_cast<cell_delegate*>(this)->closeEditor(picker);
  });
  return picker;
}

void cell_delegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
  const QString text = index.data(Qt::EditRole).toString();
  if (auto* combo = qobject_cast<QComboBox*>(editor)) {
    const auto item = items_of(index)->find(stored(text));
    if (combo->isEditable())
      combo->setEditText(text);
    else
      combo->setCurrentIndex(item ? static_cast<int>(*item) : -1);
  } else if (auto* line = qobject_cast<QLineEdit*>(editor); line->text() != text) {
    line->setText(text);
  }
}

void cell_delegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const {
  if (auto* combo = qobject_cast<QComboBox*>(editor)) {
    const int role = combo->property(chosen).toBool() ? int{grid_model::choice_role} : int{Qt::EditRole};
    if (combo->currentIndex() >= 0 || combo->isEditable()) model->setData(index, combo->currentText(), role);
  } else if (auto* line = qobject_cast<QLineEdit*>(editor)) {
    // Unchanged text is not an entry: the cell may show it truncated.
    if (line->text() != index.data(Qt::EditRole).toString()) model->setData(index, line->text(), Qt::EditRole);
  }
}

// A refused entry is usually in the active cell; it is red, not in the colour of a selection.
void cell_delegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  if (static_cast<const grid_model*>(index.model())->is_refused(index)) option->state &= ~QStyle::State_Selected;
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

// A click anywhere in the cell, or Space, toggles its check box.
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

// Undo and Redo apply to the text being typed, if any, then to the dialog.
bool is_for_the_dialog(const QLineEdit& line, QKeyEvent& keys) {
  return (keys.matches(QKeySequence::Undo) && !line.isUndoAvailable()) ||
         (keys.matches(QKeySequence::Redo) && !line.isRedoAvailable());
}

} // namespace

// The wheel scrolls the grid unless the combo's list is open.
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
