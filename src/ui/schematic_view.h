// The picture of a network: boxes and arrows that can be zoomed, panned and selected by mouse and keyboard. With
// values, a scale colours the boxes.
#pragma once

#include "network/schematic.h"

#include <QWidget>
#include <memory>
#include <optional>
#include <vector>

class QPaintDevice;
class QPainter;

namespace vesk {

struct drawn_network {
  network_graph network;
  schematic picture;
};

class schematic_view final : public QWidget {
  Q_OBJECT

public:
  explicit schematic_view(QWidget* parent = nullptr);

  // Null: nothing yet. A new picture of the same shape keeps the visible part.
  void show_network(std::shared_ptr<const drawn_network> shown);
  const std::shared_ptr<const drawn_network>& network() const { return shown_; }
  void set_note(const QString& note); // in the middle of the empty view: "Laying out 5000 segments..."

  // Values that colour the boxes, by segment; not-a-number for none. The scale runs from minimum to maximum.
  struct colouring {
    std::vector<double> values;
    double least = 0, greatest = 1;
    QString title; // of the scale, with the unit
  };
  void set_colouring(std::optional<colouring> wanted);

  void select(std::optional<std::size_t> segment); // and scrolls to it
  std::optional<std::size_t> selected() const { return selected_; }
  void set_way(std::vector<segment_number> segments); // highlighted, with the lines between them; empty: none

  // Centre of its box, in widget coordinates; nothing: no box.
  std::optional<QPointF> place_of(std::size_t segment) const;

  void zoom_in() { zoom(1.25, rect().center()); }
  void zoom_out() { zoom(0.8, rect().center()); }
  void fit();

  // The visible part: png, svg, pdf, or csv with the segments and their values.
  bool save(const QString& file_name);
  bool paint_on(QPaintDevice& device, const QRect& target);

  QSize sizeHint() const override;

signals:
  // By a click, Return or Space, with or without Ctrl.
  void segment_chosen(std::size_t segment, bool with_control);

protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool event(QEvent* event) override;

private:
  void zoom(double factor, QPointF fixed);
  void move_selection(int dx, int dy);
  void bring_into_sight(std::size_t box);
  std::optional<std::size_t> box_of(std::size_t segment) const;
  std::optional<std::size_t> segment_at(QPointF place) const;
  std::optional<double> value_of(std::size_t segment) const;
  void describe();
  QRectF picture_area() const; // without the strip of the legend

  void paint_all(QPainter& painter);
  void paint_picture(QPainter& painter);
  void paint_line(QPainter& painter, const schematic_line& line, bool on_way);
  void paint_box(QPainter& painter, const schematic_box& box, bool on_way);
  void paint_marks(QPainter& painter, const schematic_box& box);

  std::shared_ptr<const drawn_network> shown_;
  std::optional<colouring> colouring_;
  std::vector<segment_number> way_;
  std::vector<bool> is_on_way_; // by segment
  std::optional<std::size_t> selected_;
  QString note_;
  double scale_ = 1;      // pixels per point of the picture
  QPointF corner_;        // of the picture, in widget coordinates
  bool is_fitted_ = true; // follows the widget's size
  QPointF pressed_at_, corner_then_;
  bool is_dragging_ = false, is_pressed_ = false;
};

} // namespace vesk
