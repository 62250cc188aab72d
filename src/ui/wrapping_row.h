// A row of controls that goes on in a second line where the window is too narrow for one.
#pragma once

#include <QLayout>
#include <QList>

namespace vesk {

// Takes its items from left to right at their preferred sizes, with the style's usual distance between buttons. Owns
// the items, as every layout of the toolkit does.
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
  int lay_out(const QRect& area, bool move) const; // the height that it takes

  QList<QLayoutItem*> items_;
};

} // namespace vesk
