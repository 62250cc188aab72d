// The window of every editor that consists of panels: grids with their labels, buttons, charts and status lines.
#pragma once

#include "charts/graph_form.h"
#include "editors/editor.h"

#include <QDialog>
#include <QKeySequence>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QAction;
class QBoxLayout;
class QComboBox;
class QLabel;
class QPushButton;
class QSplitter;

namespace vesk {

class chart_view;
class grid_view;

class editor_window final : public QDialog, public editor_view {
public:
  editor_window(QWidget* parent, editor& shown_editor);
  ~editor_window() override;

  void reload(); // the data set was replaced

  void done(int result) override; // unless the form refuses

  // editor_view
  void texts_changed() override;
  void series_changed() override;
  void go_to_panel(editor_panel& panel) override;

protected:
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  // One panel's widgets.
  struct panel_widgets {
    editor_panel* panel;
    QLabel* label;
    grid_view* grid;
    QLabel* status;
    QAction* back_to_default;
    bool shows_block = false; // the status is about the selected cells
    QLabel* deferred_note;    // null for panels without a series, as are the next five
    QPushButton* keep_points;
    QSplitter* beside; // grid and chart
    chart_view* chart;
    std::unique_ptr<TGraphForm> graph;
    std::optional<series_ref> charted;
  };

  QBoxLayout* make_choice(const editor_choice& choice);
  QWidget* make_panel(editor_panel& panel);
  void make_chart(panel_widgets& widgets, QBoxLayout& column);
  void add_deferred_note(panel_widgets& widgets, QBoxLayout& column);
  void add_buttons(QBoxLayout& row, editor_panel& panel, grid_view& grid);
  void add_menu(panel_widgets& widgets);
  QBoxLayout* make_end_row();
  void bind(QAction& action, QKeySequence keys, const std::function<void()>& command);
  void run(const std::function<void()>& command); // after taking what is being typed
  void take_first_size();
  void show_selection(panel_widgets& widgets);
  void feed_charts();
  panel_widgets& widgets_of(const editor_panel& panel);

  editor& form_;
  QComboBox* choice_ = nullptr;
  QSplitter* panels_;
  std::vector<std::unique_ptr<panel_widgets>> widgets_;
  QLabel* message_;
  QAction* next_mark_;
  QPushButton* undo_;
  QPushButton* redo_;
  bool has_size_ = false, charts_are_old_ = false;
};

} // namespace vesk
