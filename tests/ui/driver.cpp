#include "driver.h"

#include "app/catalogue_source.h"
#include "dataset/vki_file.h"
#include "engine/stack_thread.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <algorithm>

namespace vesk {

bool wait_for(const std::function<bool()>& done, int milliseconds) {
  return QTest::qWaitFor(done, milliseconds);
}

void with_dialog(const std::function<void()>& work, const std::function<bool(QWidget*)>& answer) {
  constexpr int patience = 500; // ticks
  int ticks = 0;
  bool answered = false;
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal || !modal->isVisible()) return;
    if (answered || ++ticks > patience) {
      if (++ticks > patience) modal->close();
      return;
    }
    answered = answer(modal);
  });
  watch.start(10);
  work();
  EXPECT_TRUE(answered) << "no dialog came, or not the one that was expected";
}

bool choose_file(QWidget* dialog, const QString& name) {
  auto* files = qobject_cast<QFileDialog*>(dialog);
  if (!files) return false;
  auto* edit = files->findChild<QLineEdit*>("fileNameEdit");
  edit->setText(name);
  QTest::keyClick(edit, Qt::Key_Return);
  return true;
}

bool press(QWidget* window, const QString& text) {
  for (QAbstractButton* button : window->findChildren<QAbstractButton*>())
    if (button->text().remove('&') == text && button->isVisible() && button->isEnabled()) {
      QTest::mouseClick(button, Qt::LeftButton);
      return true;
    }
  return false;
}

void take_picture(QWidget* window, const QString& name) {
  QTest::qWait(50); // paint pending updates
  keep_picture(window, name);
}

void keep_picture(QWidget* window, const QString& name) {
  QDir().mkpath(SCREENSHOTS);
  EXPECT_TRUE(window->grab().save(QString(SCREENSHOTS "/%1.png").arg(name)));
}

program::options running_program::options_in(const temporary_folder& folder, std::vector<std::string> arguments,
                                             const std::string& settings) {
  folder.write("settings.ini", "[SOFTWARE\\TALMO\\VESK\\7.0]\nDatabaseDir=" CATALOGUE "/\n" + settings);
  return {std::move(arguments), folder.path / "settings.ini", 0};
}

running_program::running_program(std::vector<std::string> arguments, const std::string& settings)
    : program_(*qApp, options_in(folder_, std::move(arguments), settings)) {
  form().engine_path = ENGINE;
  form().documentation_directory = DOCUMENTS "/";
  EXPECT_TRUE(wait_for([this] { return window().isVisible() && !window().windowTitle().isEmpty(); }));
  window().activateWindow();
  QTest::qWait(20);
}

running_program::~running_program() {
  if (form().active_thread) form().active_thread->Terminate();
  EXPECT_TRUE(wait_for([] { return live_thread_count() == 0; }));
}

void running_program::trigger(const char* command) {
  auto* action = window().findChild<QAction*>(command);
  ASSERT_TRUE(action) << command;
  EXPECT_TRUE(action->isEnabled()) << command;
  action->trigger();
}

std::string difference(const std::string& one, const std::string& other) {
  if (one == other) return {};
  const auto at = static_cast<std::size_t>(std::ranges::mismatch(one, other).in1 - one.begin());
  const std::size_t from = at - std::min<std::size_t>(at, 120);
  return "\"" + one.substr(from, 200) + "\" against \"" + other.substr(std::min(from, other.size()), 200) + "\"";
}

void write_long_sample(const std::string& file) {
  prevesk_dataset_data_type sample(catalogue_source(CATALOGUE).get());
  read_data_file(SAMPLE, sample);
  auto& steps = sample.time_steps.points;
  for (std::size_t i = 0; i < steps.size(); ++i) steps.edit(i).value *= 0.001;
  save_data_file(file, sample);
}

} // namespace vesk
