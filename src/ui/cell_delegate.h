// How cells are painted and edited: check boxes in the middle of their cell, combos, and lines of text.
#pragma once

#include "charts/item_list.h"

#include <QStyledItemDelegate>
#include <memory>

namespace vesk {

class cell_delegate final : public QStyledItemDelegate {
  Q_OBJECT

public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  void setEditorData(QWidget* editor, const QModelIndex& index) const override;
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
  QWidget* make_picker(QWidget* parent, const QString& name, std::shared_ptr<const item_list> items) const;
  bool eventFilter(QObject* editor, QEvent* event) override;
};

} // namespace vesk
