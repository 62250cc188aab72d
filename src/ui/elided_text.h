// Buttons and labels that end their text in an ellipsis where it does not fit.
#pragma once

#include <QLabel>
#include <QPushButton>

namespace vesk {

// Flat, with the text to the left. The whole text is its accessible name.
class elided_button final : public QPushButton {
public:
  explicit elided_button(const QString& text);
  QSize minimumSizeHint() const override;
  QSize sizeHint() const override;

protected:
  void paintEvent(QPaintEvent* event) override;

private:
  const QString whole_;
};

// One line. `Qt::ElideMiddle` suits paths. The tool tip shows the whole text while it is truncated.
class elided_label final : public QLabel {
public:
  explicit elided_label(QWidget* parent = nullptr, Qt::TextElideMode mode = Qt::ElideRight);
  QSize minimumSizeHint() const override;

protected:
  void paintEvent(QPaintEvent* event) override;
  bool event(QEvent* event) override;

private:
  bool is_cut() const;
  const Qt::TextElideMode mode_;
};

} // namespace vesk
