#include "ui/results/segment_box.h"

#include "ui/measures.h"
#include "ui/texts.h"
#include "ui/wheel_guard.h"

#include <QSignalBlocker>
#include <algorithm>
#include <limits>

namespace vesk {

namespace {

// The number at the start of a text; 0 without one.
int leading_number(const QString& text) {
  qsizetype digits = 0;
  while (digits < text.size() && text[digits].isDigit()) ++digits;
  return text.left(digits).toInt();
}

} // namespace

segment_box::segment_box(const QString& name, const QString& object_name) {
  setObjectName(object_name);
  setAccessibleName(name);
  setKeyboardTracking(false); // not after each digit
  setRange(1, 1);
  setMinimumWidth(scaled(170, *this));
  ignore_wheel(*this);
  connect(this, &QSpinBox::textChanged, this, [this] { name_changed(); });
}

void segment_box::name_changed() {
  setToolTip(tool_tip(text()));
  updateGeometry();
}

// Qt leaves room for 18 letters.
QSize segment_box::sizeHint() const {
  const QSize usual = QSpinBox::sizeHint();
  const int arrows = scaled(40, *this), most = std::max(usual.width(), scaled(320, *this));
  return {std::clamp(fontMetrics().horizontalAdvance(text()) + arrows, usual.width(), most), usual.height()};
}

void segment_box::set_network(std::shared_ptr<const network_graph> network) {
  const QSignalBlocker quiet(this);
  network_ = std::move(network);
  const std::size_t count = network_ ? network_->segments.size() : 0;
  setEnabled(count > 0);
  setRange(1, static_cast<int>(std::clamp<std::size_t>(count, 1, std::numeric_limits<int>::max())));
  name_changed();
}

void segment_box::show_segment(segment_number segment) {
  const QSignalBlocker quiet(this);
  setValue(static_cast<int>(segment) + 1);
  name_changed();
}

QString segment_box::textFromValue(int value) const {
  const auto segment = static_cast<std::size_t>(value - 1);
  if (!network_ || segment >= network_->segments.size()) return QString::number(value);
  return shown(segment_label(*network_, segment));
}

int segment_box::valueFromText(const QString& text) const {
  return leading_number(text.trimmed());
}

QValidator::State segment_box::validate(QString& text, int&) const {
  const QString entered = text.trimmed();
  if (entered.isEmpty()) return QValidator::Intermediate;
  const int number = leading_number(entered);
  return number >= minimum() && number <= maximum() ? QValidator::Acceptable : QValidator::Intermediate;
}

} // namespace vesk
