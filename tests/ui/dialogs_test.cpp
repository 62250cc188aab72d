#include "accessible.h"
#include "driver.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QTreeWidget>
#include <map>

namespace vesk {
namespace {

TEST(Dialogs, PreferencesAreTakenOverOnOkOnly) {
  running_program program;
  const auto change = [&](const char* button) {
    with_dialog([&] { program.trigger("PreveskPreferencesItem"); },
                [&](QWidget* dialog) {
                  EXPECT_EQ(dialog->windowTitle(), "Preferences");
                  expect_accessible(dialog);
                  find<QCheckBox>(dialog, "LoggingEnabledCheckBox")->setChecked(true);
                  find<QComboBox>(dialog, "DiagnosticLevelComboBox")->setCurrentText("Moderate");
                  take_picture(dialog, "preferences");
                  find<QSpinBox>(dialog, "UndoMegabytesEdit")->setValue(300);
                  find<QTabWidget>(dialog, "PreferencePages")->setCurrentIndex(1);
                  take_picture(dialog, "preferences_editing");
                  return press(dialog, button);
                });
  };
  change("Cancel");
  EXPECT_FALSE(program.form().logging_enabled());
  EXPECT_EQ(program.form().diagnostic_level(), 0);
  EXPECT_EQ(program.form().undo_megabytes(), 0);
  change("OK");
  EXPECT_TRUE(program.form().logging_enabled());
  EXPECT_EQ(program.form().diagnostic_level(), 1);
  EXPECT_EQ(program.form().undo_megabytes(), 300);
}

TEST(Dialogs, TheProjectListIsEditedInPlaceAndRefusesBlanks) {
  running_program program;
  program.form().open_file(SAMPLE);
  const auto& files = program.form().current_data_set->project_files;
  with_dialog([&] { program.trigger("EditProjectItem"); },
              [&](QWidget* dialog) {
                EXPECT_EQ(dialog->windowTitle(), "Related project files");
                auto* table = find<QTableView>(dialog, "ProjectTable");
                EXPECT_TRUE(press(dialog, "Insert"));
                QTest::keyClick(table, Qt::Key_G); // starts editing
                auto* editor = table->findChild<QLineEdit*>();
                EXPECT_TRUE(editor);
                if (!editor) return true;
                EXPECT_EQ(editor->text(), "g");
                QTest::keyClicks(editor, "auges.shp");
                QTest::keyClick(table, Qt::Key_Down); // on the last row, while editing
                EXPECT_EQ(files.size(), 2U);
                EXPECT_EQ(files[0].str(), "gauges.shp");
                expect_accessible(dialog);
                take_picture(dialog, "project");
                with_dialog([&] { press(dialog, "OK"); },
                            [](QWidget* box) {
                              return box->findChild<QLabel*>("qt_msgbox_label")->text() ==
                                         "Blank filenames are not allowed" &&
                                     press(box, "OK");
                            });
                EXPECT_TRUE(dialog->isVisible());
                EXPECT_TRUE(press(dialog, "Delete"));
                return press(dialog, "OK");
              });
  EXPECT_EQ(files.size(), 1U);
}

TEST(Dialogs, KeptFilesAreListedAndOpened) {
  running_program program;
  program.form().open_file(SAMPLE);
  program.form().current_data_set->comments = "typed";
  program.form().new_data_set();
  with_dialog([&] { program.trigger("KeptWorkItem"); },
              [&](QWidget* dialog) {
                const auto* item = find<QTreeWidget>(dialog, "KeptFilesList")->topLevelItem(0);
                EXPECT_EQ(item->text(0), "roanoke.vki");
                EXPECT_EQ(item->text(1), "Unsaved changes");
                expect_accessible(dialog);
                take_picture(dialog, "kept_work");
                return press(dialog, "Open");
              });
  EXPECT_EQ(program.form().current_data_set->comments, "typed");
  EXPECT_EQ(program.form().file_name, SAMPLE);
}

TEST(Dialogs, AboutTellsProductVersionAndEdition) {
  running_program program({}, "EditionName=Student <2>\n");
  with_dialog([&] { program.trigger("AboutItem"); },
              [&](QWidget* dialog) {
                const QString text = find<QLabel>(dialog, "AboutText")->text();
                EXPECT_TRUE(text.contains("<h2>Vesk</h2>") && text.contains(QCoreApplication::applicationVersion()));
                EXPECT_TRUE(text.contains("Student &lt;2&gt;"));
                EXPECT_TRUE(text.contains("General Public License"));
                const QString engine = QString(ENGINE) + ", version " + QCoreApplication::applicationVersion();
                EXPECT_TRUE(text.contains("Engine: " + engine)) << text.toStdString();
                take_picture(dialog, "about");
                return press(dialog, "OK");
              });
}

TEST(Dialogs, MenusHaveNoMnemonicTwice) {
  running_program program;
  EXPECT_FALSE(find<QMenu>(&program.window(), "AdministrationItem")->menuAction()->isVisible());
  expect_accessible(&program.window());
  for (const QMenu* menu : program.window().findChildren<QMenu*>()) {
    std::map<QChar, QString> mnemonics;
    for (const QAction* action : menu->actions()) {
      const qsizetype at = action->text().indexOf('&');
      if (at < 0 || action->text().mid(at, 2) == "&&") continue;
      const QChar letter = action->text()[at + 1].toLower();
      EXPECT_TRUE(mnemonics.emplace(letter, action->text()).second)
          << menu->title().toStdString() << ": " << action->text().toStdString();
    }
  }
}

} // namespace
} // namespace vesk
