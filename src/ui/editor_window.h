// The window of every editor that consists of panels: their pages, fields, buttons and messages.
#pragma once

#include "editors/editor.h"

#include <QDialog>
#include <QKeySequence>
#include <cstddef>
#include <functional>
#include <vector>

class QAction;
class QBoxLayout;
class QComboBox;
class QLabel;
class QPushButton;
class QSplitter;
class QTabWidget;

namespace vesk {

class editor_buttons;
class editor_panel_view;
class entry_edit;
class find_bar;
class tree_view;

class editor_window final : public QDialog, public editor_view {
public:
  editor_window(QWidget* parent, editor& shown_editor);
  ~editor_window() override;

  void reload(); // the data set was replaced

  void done(int result) override; // the form can refuse

  // editor_view
  void texts_changed() override;
  void series_changed() override;
  void go_to_panel(editor_panel& panel) override;
  void go_to_refused_field(entry_field& field) override;
  void tree_changed() override;

protected:
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  void make_panels(const std::vector<editor_page>& pages);
  editor_panel_view* make_panel(editor_panel& panel, const QString& name);
  QWidget* make_content(const std::vector<editor_page>& pages);
  QWidget* make_page(const editor_page& page);
  QWidget* make_area(std::size_t panel); // with its label, buttons and status
  QWidget* make_tree(QWidget* area);     // in front of the area
  void make_find_bar(QBoxLayout& column);
  QWidget* make_choice(const editor_choice& choice);
  QWidget* make_fields();
  QWidget* make_common_row();
  QBoxLayout* make_end_row();

  void bind(QAction& action, const QKeySequence& keys, const std::function<void()>& command);
  void run(const std::function<void()>& command); // after committing the open entry
  void take_typed();
  void take_first_size();
  void turn_page(int by);
  void show_choice();
  void show_steps(); // of Undo and Redo
  std::size_t first_panel_in_sight() const;
  editor_panel* panel_with_focus() const; // null: no grid has the focus

  editor& form_;
  QWidget* choice_row_ = nullptr;
  QComboBox* choice_ = nullptr;
  std::vector<entry_edit*> fields_;
  QTabWidget* pages_ = nullptr; // null: a single page
  std::vector<int> page_of_panel_;
  std::vector<editor_panel_view*> panels_;
  std::vector<QSplitter*> splitters_;        // the first part of each has a fixed size, the second gets the rest
  editor_buttons* shared_buttons_ = nullptr; // of the active panel
  std::vector<editor_buttons*> own_buttons_; // of single panels
  tree_view* tree_ = nullptr;                // in front of the first panel; null: none
  QLabel* message_;
  QAction* next_mark_;
  QPushButton* undo_;
  QPushButton* redo_;
  bool has_size_ = false;
};

} // namespace vesk
