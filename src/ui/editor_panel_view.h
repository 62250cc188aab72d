// One panel of an editor's window: a grid with its label, menu and status line, and for a series its chart.
#pragma once

#include "charts/graph_form.h"
#include "editors/editor.h"

#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

class QAction;
class QBoxLayout;
class QKeySequence;
class QLabel;
class QPushButton;
class QSplitter;

namespace vesk {

class chart_view;
class grid_view;

class editor_panel_view final : public QWidget {
  Q_OBJECT

public:
  // Executes a command after committing the open entry.
  using command_runner = std::function<void(const std::function<void()>&)>;

  // `name`: accessible name of a grid without a label. `buttons` go below the grid; null: they are elsewhere.
  editor_panel_view(editor& form, editor_panel& panel, const QString& name, QWidget* buttons, command_runner run);
  ~editor_panel_view() override;

  editor_panel& panel() { return panel_; }
  grid_view& grid() { return *grid_; }
  void mark_as_active(bool active); // the grid that the buttons act on
  void take_first_size(int width);  // the grid gets the width of its columns, the chart the rest

  void texts_changed();
  void series_changed();

signals:
  void entered(); // the grid has received the focus

protected:
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void make_chart(QBoxLayout& column);
  void add_deferred_note(QBoxLayout& column);
  void add_source_note(QBoxLayout& column);
  void add_menu();
  QAction* add_action(const char* text, const QKeySequence& keys, const std::function<void()>& command);
  void show_selection();
  void feed_chart();
  void make_room_for_grid();

  editor& form_;
  editor_panel& panel_;
  const QString name_;
  command_runner run_;
  QLabel* label_;
  grid_view* grid_;
  QLabel* status_;
  QAction* back_to_default_;
  bool shows_block_ = false; // the status is about the selected cells
  bool is_active_ = false, chart_is_old_ = false;

  // Null for panels without a series.
  QLabel* deferred_note_ = nullptr;
  QPushButton* keep_points_ = nullptr;
  QLabel* source_note_ = nullptr; // the query's source is newer
  QPushButton* refresh_button_ = nullptr;
  QAction* refresh_ = nullptr;
  QSplitter* beside_ = nullptr; // grid and chart
  bool moved_by_hand_ = false;  // the bar between them was dragged
  chart_view* chart_ = nullptr;
  std::unique_ptr<TGraphForm> graph_;
  std::optional<series_ref> charted_;
};

} // namespace vesk
