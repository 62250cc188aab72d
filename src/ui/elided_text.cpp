#include "ui/elided_text.h"

#include "ui/texts.h"

#include <QEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QToolTip>
#include <algorithm>

namespace vesk {

namespace {

constexpr int fewest_letters = 6; // kept of a truncated text
constexpr int gap = 6;            // between picture and text, and at both ends

} // namespace

elided_button::elided_button(const QString& text) : whole_(text) {
  setFlat(true);
  setAccessibleName(text);
  setCursor(Qt::PointingHandCursor);
  setFocusPolicy(Qt::TabFocus);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize elided_button::sizeHint() const {
  const int picture = icon().isNull() ? 0 : iconSize().width() + gap;
  return {picture + fontMetrics().horizontalAdvance(whole_) + 2 * gap,
          std::max(fontMetrics().height(), icon().isNull() ? 0 : iconSize().height()) + gap};
}

QSize elided_button::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * fewest_letters + iconSize().width() + 2 * gap, sizeHint().height()};
}

void elided_button::paintEvent(QPaintEvent*) {
  QStylePainter painter(this);
  QStyleOptionButton option;
  initStyleOption(&option);
  if (underMouse() || isDown()) { // only then does the style draw a flat button
    option.features &= ~QStyleOptionButton::Flat;
    painter.drawControl(QStyle::CE_PushButtonBevel, option);
  }
  if (hasFocus()) {
    QStyleOptionFocusRect focus;
    focus.QStyleOption::operator=(option);
    focus.rect = rect().adjusted(1, 1, -1, -1);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
  }
  QRect place = rect().adjusted(gap, 0, -gap, 0);
  if (!icon().isNull()) {
    const QRect picture(place.left(), place.center().y() - iconSize().height() / 2 + 1, iconSize().width(),
                        iconSize().height());
    icon().paint(&painter, picture, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
    place.setLeft(picture.right() + gap);
  }
  painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
  painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                   fontMetrics().elidedText(whole_, Qt::ElideMiddle, place.width()));
}

elided_label::elided_label(QWidget* parent, Qt::TextElideMode mode) : QLabel(parent), mode_(mode) {
  setTextFormat(Qt::PlainText);
}

QSize elided_label::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * fewest_letters, QLabel::minimumSizeHint().height()};
}

bool elided_label::is_cut() const {
  return fontMetrics().horizontalAdvance(text()) > contentsRect().width();
}

void elided_label::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, foregroundRole()));
  painter.drawText(contentsRect(), static_cast<int>(alignment() | Qt::TextSingleLine),
                   fontMetrics().elidedText(text(), mode_, contentsRect().width()));
}

bool elided_label::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip || !toolTip().isEmpty()) return QLabel::event(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  QToolTip::showText(help->globalPos(), is_cut() ? tool_tip(text()) : QString(), this);
  return true;
}

} // namespace vesk
