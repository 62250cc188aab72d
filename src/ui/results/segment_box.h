// A number field for a segment that also shows its name: "5: Halifax".
#pragma once

#include "network/network_graph.h"

#include <QSpinBox>
#include <memory>

namespace vesk {

class segment_box final : public QSpinBox {
public:
  segment_box(const QString& name, const QString& object_name);

  void set_network(std::shared_ptr<const network_graph> network); // null: none
  void show_segment(segment_number segment);
  segment_number segment() const { return static_cast<segment_number>(value() - 1); }

  QSize sizeHint() const override; // with room for the name

protected:
  QString textFromValue(int value) const override;
  int valueFromText(const QString& text) const override;
  QValidator::State validate(QString& text, int& position) const override;

private:
  void name_changed();

  std::shared_ptr<const network_graph> network_;
};

} // namespace vesk
