#include "ui/command_controls.h"

#include "app/main_form.h"
#include "ui/guard.h"
#include "ui/images.h"
#include "ui/texts.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>
#include <array>

namespace vesk {

command_controls::command_controls(QMainWindow& window, TPreveskMainForm& form,
                                   std::function<void(const std::string&)> open_document)
    : window_(window), form_(form), open_document_(std::move(open_document)) {
  PreveskMainMenu = make_menu(main_menu());
  PreveskMainMenu->setObjectName("PreveskMainMenu");
  PreveskMainMenu->hide();
  QMenuBar* FennMainMenu = make_menu(fenn_menu());
  FennMainMenu->setObjectName("FennMainMenu");
  window_.setMenuBar(FennMainMenu);
  make_tool_bar();
}

QAction* command_controls::make_action(std::string_view name, const QString& text) {
  auto* action = new QAction(text, &window_);
  action->setObjectName(key(name));
  actions_.insert(key(name), action);
  if (const auto handler = find_command(name).handler)
    QObject::connect(action, &QAction::triggered, &window_,
                     [this, handler] { attempt([this, handler] { (form_.*handler)(); }); });
  return action;
}

QMenuBar* command_controls::make_menu(std::span<const menu_row> rows) {
  auto* bar = new QMenuBar(&window_);
  std::array<QMenu*, 4> open{}; // the menus that contain the row, by depth
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const menu_row& row = rows[i];
    QMenu* const parent = row.depth > 0 ? open.at(static_cast<std::size_t>(row.depth) - 1) : nullptr;
    const bool is_filled_later = row.name == "DocumentationItem" || row.name == "RecentFilesItem";
    const bool has_items = i + 1 < rows.size() && rows[i + 1].depth > row.depth;
    if (row.caption == "-") {
      parent->addSeparator();
    } else if (has_items || is_filled_later) {
      QMenu* menu = parent ? parent->addMenu(shown(row.caption)) : bar->addMenu(shown(row.caption));
      menu->setObjectName(key(row.name));
      menu->setToolTipsVisible(row.name == "EditItem"); // in the other menus they would repeat the captions
      actions_.insert(key(row.name), menu->menuAction());
      open.at(static_cast<std::size_t>(row.depth)) = menu;
      if (row.name == "DocumentationItem") documentation_ = menu;
      if (row.name == "RecentFilesItem") recent_ = menu;
    } else {
      QAction* action = make_action(row.name, shown(row.caption));
      if (!row.shortcut.empty()) action->setShortcut(QKeySequence(key(row.shortcut)));
      parent->addAction(action);
    }
  }
  return bar;
}

void command_controls::make_tool_bar() {
  QToolBar* bar = window_.addToolBar("Commands");
  bar->setObjectName("ToolBar");
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  for (const tool_row& row : tool_bar()) {
    if (row.name.empty()) {
      bar->addSeparator();
      continue;
    }
    QAction* action = make_action(row.name, shown(row.hint));
    action->setIcon(tool_image(row.image));
    bar->addAction(action);
    QWidget* button = bar->widgetForAction(action);
    button->setObjectName(key(row.name));
    button->setFocusPolicy(Qt::TabFocus); // some commands can be reached nowhere else
    button->setAccessibleName(action->text());
  }
}

void command_controls::set_commands(const command_conditions& now) {
  if (!carries_main_menu_) {
    window_.setMenuBar(PreveskMainMenu);
    PreveskMainMenu->show();
    carries_main_menu_ = true;
  }
  for (const command_row& row : command_table())
    if (row.condition != command_condition::unmanaged)
      if (QAction* action = action_of(row.name)) action->setEnabled(is_enabled(row.condition, now));
  show_step("UndoItem", undo_words(now));
  show_step("RedoItem", redo_words(now));
  // Only a model run changes the button's icon. An empty tip makes Qt use the button's text.
  const bool other_job = now.running && !shows_running_face_;
  action_of("RunModelButton")->setToolTip(other_job ? "Cancel the running job" : QString());
}

void command_controls::show_step(std::string_view name, const step_words& words) {
  QAction* action = action_of(name);
  action->setText(shown(words.caption));
  action->setToolTip(shown(words.tool_tip));
}

void command_controls::show_run_face(bool running) {
  shows_running_face_ = running;
  const run_face& face = face_of_run_controls(running);
  QAction* button = action_of("RunModelButton");
  button->setIcon(tool_image(face.image));
  button->setText(shown(face.hint));
  if (auto* widget = window_.findChild<QToolButton*>("RunModelButton")) widget->setAccessibleName(button->text());
  action_of("ExecuteModelItem")->setText(shown(face.execute));
  action_of("FennRunModelItem")->setText(shown(face.fenn));
}

void command_controls::show_administration_menu(bool visible) {
  action_of("AdministrationItem")->setVisible(visible);
}

void command_controls::show_recent_files(const std::vector<std::string>& names) {
  recent_->clear();
  if (names.empty()) return recent_->addAction("No files yet")->setEnabled(false);
  const auto add = [this](const QString& text, const std::function<void()>& work) {
    QObject::connect(
        recent_->addAction(text), &QAction::triggered, &window_, [work] { attempt(work); },
        Qt::QueuedConnection); // opening a file refills this menu
  };
  int number = 0;
  for (const std::string& name : names)
    add(QString("&%1  ").arg(++number) + without_mnemonics(shown(name)), [this, name] { form_.open_recent(name); });
  recent_->addSeparator();
  add("&Clear the list", [this] {
    form_.settings.clear_recent_files();
    form_.recent_files_changed();
  });
}

void command_controls::add_document(const std::string& caption) {
  QAction* action = documentation_->addAction(without_mnemonics(shown(caption)));
  QObject::connect(action, &QAction::triggered, &window_,
                   [this, caption] { attempt([this, &caption] { open_document_(caption); }); });
}

} // namespace vesk
