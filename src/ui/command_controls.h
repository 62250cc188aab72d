// The menus and the tool bar of the main window, built from the command tables.
#pragma once

#include "app/commands.h"

#include <QAction>
#include <QHash>
#include <QPointer>
#include <QString>
#include <functional>
#include <string>

class QMainWindow;
class QMenu;
class QMenuBar;
class QToolBar;

namespace vesk {

class command_controls final {
public:
  // Creates all controls of `window`, which owns them and first has the short menu. Each calls its handler of `form`;
  // a document of the documentation menu calls `open_document` with its caption.
  command_controls(QMainWindow& window, TPreveskMainForm& form, std::function<void(const std::string&)> open_document);

  // Enables the commands that can be used now, and makes the main menu the window's menu.
  void set_commands(const command_conditions& now);
  void show_run_face(bool running);
  void show_administration_menu(bool visible);
  void add_document(const std::string& caption);
  void show_recent_files(const std::vector<std::string>& names);

private:
  QAction* action_of(std::string_view name) const { return actions_.value(key(name)); }
  QMenuBar* make_menu(std::span<const menu_row> rows);
  void make_tool_bar();
  void show_step(std::string_view name, const step_words& words);
  QAction* make_action(std::string_view name, const QString& text);
  static QString key(std::string_view name) { return QString::fromLatin1(name.data(), qsizetype(name.size())); }

  QMainWindow& window_;
  TPreveskMainForm& form_;
  const std::function<void(const std::string&)> open_document_;
  QHash<QString, QPointer<QAction>> actions_; // by the control's name; a menu's is the one that opens it
  QMenu* documentation_ = nullptr;
  QMenu* recent_ = nullptr;
  QMenuBar* PreveskMainMenu = nullptr;
  bool carries_main_menu_ = false;
  bool shows_running_face_ = false;
};

} // namespace vesk
