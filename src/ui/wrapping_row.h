// A row of controls that wraps in a narrow window.
#pragma once

#include <QLayout>
#include <QList>
#include <initializer_list>

namespace vesk {

// Places its items from left to right at their preferred sizes, or at the window's width if that is less, with the
// style's usual button spacing. Owns the items, as every Qt layout does.
class wrapping_row final : public QLayout {
public:
  explicit wrapping_row(QWidget* parent);
  ~wrapping_row() override;

  void addItem(QLayoutItem* item) override;
  int count() const override;
  QLayoutItem* itemAt(int index) const override;
  QLayoutItem* takeAt(int index) override;

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QSize sizeHint() const override;    // all in one line
  QSize minimumSize() const override; // the widest item
  Qt::Orientations expandingDirections() const override { return {}; }
  void setGeometry(const QRect& area) override;

private:
  int lay_out(const QRect& area, bool move) const; // returns the height it takes

  QList<QLayoutItem*> items_;
};

// A widget with these in one such row. Labels are as high as the fields beside them.
QWidget* in_wrapping_row(std::initializer_list<QWidget*> widgets);

} // namespace vesk
