// For every window that edits a data set: OK without a change, and Cancel after many, leave the data set unchanged;
// Undo and Redo step through all changes. Data sets are compared by `vki dump`.
#include "dataset/network.h"
#include "dataset/series.h"
#include "dataset/vki_file.h"
#include "driver.h"
#include "tools/dataset_json.h"
#include "ui/entry_edit.h"
#include "ui/grid_view.h"
#include "ui/texts.h"
#include "ui/tree_view.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <cmath>
#include <utility>

namespace vesk {
namespace {

constexpr const char* settings_command = "ParameterizationItem";
constexpr const char* editor_commands[] = {
    "SystemsItem",    "SegmentsItem",          "ExchangesItem",     "FlowsItem",
    "ParametersItem", "ConstantsItem",         "TimeFunctionsItem", "PrintIntervalItem",
    "TimestepItem",   "OutputcontrolMenuItem", "LoadsItem",         "BoundariesItem"};

std::string dump(const prevesk_dataset_data_type& data) {
  std::string text;
  binary_writer writer(text);
  write_json(writer, data);
  return text;
}

// The changes that the settings dialog may make: points of empty series, by OK and Cancel, and four options that it has
// no controls for, by OK.
prevesk_dataset_data_type with_default_points(prevesk_dataset_data_type data) {
  data.give_default_points();
  return data;
}

prevesk_dataset_data_type with_mapped_options(prevesk_dataset_data_type data) {
  data.give_default_points();
  if (data.flow_option < 1 || data.flow_option > 4) data.flow_option = 3;
  data.restart_option = std::min(data.restart_option, 2U);
  data.vesk_to_vesk_linkage_option = data.vesk_to_vesk_linkage_option == 1 ? 1 : 0;
  const auto& techniques = data.solution_techniques;
  const bool known = std::ranges::any_of(
      techniques, [&](const auto& one) { return static_cast<std::uint32_t>(one.id) == data.solution_type; });
  if (!known) data.solution_type = static_cast<std::uint32_t>(techniques[0].id);
  return data;
}

// The changes that the others may make: bottom references past the end when the segments are shown, and boundaries by
// OK of exchanges and flows.
prevesk_dataset_data_type as_shown(std::string_view command, prevesk_dataset_data_type data) {
  if (command == "SegmentsItem") pull_bottom_references(data);
  return data;
}

prevesk_dataset_data_type as_accepted(std::string_view command, const prevesk_dataset_data_type& before) {
  prevesk_dataset_data_type data = as_shown(command, before);
  if (command == "ExchangesItem" || command == "FlowsItem") data.find_boundaries();
  return data;
}

// Seconds in the times, many digits, names in other scripts, NaN, and options without a control.
void make_odd(prevesk_dataset_data_type& data) {
  data.description = "Рона – ローヌ川 \"x\"\t&<b>";
  data.comments = "first\r\nсмешанные\nends ";
  data.nps_file = "данные/日本.nps";
  data.seed_time = 0.1234567890123456789;
  data.end_date += 1.0 / 3;
  data.max_dt = 0.09876543210987654;
  data.min_dt = 1e-17;
  data.fraction_of_max_time_step = 2.0 / 3;
  data.flow_option = 0;
  data.restart_option = 7;
  data.vesk_to_vesk_linkage_option = 5;
  data.solution_type = 99;
  data.project_files = {"карта.shp", "a & b.db"};
  data.segments.edit(0).name = "Мост №1";
  data.segments.edit(1).bottom_segment = 99;
  data.segments.edit(2).segment_type = 77;
  data.segments.edit(3).parameters.set(0, {data.segments[3].parameters[0].isc, 1.0 / 3});
  data.volume_scale_factor = 0.1 + 0.2;
  data.flow_fields.edit(0).functions.edit(0).pairs.edit(1).to_segment = 98;
  boundary_data_type needless;
  needless.segment = 7;
  data.systems.edit(0).boundaries.push_back(needless);
  std::int32_t second = 1;
  for_each_series(data, [&](const series_ref& ref) {
    point_list& points = edit_series(data, ref).points;
    for (std::size_t i = 0; i < points.size(); ++i) {
      points.edit(i).time = (points[i].time + second) % 86400;
      points.edit(i).value *= 1.0000000000000002;
    }
    ++second;
  });
  edit_series(data, {series_kind::flow_function, 0, 0}).points.edit(0).value = std::nan("");
  data.time_functions.edit(1).interpolation_type = 9;
  data.systems.edit(0).density = 1.0 / 7;
  data.systems.edit(1).cmax = 1e300;
  data.systems.edit(2).gsysbypass = 8;
  data.constant_groups.edit(0).constants.edit(0).value = 0.1 + 0.2;
  data.parameters.edit(0).scale = 5e-324;
}

// A text that the cell accepts, different from its current one.
QString another_entry(const QModelIndex& index) {
  const QString now = index.data(Qt::EditRole).toString();
  const auto kind = static_cast<cell_kind>(index.data(grid_model::cell_kind_role).toInt());
  const auto* model = static_cast<const grid_model*>(index.model());
  const grid_column& column = model->table().content().columns()[static_cast<std::size_t>(index.column())];
  switch (kind) {
  case cell_kind::date: return QString("2012-03-%1").arg(10 + index.row());
  case cell_kind::time: return QString("13:14:1%1").arg(index.row());
  case cell_kind::number: return QString("%1.0625").arg(3 + index.row());
  case cell_kind::combo: return shown(column.type.items->text(now == shown(column.type.items->text(1)) ? 0 : 1));
  default: return "Änderung " + QString::number(index.row());
  }
}

// Presses a button, and fails if a box appears.
bool press_in_peace(QWidget* dialog, const char* button) {
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [dialog, button] {
    QWidget* box = QApplication::activeModalWidget();
    if (!box || box == dialog || !box->isVisible()) return;
    const auto* text = box->findChild<QLabel*>("qt_msgbox_label");
    ADD_FAILURE() << button << ": " << (text ? text->text().toStdString() : box->objectName().toStdString());
    box->close();
  });
  watch.start(20);
  return press(dialog, button);
}

// As by a click: the buttons may act on the focused grid.
void enter(QWidget* dialog, grid_view& grid) {
  auto* pages = dialog->findChild<QTabWidget*>();
  for (int page = 0; pages && page < pages->count(); ++page)
    if (pages->widget(page)->isAncestorOf(&grid)) pages->setCurrentIndex(page);
  dialog->activateWindow();
  EXPECT_TRUE(wait_for([&] { return dialog->isActiveWindow(); }));
  grid.setFocus();
}

constexpr int edited_rows = 3; // per grid, cell by cell; block operations cover all rows

void edit_cells(grid_view& grid) {
  grid_model& model = grid.model();
  for (int column = 0; column < model.columnCount(); ++column)
    for (int row = 0; row < std::min(model.rowCount(), edited_rows); ++row) {
      const QModelIndex index = model.index(row, column);
      const Qt::ItemFlags flags = model.flags(index);
      bool taken = true;
      if (flags & Qt::ItemIsUserCheckable) taken = model.setData(index, {}, Qt::CheckStateRole);
      if (flags & Qt::ItemIsEditable) taken = model.setData(index, another_entry(index), Qt::EditRole);
      EXPECT_TRUE(taken) << grid.objectName().toStdString() << ": " << another_entry(index).toStdString();
    }
}

// Whether an emptied grid accepts everything that was copied: NaN is refused.
bool can_return() {
  return !QApplication::clipboard()->text().contains("NaN");
}

void edit_blocks(QWidget* dialog, grid_view& grid) {
  grid_model& model = grid.model();
  grid.selectAll();
  press_in_peace(dialog, "Copy");
  if (grid.table().content().has_free_rows() && !grid.table().is_shown_as_empty() && can_return()) {
    const int rows = model.rowCount();
    if (press_in_peace(dialog, "Delete All")) press_in_peace(dialog, "Insert");
    grid.selectAll();
    press_in_peace(dialog, "Paste");
    EXPECT_EQ(model.rowCount(), rows);
    press_in_peace(dialog, "Delete");
  }
  for (int column = 0; column < model.columnCount(); ++column) {
    grid.selectColumn(column);
    grid.table().calculate_selection("0"); // cells that do not accept this number refuse it
  }
}

void select_first_record(QWidget* dialog) {
  for (tree_view* tree : dialog->findChildren<tree_view*>())
    tree->setCurrentIndex(static_cast<const tree_model*>(tree->model())->index_of({0, 0}));
}

void edit_everything(QWidget* dialog) {
  using tester = QAbstractItemModelTester;
  for (grid_view* grid : dialog->findChildren<grid_view*>())
    new tester(&grid->model(), tester::FailureReportingMode::Fatal, grid); // checks all further changes
  auto* groups = dialog->findChild<QComboBox*>("ConstantGroupComboBox");
  for (int group = 0; group < (groups ? groups->count() : 1); ++group) {
    if (group > 0) QTest::keyClick(groups, Qt::Key_Down);
    select_first_record(dialog);
    for (grid_view* grid : dialog->findChildren<grid_view*>()) {
      enter(dialog, *grid);
      if (grid->table().content().has_free_rows() && grid->table().is_shown_as_empty())
        press_in_peace(dialog, "Insert");
      edit_cells(*grid);
      edit_blocks(dialog, *grid);
    }
  }
}

void edit_settings(QWidget* dialog) {
  for (QLineEdit* edit : dialog->findChildren<QLineEdit*>()) {
    const QString now = edit->text();
    edit->setText(now.contains('/') && qobject_cast<entry_edit*>(edit) ? "2011-12-13"
                  : now.contains(':')                                  ? "01:02:03"
                  : qobject_cast<entry_edit*>(edit)                    ? "7.125"
                                                                       : "Änderung");
  }
  dialog->findChild<QPlainTextEdit*>("CommentsMemo")->setPlainText("Änderung\nzweite");
  for (QComboBox* combo : dialog->findChildren<QComboBox*>()) combo->setCurrentIndex(combo->count() - 1);
  for (QRadioButton* button : dialog->findChildren<QRadioButton*>()) button->click();
}

int press_while_enabled(QWidget* dialog, const char* name) {
  int times = 0;
  for (auto* button = dialog->findChild<QPushButton*>(name); button->isEnabled() && times < 10000; ++times)
    button->click();
  return times;
}

class AllWindows : public testing::TestWithParam<bool> { // whether the file has unusual content
protected:
  AllWindows() {
    std::filesystem::copy(std::filesystem::path(SAMPLE).parent_path() / "data", folder.path / "data");
    program.form().open_file(SAMPLE);
    if (GetParam()) make_odd(*program.form().current_data_set);
    const std::string file = folder.file("данные.vki");
    program.form().save_as(file);
    program.form().open_file(file);
  }
  std::string now() { return dump(*program.form().current_data_set); }
  std::string saved(const prevesk_dataset_data_type& data) {
    save_data_file(folder.file("saved.vki"), data);
    return folder.read("saved.vki");
  }

  // Opens the window, does the work in it, and closes it with a button.
  void visit(const char* command, const std::function<void(QWidget*)>& work, const char* button) {
    with_dialog([&] { program.trigger(command); },
                [&](QWidget* dialog) {
                  if (work) work(dialog);
                  return press_in_peace(dialog, button);
                });
  }

  temporary_folder folder;
  running_program program;
};

TEST_P(AllWindows, OkWithoutAChangeKeepsEveryByte) {
  std::string before = dump(with_mapped_options(*program.form().current_data_set));
  visit(settings_command, {}, "OK");
  EXPECT_EQ(difference(before, now()), "");
  before = now();
  for (const char* command : {"EditProjectItem", settings_command}) {
    visit(command, {}, "OK");
    EXPECT_EQ(difference(before, now()), "") << command;
  }
  for (const char* command : editor_commands) {
    const prevesk_dataset_data_type expected = as_accepted(command, *program.form().current_data_set);
    visit(command, {}, "OK");
    EXPECT_EQ(difference(dump(expected), now()), "") << command;
    EXPECT_TRUE(saved(expected) == saved(*program.form().current_data_set)) << command;
  }
}

TEST_P(AllWindows, OkInTheImportDialogKeepsEveryByte) {
  for (const char* command : {"FlowsItem", "TimeFunctionsItem", "LoadsItem", "BoundariesItem"}) {
    const std::string before = saved(as_accepted(command, *program.form().current_data_set));
    const auto import = [](QWidget* window) {
      return window->objectName() == "ImportTimeSeriesForm" && press_in_peace(window, "OK");
    };
    visit(
        command,
        [&](QWidget* dialog) {
          select_first_record(dialog);
          with_dialog([&] { press(dialog, "Import"); }, import);
        },
        "OK");
    EXPECT_TRUE(before == saved(*program.form().current_data_set)) << command;
  }
}

TEST_P(AllWindows, CancelTakesEverythingBackAndUndoAndRedoWalkThroughAll) {
  const std::string opened = now();
  for (const char* command : editor_commands) {
    const std::string before = now(), at_first = dump(as_shown(command, *program.form().current_data_set));
    std::string edited;
    visit(
        command,
        [&](QWidget* dialog) {
          edit_everything(dialog);
          edited = now();
          EXPECT_FALSE(edited == before) << command;
          const int steps = press_while_enabled(dialog, "UndoButton");
          EXPECT_GT(steps, 0);
          EXPECT_EQ(difference(at_first, now()), "") << command;
          EXPECT_EQ(press_while_enabled(dialog, "RedoButton"), steps) << command;
          EXPECT_EQ(difference(edited, now()), "") << command;
        },
        "Cancel");
    EXPECT_EQ(difference(before, now()), "") << command;
    program.form().UndoItemClick();
    EXPECT_EQ(difference(edited, now()), "") << command;
    program.form().RedoItemClick();
    EXPECT_EQ(difference(before, now()), "") << command;
  }
  const std::string filled = dump(with_default_points(*program.form().current_data_set));
  visit(settings_command, edit_settings, "Cancel");
  EXPECT_EQ(difference(filled, now()), "");
  visit(settings_command, edit_settings, "OK");
  const std::string other_model = now();
  EXPECT_FALSE(other_model == filled);
  std::size_t steps = 0;
  for (; !program.form().undo_label().starts_with("Open "); ++steps) program.form().UndoItemClick();
  EXPECT_EQ(difference(opened, now()), "");
  for (; steps > 0; --steps) program.form().RedoItemClick();
  EXPECT_EQ(difference(other_model, now()), "");
}

INSTANTIATE_TEST_SUITE_P(Files, AllWindows, testing::Bool(),
                         [](const auto& file) { return file.param ? "Odd" : "Sample"; });

// Lists without records, no points, one, equal times, no numbers, a million points: every window opens and shows its
// content, and OK either closes it or gives one sentence why not.
TEST(Windows, OpenOnDataSetsThatHaveNothing) {
  running_program program;
  program.form().open_file(SAMPLE);
  prevesk_dataset_data_type& data = *program.form().current_data_set;
  data.systems.clear();
  data.segments.clear();
  data.exchange_fields.clear();
  data.flow_fields.clear();
  data.constant_groups.clear();
  data.time_functions.clear();
  data.parameters.clear();
  data.output_controls.clear();
  data.print_intervals.points = {};
  data.time_steps.points = {};
  const std::string before = dump(data);
  for (const char* command : editor_commands)
    with_dialog([&] { program.trigger(command); },
                [&](QWidget* dialog) {
                  for (const char* button : {"Copy", "Delete", "Delete All"}) press(dialog, button);
                  for (grid_view* grid : dialog->findChildren<grid_view*>()) {
                    QTest::keyClick(grid, Qt::Key_Down);
                    QTest::keyClick(grid, Qt::Key_5);
                  }
                  return press(dialog, "OK");
                });
  EXPECT_EQ(difference(before, dump(*program.form().current_data_set)), "");
}

TEST(Windows, ShowSeriesOfAnySize) {
  running_program program;
  program.form().open_file(SAMPLE);
  const auto show = [&](const point_list& points, const char* status, const char* refusal) {
    program.form().current_data_set->print_intervals.points = points;
    const std::string before = dump(*program.form().current_data_set);
    with_dialog([&] { program.trigger("PrintIntervalItem"); },
                [&](QWidget* dialog) {
                  EXPECT_TRUE(find<QLabel>(dialog, "TheFillCalcTableStatus")->text().startsWith(status))
                      << find<QLabel>(dialog, "TheFillCalcTableStatus")->text().toStdString();
                  QTest::qWait(50); // paint the chart
                  if (refusal) {
                    with_dialog([&] { press(dialog, "OK"); },
                                [&](QWidget* box) {
                                  EXPECT_EQ(box->findChild<QLabel*>("qt_msgbox_label")->text(), refusal);
                                  return press(box, "OK");
                                });
                    return press(dialog, "Cancel");
                  }
                  return press(dialog, "OK");
                });
    EXPECT_EQ(difference(before, dump(*program.form().current_data_set)), "");
  };
  const moment_type noon{150754, 43200};
  show({}, "No points yet.", nullptr);
  show({{noon, 0}}, "1 point, 1 Oct 2012 to 1 Oct 2012, minimum 0, mean 0, maximum 0", nullptr);
  show({{noon, 1}, {noon, 2}, {noon, 3}}, "3 points, 1 Oct 2012 to 1 Oct 2012", "Each record must be unique");
  show({{noon, std::nan("")}, {{150755, 0}, 1e308 * 10}}, "2 points, 1 Oct 2012 to 2 Oct 2012", nullptr);
  point_list million;
  million.reserve(1'000'000);
  for (std::int32_t i = 0; i < 1'000'000; ++i) million.push_back({{140000 + i / 86400, i % 86400}, i % 97 * 0.01});
  show(million, "1000000 points, ", nullptr);
}

// Possible clipboard contents. Nothing is written unless everything can be.
TEST(Windows, PasteTakesAllOrSaysInOneSentenceWhyNot) {
  running_program program;
  program.form().open_file(SAMPLE);
  const auto& points = program.form().current_data_set->time_steps.points;
  with_dialog(
      [&] { program.trigger("TimestepItem"); },
      [&](QWidget* dialog) {
        auto* grid = find<grid_view>(dialog, "TheFillCalcTable");
        QClipboard* clipboard = QApplication::clipboard();
        const auto refusal = [&] {
          std::string text;
          with_dialog([&] { press(dialog, "Paste"); },
                      [&](QWidget* box) {
                        text = box->findChild<QLabel*>("qt_msgbox_label")->text().toStdString();
                        return press(box, "OK");
                      });
          EXPECT_EQ(points.size(), 2U);
          return text;
        };
        clipboard->setImage(QImage(4, 4, QImage::Format_RGB32));
        EXPECT_EQ(refusal(), "The clipboard contains no text.");
        clipboard->clear();
        EXPECT_EQ(refusal(), "The clipboard contains no text.");
        clipboard->setText("2012-10-01\t00:00\t0.1\n2012-10-02\t00:00\t0,1\n");
        EXPECT_EQ(refusal(), "Line 2, column 3: \"0,1\" has a comma; use a decimal point. Nothing "
                             "was pasted.");
        clipboard->setText("2012-02-30\t00:00\t0.1\n");
        EXPECT_EQ(refusal(), "Line 1, column 1: \"2012-02-30\" is not a day of the calendar. Nothing was pasted.");
        QString rows; // 999,999 cells
        for (int i = 0; i < 333'333; ++i)
          rows += QString("20%1-01-%2\t%3:%4:%5\t0.%6\n")
                      .arg(10 + i / 86400)
                      .arg(1 + i / 86400, 2, 10, QChar('0'))
                      .arg(i / 3600 % 24)
                      .arg(i / 60 % 60, 2, 10, QChar('0'))
                      .arg(i % 60, 2, 10, QChar('0'))
                      .arg(i);
        clipboard->setText(rows);
        grid->selectAll();
        EXPECT_TRUE(press(dialog, "Paste"));
        EXPECT_EQ(points.size(), 333'333U);
        EXPECT_EQ(find<QLabel>(dialog, "MessageLabel")->text(), "Pasted: 333333 rows, 1 Jan 2010 to 4 Jan 2013.");
        clipboard->setText("2015-01-01\n2015-01-02\t\"12:30\"\t\"0.5\"\n"); // ragged, and in quotes
        grid->selectAll();
        EXPECT_TRUE(press(dialog, "Paste"));
        EXPECT_EQ(points.size(), 2U);
        EXPECT_EQ(points[1], (moment_value_pair_type{{151577, 45000}, 0.5}));
        auto* offered = new QMimeData; // the formats that spreadsheets offer
        offered->setHtml("<table><tr><td sdval=\"41183\">10/01/12</td></tr></table>");
        offered->setText("10/01/12\t06:30:00 PM\t0.25\n10/02/12\t12:00:00 AM\t0.5\n");
        clipboard->setMimeData(offered);
        EXPECT_TRUE(press(dialog, "Paste"));
        EXPECT_EQ(points, (point_list{{{150754, 66600}, 0.25}, {{150755, 0}, 0.5}}));
        clipboard->clear();
        return press(dialog, "Cancel");
      });
}

TEST(Windows, AJobMayEndUnderEachOfThem) {
  running_program program;
  program.form().open_file(SAMPLE);
  program.form().current_data_set->give_default_points(); // as the settings dialog does
  std::string before;                                     // the snapshot, which a job's end replaces
  const auto end_a_job = [&] {
    with_dialog(
        [&] {
          program.form().start_validity_check();
          EXPECT_TRUE(wait_for([&] { return !program.form().active_thread; }));
        },
        [&](QWidget* box) { return box->windowTitle().startsWith("Validity check") && press(box, "OK"); });
    before = dump(*program.form().current_data_set);
  };
  const auto visit = [&](const char* command) {
    with_dialog([&] { program.trigger(command); },
                [&](QWidget* dialog) {
                  for (grid_view* grid : dialog->findChildren<grid_view*>())
                    QTest::keyClick(grid, Qt::Key_7); // starts editing a cell, unless the row is blank
                  end_a_job();
                  EXPECT_TRUE(dialog->isVisible()) << command;
                  for (grid_view* grid : dialog->findChildren<grid_view*>()) QTest::keyClick(grid, Qt::Key_Down);
                  return press_in_peace(dialog, "Cancel");
                });
    EXPECT_EQ(difference(before, dump(*program.form().current_data_set)), "") << command;
  };
  end_a_job();
  for (const char* command : editor_commands) visit(command);
  visit(settings_command);
}

// A catalogue disappears, and a job ends, while a window is open.
TEST(Windows, OutliveTheCatalogueAndAJob) {
  const temporary_folder folder;
  const std::filesystem::path database = folder.path / "database";
  std::filesystem::copy(CATALOGUE, database);
  running_program program;
  program.form().set_database_folder(database.string());
  program.form().open_file(SAMPLE);
  with_dialog([&] { program.trigger(settings_command); },
              [&](QWidget* dialog) {
                std::filesystem::remove_all(database);
                find<QComboBox>(dialog, "ModelTypeComboBox")->setCurrentText("Tracers and solids");
                return press(dialog, "OK");
              });
  EXPECT_EQ(program.form().current_data_set->model_type, 2U);
  EXPECT_EQ(program.form().current_data_set->systems.size(), 3U);
  program.form().set_database_folder(CATALOGUE "/");
  program.form().UndoItemClick();
  bool started = false, filled = false;
  with_dialog([&] { program.trigger("TimestepItem"); },
              [&](QWidget* dialog) {
                find<grid_view>(dialog, "TheFillCalcTable")->table().set_active(0, 2);
                with_dialog([&] { press(dialog, "Fill/Calc"); },
                            [&](QWidget* front) {
                              if (!std::exchange(started, true)) program.form().start_validity_check();
                              if (front->objectName() == "message_box") press(front, "OK"); // from the job's end
                              if (program.form().active_thread || front->objectName() != "FillCalculateForm")
                                return false;
                              find<QLineEdit>(front, "FillCalculateEdit")->setText("0.7");
                              filled = true;
                              return press(front, "OK");
                            });
                return press(dialog, "OK");
              });
  EXPECT_TRUE(filled);
  EXPECT_EQ(program.form().current_data_set->time_steps.points[0].value, 0.1); // the cells belonged to another data set
}

} // namespace
} // namespace vesk
