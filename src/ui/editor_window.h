// The window of every editor that consists of panels: grids with their labels, buttons, charts and status lines.
#pragma once

#include "charts/graph_form.h"
#include "editors/editor.h"

#include <QDialog>
#include <memory>
#include <vector>

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

private:
  // One panel's widgets.
  struct panel_widgets {
    editor_panel* panel;
    QLabel* label;
    grid_view* grid;
    QLabel* status;
    QLabel* deferred_note; // null for panels without a series, as are the next three
    QPushButton* keep_points;
    chart_view* chart;
    std::unique_ptr<TGraphForm> graph;
  };

  QWidget* make_panel(editor_panel& panel);
  void add_buttons(QBoxLayout& row, editor_panel& panel, grid_view& grid);
  void add_menu(panel_widgets& widgets);
  void run(const std::function<void()>& command); // after taking what is being typed
  panel_widgets& widgets_of(const editor_panel& panel);

  editor& form_;
  QComboBox* choice_ = nullptr;
  QSplitter* panels_;
  std::vector<std::unique_ptr<panel_widgets>> widgets_;
  QLabel* message_;
  QPushButton* undo_;
  QPushButton* redo_;
};

} // namespace vesk
