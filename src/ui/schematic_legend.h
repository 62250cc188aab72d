// The strip below a network's picture: what its signs mean, and the scale of its colours.
#pragma once

#include "ui/schematic_view.h"

#include <QPointF>
#include <QRectF>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace vesk {

class schematic_legend {
public:
  // Laid out for the view's width and font; in a narrow view it takes several lines. `shown`: null for nothing. All
  // must outlive the legend.
  schematic_legend(const drawn_network* shown, const std::optional<schematic_view::colouring>& colouring,
                   const QWidget& view);

  double height() const { return height_; }
  void paint(QPainter& painter, QPointF corner) const; // upper left

private:
  struct entry {
    QString text;
    double sign_width;
    std::function<void(QPainter& painter, QPointF left)> draw_sign;
    QPointF place = {}; // left, in the middle of its line
  };
  void add_entries(const drawn_network& shown);
  void lay_out();
  double scale_width() const;
  void paint_scale(QPainter& painter, const QRectF& place) const;

  const std::optional<schematic_view::colouring>& colouring_;
  const QWidget& view_;
  std::vector<entry> entries_;
  QRectF scale_; // of the colours; empty: none
  double height_ = 0;
};

} // namespace vesk
