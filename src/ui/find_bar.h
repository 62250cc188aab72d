// The search line at the bottom of an editor's window: Ctrl+F shows it, F3 finds the next name.
#pragma once

#include "editors/editor.h"

#include <QWidget>
#include <functional>

class QAction;
class QLineEdit;

namespace vesk {

class find_bar final : public QWidget {
public:
  using runner = std::function<void(const std::function<void()>&)>; // runs a command of the window

  // `panel_with_focus`: the panel whose grid has the focus, or null. The shortcuts are added to `window`.
  find_bar(editor& form, runner run, std::function<editor_panel*()> panel_with_focus, QWidget& window);

  QAction* action() { return open_; } // shows the line; for menus

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  void open();
  void find();
  void close_line();

  editor& form_;
  const runner run_;
  const std::function<editor_panel*()> panel_with_focus_;
  QAction* open_;
  QLineEdit* wanted_;
  editor_panel* searched_ = nullptr; // the panel that had the focus last
  QWidget* came_from_ = nullptr;     // gets the focus back; a widget of the window, which outlives the line
};

} // namespace vesk
