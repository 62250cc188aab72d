// The windows that edit a data set.
#include "accessible.h"
#include "app/forms.h"
#include "driver.h"
#include "ui/chart_view.h"
#include "ui/entry_edit.h"
#include "ui/grid_view.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

namespace vesk {
namespace {

constexpr const char* editor_commands[] = {
    "ParameterizationItem",  "SystemsItem",   "SegmentsItem",      "ExchangesItem",     "FlowsItem",
    "ParametersItem",        "ConstantsItem", "TimeFunctionsItem", "PrintIntervalItem", "TimestepItem",
    "OutputcontrolMenuItem", "LoadsItem",     "BoundariesItem"};

QString text_of(QWidget* window, const char* label) {
  return find<QLabel>(window, label)->text();
}

grid_view* grid_of(QWidget* window, const char* name = "TheFillCalcTable") {
  return find<grid_view>(window, name);
}

// The line being edited; null: none.
QLineEdit* open_line(grid_view* grid) {
  for (auto* line : grid->findChildren<QLineEdit*>())
    if (line->isVisible()) return line;
  return nullptr;
}

void type(grid_view* grid, const QString& text) {
  QTest::keyClick(grid, text[0].toLatin1()); // starts editing
  QLineEdit* line = open_line(grid);
  ASSERT_TRUE(line);
  QTest::keyClicks(line, text.mid(1));
}

void enter(QWidget* dialog, QWidget* control) {
  dialog->activateWindow(); // only an active window has shortcuts and a focus
  EXPECT_TRUE(wait_for([&] { return dialog->isActiveWindow(); }));
  control->setFocus();
}

void picture_of_each_page(QWidget* window, const QString& name) {
  auto* pages = window->findChild<QTabWidget*>();
  for (int page = 0; pages && page < pages->count(); ++page) {
    pages->setCurrentIndex(page);
    take_picture(window, QString("%1_%2").arg(name).arg(page + 1));
  }
  if (!pages) take_picture(window, name);
}

// Number of labels in the lowest rows of a chart's image.
int labels_below(QWidget* chart) {
  constexpr int label_height = 32, widest_gap_in_a_label = 20;
  const QImage image = chart->grab().toImage();
  int labels = 0, last_ink = -widest_gap_in_a_label - 1;
  for (int x = 0; x < image.width(); ++x) {
    bool ink = false;
    for (int y = image.height() - label_height; y < image.height(); ++y)
      ink = ink || image.pixelColor(x, y).lightness() < 60;
    if (!ink) continue;
    if (x - last_ink > widest_gap_in_a_label) ++labels;
    last_ink = x;
  }
  return labels;
}

TEST(Editors, ShowTheSampleAndChangeNothingByOk) {
  running_program program;
  program.form().open_file(SAMPLE);
  program.form().current_data_set->give_default_points(); // as the settings dialog does
  const prevesk_dataset_data_type before = *program.form().current_data_set;
  for (const auto* command : editor_commands)
    with_dialog([&] { program.trigger(command); },
                [&](QWidget* dialog) {
                  expect_accessible(dialog);
                  picture_of_each_page(dialog, QString("editor_") + command);
                  dialog->resize(500, dialog->height());
                  EXPECT_LE(dialog->width(), 500) << command;
                  keep_picture(dialog, QString("narrow_") + command);
                  return press(dialog, "OK");
                });
  EXPECT_EQ(*program.form().current_data_set, before);
}

// Windows that open only from other windows.
TEST(Editors, TheOtherWindowsHaveNamesForAllControls) {
  running_program program;
  program.form().open_file(SAMPLE);
  program_forms& forms = program.form().forms();
  TRegularTimesForm times;
  times.begin(*program.form().current_data_set);
  form* const others[] = {&forms.fill_calculate, &times, &forms.seed_date, &forms.about, &forms.project};
  for (form* one : others)
    with_dialog([&] { program.window().show_form(*one); },
                [&](QWidget* dialog) {
                  expect_accessible(dialog);
                  take_picture(dialog, "window_" + dialog->objectName());
                  dialog->close();
                  return true;
                });
  with_dialog([&] { program.window().message_box("Sure?", "A question", box_buttons::yes_no_cancel); },
              [&](QWidget* box) {
                expect_accessible(box);
                return press(box, "Cancel");
              });
  with_dialog([&] { program.trigger("TimeFunctionsItem"); },
              [&](QWidget* dialog) {
                EXPECT_TRUE(press(dialog, "Graph"));
                auto* graph = find<QWidget>(dialog, "GraphForm");
                EXPECT_TRUE(wait_for([&] { return graph->isVisible(); }));
                expect_accessible(graph);
                take_picture(graph, "window_GraphForm");
                EXPECT_GE(labels_below(graph->findChild<chart_view*>()), 5);
                std::string refusal;
                const auto save = [&] {
                  for (QAction* action : graph->findChildren<QAction*>())
                    if (action->text() == "Save as...") action->trigger();
                };
                with_dialog(save, [&](QWidget* front) {
                  if (front->objectName() == "file_dialog") {
                    choose_file(front, QDir::temp().filePath("chart.txt"));
                    return false;
                  }
                  refusal = text_of(front, "qt_msgbox_label").toStdString();
                  return press(front, "OK");
                });
                EXPECT_TRUE(refusal.ends_with("chart.txt must end in .png, .svg, .pdf or .csv.")) << refusal;
                return press(dialog, "Cancel");
              });
  EXPECT_TRUE(program.window().findChild<QWidget*>("GraphForm")->isVisible()); // it stays open
}

TEST(Editors, WithoutContentTheySayWhatIsMissing) {
  running_program program;
  program.form().new_data_set();
  *program.form().current_data_set = prevesk_dataset_data_type(); // without a model
  const prevesk_dataset_data_type empty = *program.form().current_data_set;
  const std::pair<form*, const char*> hints[] = {
      {&program.form().forms().systems, "The model has none of these."},
      {&program.form().forms().constants, "The model has none of these."},
      {&program.form().forms().parameters, "The model has none of these."},
      {&program.form().forms().output_control, "The model has none of these."},
      {&program.form().forms().time_functions, "The model has no time functions."},
      {&program.form().forms().segments, "No segments: choose Insert, or paste rows from a spreadsheet."},
      {&program.form().forms().time_step, "No points yet. Insert adds one; Paste adds rows of date, time and value."},
  };
  for (const auto& [one, hint] : hints)
    with_dialog([&, shown = one] { program.window().show_form(*shown); },
                [&, hint = hint, edited = one](QWidget* dialog) {
                  const std::string first = static_cast<editor*>(edited)->panels().front()->name;
                  EXPECT_TRUE(text_of(dialog, (first + "Status").c_str()).startsWith(hint)) << first;
                  take_picture(dialog, "empty_" + dialog->objectName());
                  for (const char* button : {"Copy", "Delete", "Delete All"}) press(dialog, button);
                  return press(dialog, "Cancel");
                });
  EXPECT_EQ(*program.form().current_data_set, empty);
}

TEST(Editors, ARefusedEntryStaysInItsCellWithTheReason) {
  running_program program;
  program.form().open_file(SAMPLE);
  with_dialog([&] { program.trigger("ConstantsItem"); },
              [&](QWidget* dialog) {
                grid_view* grid = grid_of(dialog);
                grid->table().set_active(0, 2);
                type(grid, "0,2");
                QTest::keyClick(open_line(grid), Qt::Key_Return);
                EXPECT_TRUE(wait_for([&] { return grid->table().refused().has_value(); }));
                const QModelIndex cell = grid->model().index(0, 2);
                EXPECT_EQ(cell.data().toString(), "0,2");
                EXPECT_TRUE(wait_for([&] { return !open_line(grid); }));
                const QPoint left_of_text = grid->visualRect(cell).topLeft() + QPoint(4, 6);
                const QColor ground = grid->viewport()->grab().toImage().pixelColor(left_of_text);
                EXPECT_GT(ground.red(), 200); // not the selection's blue, apart from the tint of the focus
                EXPECT_LT(ground.blue(), 60);
                EXPECT_TRUE(text_of(dialog, "TheFillCalcTableStatus").startsWith("Row 1: "));
                EXPECT_TRUE(cell.data(Qt::AccessibleDescriptionRole).toString().startsWith("Not accepted: "));
                grid->table().set_active(3, 0);
                take_picture(dialog, "refused_entry");
                EXPECT_TRUE(press(dialog, "OK")); // returns to the entry, without a box
                EXPECT_TRUE(dialog->isVisible());
                EXPECT_EQ(grid->currentIndex(), cell);
                QTest::keyClick(grid, Qt::Key_Escape);
                EXPECT_EQ(cell.data().toString(), "0.15");
                EXPECT_EQ(text_of(dialog, "TheFillCalcTableStatus"), "");
                return press(dialog, "OK");
              });
}

// All keys go where the focus is, as a user's do.
TEST(Editors, KeysReachTheGridAfterARowHasMovedOrAnEntryWasRefused) {
  running_program program;
  program.form().open_file(SAMPLE);
  const auto press_key = [](Qt::Key key, Qt::KeyboardModifiers with = {}) {
    QTest::keyClick(QApplication::focusWidget(), key, with);
    QApplication::processEvents();
  };
  const auto type_keys = [](const char* text) {
    for (const char* c = text; *c; ++c) QTest::keyClick(QApplication::focusWidget(), *c);
  };
  with_dialog([&] { program.trigger("TimeFunctionsItem"); },
              [&](QWidget* dialog) {
                auto* grid = grid_of(dialog, "TFFillCalcTable");
                const auto active = [&] {
                  return std::pair(grid->currentIndex().row(), grid->currentIndex().column());
                };
                const auto cell = [&](int row, int column) {
                  return grid->model().index(row, column).data(Qt::EditRole).toString();
                };
                enter(dialog, grid);
                grid->table().set_active(2, 0);
                const QString value = cell(2, 2);
                type_keys("2011-09-20");
                press_key(Qt::Key_Return); // the row moves down
                EXPECT_TRUE(QApplication::focusWidget() == grid);
                const int now = active().first - 1; // Enter goes to the row below it
                EXPECT_GT(now, 2);
                EXPECT_EQ(cell(now, 2), value);
                press_key(Qt::Key_Home, Qt::ControlModifier);
                EXPECT_EQ(active(), std::pair(0, 0));
                type_keys("2011-09-25");
                press_key(Qt::Key_Tab);
                EXPECT_EQ(active().second, 1);
                EXPECT_EQ(cell(active().first, 0), "09/25/2011");
                press_key(Qt::Key_Home, Qt::ControlModifier);
                press_key(Qt::Key_Right);
                press_key(Qt::Key_Right);
                type_keys("abc");
                press_key(Qt::Key_Return);
                press_key(Qt::Key_Down);
                EXPECT_EQ(active(), std::pair(0, 2));
                grid->setCurrentIndex(grid->model().index(5, 2)); // by the mouse
                const QString other = cell(5, 2);
                type_keys("31");
                EXPECT_EQ(cell(5, 2), other);
                press_key(Qt::Key_Home, Qt::ControlModifier);
                type_keys("25.5");
                press_key(Qt::Key_Return);
                EXPECT_EQ(cell(0, 2), "25.5");
                EXPECT_EQ(active(), std::pair(1, 2));
                press_key(Qt::Key_Home, Qt::ControlModifier);
                press_key(Qt::Key_A, Qt::ControlModifier);
                press_key(Qt::Key_Home, Qt::ControlModifier);
                EXPECT_EQ(grid->table().selection().rows(), 1U);
                return press(dialog, "Cancel");
              });
}

TEST(Editors, UndoTakesBackTypingFirstThenSteps) {
  running_program program;
  program.form().open_file(SAMPLE);
  with_dialog([&] { program.trigger("ConstantsItem"); },
              [&](QWidget* dialog) {
                grid_view* grid = grid_of(dialog);
                const auto value = [&] { return grid->model().index(0, 2).data().toString(); };
                const auto undo = [&](QWidget* control) { QTest::keyClick(control, Qt::Key_Z, Qt::ControlModifier); };
                enter(dialog, grid);
                grid->table().set_active(0, 2);
                type(grid, "0.3");
                QTest::keyClick(open_line(grid), Qt::Key_Return);
                EXPECT_TRUE(wait_for([&] { return value() == "0.3"; }));
                EXPECT_TRUE(wait_for([&] { return !open_line(grid); }));
                EXPECT_EQ(grid->table().active_row(), 1U); // Enter goes down by one row
                grid->table().set_active(0, 2);
                type(grid, "7");
                QLineEdit* line = open_line(grid);
                EXPECT_EQ(line->text(), "7");
                undo(line);
                EXPECT_EQ(line->text(), "0.3");
                EXPECT_EQ(value(), "0.3");
                undo(line); // nothing typed is left
                EXPECT_EQ(value(), "0.15");
                EXPECT_TRUE(find<QPushButton>(dialog, "RedoButton")->isEnabled());
                EXPECT_EQ(text_of(dialog, "MessageLabel"), "Undone: Edit."); // and nothing about a job
                return press(dialog, "OK");
              });
}

TEST(Editors, TheSelectedBlockOutlivesAResetOfTheRows) {
  running_program program;
  program.form().open_file(SAMPLE);
  with_dialog([&] { program.trigger("TimestepItem"); },
              [&](QWidget* dialog) {
                grid_view* grid = grid_of(dialog);
                const cell_range values{0, 2, 1, 2};
                grid->table().enter(0, 2, "0.3");
                grid->selectColumn(2);
                EXPECT_TRUE(press(dialog, "Undo"));
                EXPECT_EQ(grid->table().selection(), values);
                EXPECT_EQ(grid->selectionModel()->selection().indexes().size(), 2);
                EXPECT_EQ(grid->currentIndex(), grid->model().index(0, 2));
                EXPECT_TRUE(press(dialog, "Delete")); // the block no longer exists
                EXPECT_EQ(grid->table().selection().rows(), 1U);
                return press(dialog, "Cancel");
              });
}

TEST(Editors, ALongNameThatWasCancelledWidensNoColumn) {
  running_program program;
  program.form().open_file(SAMPLE);
  int usual = 0;
  with_dialog([&] { program.trigger("SegmentsItem"); },
              [&](QWidget* dialog) {
                grid_view* grid = grid_of(dialog, "SegmentFillCalcTable");
                usual = grid->columnWidth(0);
                grid->setColumnWidth(1, 200);
                grid->table().enter(0, 0, std::string(100, 'w'));
                grid->table().insert_row_at_active();
                QApplication::processEvents(); // columns are measured then
                EXPECT_GT(grid->columnWidth(0), usual);
                return press(dialog, "Cancel");
              });
  with_dialog([&] { program.trigger("SegmentsItem"); },
              [&](QWidget* dialog) {
                grid_view* grid = grid_of(dialog, "SegmentFillCalcTable");
                EXPECT_EQ(grid->columnWidth(0), usual);
                EXPECT_EQ(grid->columnWidth(1), 200); // the user's
                return press(dialog, "Cancel");
              });
}

TEST(Editors, TheMarkOfAFunctionFollowsItsPoints) {
  running_program program;
  program.form().open_file(SAMPLE);
  program.form().current_data_set->time_functions.edit(0).points.clear();
  program.form().current_data_set->time_functions.edit(0).query.edit().deferred = false;
  with_dialog([&] { program.trigger("TimeFunctionsItem"); },
              [&](QWidget* dialog) {
                grid_model& list = grid_of(dialog)->model();
                int repaints = 0;
                QObject::connect(&list, &grid_model::dataChanged, [&] { ++repaints; });
                const QModelIndex used = list.index(0, 1);
                EXPECT_FALSE(used.data(Qt::DecorationRole).isNull());
                EXPECT_TRUE(press(dialog, "Insert"));
                EXPECT_TRUE(used.data(Qt::DecorationRole).isNull());
                EXPECT_GT(repaints, 0);
                return press(dialog, "Cancel");
              });
}

TEST(Editors, EscapeInAFieldFirstGivesTheEntryUp) {
  running_program program;
  program.form().open_file(SAMPLE);
  with_dialog([&] { program.trigger("ParameterizationItem"); },
              [&](QWidget* dialog) {
                auto* field = find<entry_edit>(dialog, "StartDateField");
                auto* skip = find<entry_edit>(dialog, "HydroSkipDateField");
                const QString before = field->text(), skip_before = skip->text();
                skip->setText("2012-01-01");
                skip->take();
                field->setText("13/45/2012");
                EXPECT_FALSE(field->take());
                EXPECT_NE(text_of(dialog, "MessageLabel"), "");
                QTest::keyClick(field, Qt::Key_Escape);
                EXPECT_TRUE(dialog->isVisible());
                EXPECT_EQ(field->text(), before);
                EXPECT_EQ(text_of(dialog, "MessageLabel"), "");
                EXPECT_EQ(skip->text(), "01/01/2012"); // changes only with the start
                QTest::keyClick(field, Qt::Key_Escape);
                return !dialog->isVisible();
              });
}

TEST(Editors, AClickInTheChartChoosesTheRowAlsoInUnsortedRows) {
  running_program program;
  program.form().open_file(SAMPLE);
  auto& points = program.form().current_data_set->time_steps.points;
  ASSERT_EQ(points.size(), 2U);
  const auto last = points[1];
  points.edit(1) = points[0];
  points.edit(0) = last; // now row 0 is the point to the right
  with_dialog([&] { program.trigger("TimestepItem"); },
              [&](QWidget* dialog) {
                grid_view* grid = grid_of(dialog);
                auto* chart = find<chart_view>(dialog, "TheFillCalcTableChart");
                QWidget* plot = chart->findChild<QWidget*>();
                QTest::qWait(50); // paint the chart
                take_picture(dialog, "unsorted_rows");
                const auto click_near = [&](int from_x, int to_x, std::size_t row) {
                  for (int x = from_x; x < to_x; x += 6)
                    for (int y = plot->height() / 4; y < plot->height() * 3 / 4; y += 6) {
                      QTest::mouseClick(plot, Qt::LeftButton, {}, {x, y});
                      if (grid->table().active_row() == row) return true;
                    }
                  return false;
                };
                EXPECT_TRUE(click_near(10, 70, 1));
                EXPECT_TRUE(click_near(plot->width() - 40, plot->width() - 5, 0));
                QTest::keyClick(grid, Qt::Key_F8); // to the row with the unsorted date
                EXPECT_TRUE(grid->model()
                                .index(static_cast<int>(grid->table().active_row()), 0)
                                .data(Qt::ToolTipRole)
                                .toString()
                                .contains("before"));
                return press(dialog, "Cancel");
              });
}

TEST(Editors, TheChartBesideAGridIsNotZoomedWhenTheDialogIsOpenedAgain) {
  running_program program;
  program.form().open_file(SAMPLE);
  QString all, zoomed, reopened;
  const auto look = [&](const std::function<void(chart_view*)>& work) {
    with_dialog([&] { program.trigger("TimestepItem"); },
                [&](QWidget* dialog) {
                  QTest::qWait(50); // paint the chart
                  work(find<chart_view>(dialog, "TheFillCalcTableChart"));
                  return press(dialog, "Cancel");
                });
  };
  look([&](chart_view* chart) {
    all = chart->accessibleDescription();
    QWidget* plot = chart->findChild<QWidget*>();
    const QPoint middle = plot->rect().center();
    QTest::mousePress(plot, Qt::LeftButton, {}, middle);
    QTest::mouseMove(plot, middle + QPoint(20, 0));
    QTest::mouseRelease(plot, Qt::LeftButton, {}, middle + QPoint(20, 0));
    QTest::qWait(50);
    zoomed = chart->accessibleDescription();
  });
  look([&](chart_view* chart) { reopened = chart->accessibleDescription(); });
  EXPECT_EQ(all.toStdString(), "Time Step: 2 points, 2011 through 2012.");
  EXPECT_NE(zoomed, all);
  EXPECT_EQ(reopened, all);
}

TEST(Editors, PagesShareTheActiveRowAndTheButtonsBelow) {
  running_program program;
  program.form().open_file(SAMPLE);
  const auto segments = static_cast<int>(program.form().current_data_set->segments.size());
  with_dialog([&] { program.trigger("SegmentsItem"); },
              [&](QWidget* dialog) {
                auto* pages = find<QTabWidget>(dialog, "Pages");
                grid_view* grid = grid_of(dialog, "SegmentFillCalcTable");
                grid_view* values = grid_of(dialog, "ParametersFillCalcTable");
                enter(dialog, grid);
                QTest::keyClick(grid, Qt::Key_Minus, Qt::ControlModifier); // has no button
                EXPECT_EQ(values->model().rowCount(), segments - 1);
                EXPECT_TRUE(press(dialog, "Undo"));
                enter(dialog, grid);
                grid->table().set_active(4, 2);
                QTest::keyClick(grid, Qt::Key_Tab, Qt::ControlModifier);
                EXPECT_EQ(pages->currentIndex(), 1);
                EXPECT_TRUE(values->hasFocus());
                EXPECT_EQ(values->currentIndex().row(), 4);
                QTest::keyClick(values, Qt::Key_Down);
                EXPECT_EQ(grid->table().active_row(), 5U);
                EXPECT_TRUE(press(dialog, "Insert"));
                EXPECT_EQ(values->model().rowCount(), segments + 1);
                EXPECT_TRUE(text_of(dialog, "MessageLabel").endsWith(" now name another segment."));
                QTest::keyClick(values, Qt::Key_Tab, Qt::ControlModifier | Qt::ShiftModifier);
                EXPECT_EQ(grid->currentIndex(), grid->model().index(5, 2));
                EXPECT_EQ(grid->selectionModel()->selectedIndexes(), QModelIndexList{grid->currentIndex()});
                auto* factor = find<QLineEdit>(dialog, "VolumeScaleFactorField");
                factor->setFocus();
                factor->selectAll();
                QTest::keyClicks(factor, "two");
                pages->setCurrentIndex(2);
                EXPECT_TRUE(press(dialog, "OK")); // returns to the field
                EXPECT_TRUE(dialog->isVisible());
                EXPECT_EQ(pages->currentIndex(), 0);
                EXPECT_TRUE(factor->hasFocus());
                EXPECT_TRUE(text_of(dialog, "MessageLabel").startsWith("Volume Scale Factor: "));
                take_picture(dialog, "refused_field");
                factor->setText("2.5");
                return press(dialog, "OK");
              });
  EXPECT_EQ(program.form().current_data_set->volume_scale_factor, 2.5);
}

TEST(Editors, OneRowOfButtonsActsOnTheGridThatWasEnteredLast) {
  running_program program;
  program.form().open_file(SAMPLE);
  const auto visit = [&](const char* command, const std::function<void(QWidget*)>& work) {
    with_dialog([&] { program.trigger(command); },
                [&](QWidget* dialog) {
                  work(dialog);
                  return press(dialog, "Cancel");
                });
  };
  visit("FlowsItem", [&](QWidget* dialog) {
    EXPECT_EQ(dialog->windowTitle(), "Flows");
    auto* insert = find<QPushButton>(dialog, "InsertRowButton");
    const auto is_marked = [&](const char* label) { return find<QLabel>(dialog, label)->font().bold(); };
    EXPECT_FALSE(insert->isEnabled());
    EXPECT_TRUE(insert->toolTip().contains("The rows of this grid are fixed"));
    EXPECT_TRUE(is_marked("FieldFillCalcTableLabel"));
    grid_view* pairs = grid_of(dialog, "PairsFillCalcTable");
    enter(dialog, pairs);
    EXPECT_TRUE(wait_for([&] { return insert->isEnabled(); }));
    EXPECT_TRUE(is_marked("PairsFillCalcTableLabel") && !is_marked("FieldFillCalcTableLabel"));
    EXPECT_FALSE(find<QPushButton>(dialog, "GraphButton")->isEnabled());
    with_dialog([&] { press(dialog, "Import"); }, [](QWidget* import) { return press(import, "Cancel"); });
    EXPECT_TRUE(wait_for([&] { return pairs->hasFocus(); }) && is_marked("PairsFillCalcTableLabel"));
    QApplication::clipboard()->setText("Boundary\t1\t1\n1\t2\t0.5\n");
    pairs->selectAll();
    EXPECT_TRUE(press(dialog, "Paste"));
    EXPECT_EQ(program.form().current_data_set->flow_fields[0].functions[0].pairs,
              (shared_array<flow_pair_record_type>{{1, no_segment, 0}, {0.5, 0, 1}}));
    grid_of(dialog, "FunctionFillCalcTable")->setFocus();
    EXPECT_TRUE(press(dialog, "Insert"));
    EXPECT_TRUE(pairs->table().is_shown_as_empty());
    EXPECT_FALSE(find<QPushButton>(dialog, "FillCalcButton")->isEnabled());
  });
  visit("ExchangesItem", [&](QWidget* dialog) {
    EXPECT_EQ(dialog->windowTitle(), "Exchanges");
    EXPECT_EQ(grid_of(dialog, "PairsFillCalcTable")->model().columnCount(), 4);
    EXPECT_TRUE(find<QLabel>(dialog, "FunctionFillCalcTableLabel")->font().bold()); // as before closing
    EXPECT_TRUE(find<QPushButton>(dialog, "InsertRowButton")->isEnabled());
  });
}

TEST(Editors, ASegmentOfManyIsChosenByItsNumber) {
  running_program program;
  program.form().open_file(SAMPLE);
  program.form().current_data_set->resize_segments(20'000);
  with_dialog([&] { program.trigger("FlowsItem"); },
              [&](QWidget* dialog) {
                grid_view* pairs = grid_of(dialog, "PairsFillCalcTable");
                enter(dialog, pairs);
                pairs->table().set_active(0, 1);
                type(pairs, "15000");
                QLineEdit* line = open_line(pairs);
                auto* list = find<QListView>(dialog, "ItemList");
                EXPECT_EQ(list->currentIndex().row(), 14'999);
                QTest::keyClick(line, Qt::Key_Down);
                EXPECT_EQ(line->text(), "15001: Vesk Segment");
                take_picture(dialog, "many_segments");
                QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                                  list->visualRect(list->currentIndex()).center());
                const auto& pair = program.form().current_data_set->flow_fields[0].functions[0].pairs[0];
                EXPECT_TRUE(wait_for([&] { return pair.to_segment == 15'000; }));
                EXPECT_TRUE(wait_for([&] { return !open_line(pairs) && !dialog->findChild<QListView*>("ItemList"); }));
                return press(dialog, "Cancel");
              });
}

TEST(Editors, ASegmentOfFewIsAlsoChosenByItsNumber) {
  running_program program;
  program.form().open_file(SAMPLE);
  program.form().current_data_set->resize_segments(3);
  with_dialog([&] { program.trigger("FlowsItem"); },
              [&](QWidget* dialog) {
                grid_view* pairs = grid_of(dialog, "PairsFillCalcTable");
                enter(dialog, pairs);
                pairs->table().set_active(0, 1);
                type(pairs, "3");
                EXPECT_EQ(find<QListView>(dialog, "ItemList")->currentIndex().row(), 2);
                QTest::keyClick(open_line(pairs), Qt::Key_Return);
                const auto& fields = program.form().current_data_set->flow_fields;
                EXPECT_TRUE(wait_for([&] { return fields[0].functions[0].pairs[0].to_segment == 2; }));
                return press(dialog, "Cancel");
              });
}

// A job started before, or from the dialog, replaces the data set while windows are open.
TEST(Editors, AJobMayEndUnderThem) {
  running_program program;
  program.form().open_file(SAMPLE);
  const auto end_a_job = [&](QWidget* dialog) {
    with_dialog(
        [&] {
          program.form().start_validity_check();
          EXPECT_TRUE(wait_for([&] { return !program.form().active_thread; }));
        },
        [&](QWidget* box) { return box->windowTitle().startsWith("Validity check") && press(box, "OK"); });
    EXPECT_TRUE(dialog->isVisible());
  };
  with_dialog([&] { program.trigger("ConstantsItem"); },
              [&](QWidget* dialog) {
                grid_view* grid = grid_of(dialog);
                grid->table().enter(0, 2, "0.4");
                grid->table().enter(1, 2, "no number");
                end_a_job(dialog);
                EXPECT_EQ(text_of(dialog, "MessageLabel"),
                          "A job has replaced the data set. If it changed the input, Undo restores the previous one.");
                EXPECT_FALSE(grid->table().refused());
                grid->table().enter(0, 2, "0.5");
                return press(dialog, "OK");
              });
  EXPECT_EQ(program.form().current_data_set->constant_groups[0].constants[0].value, 0.5);

  bool started = false;
  with_dialog([&] { program.trigger("TimestepItem"); },
              [&](QWidget* dialog) {
                TFillCalcTable& table = grid_of(dialog)->table();
                table.enter(1, 0, table.text(0, 0)); // a duplicate, which refuses OK
                with_dialog([&] { press(dialog, "OK"); },
                            [&](QWidget* box) {
                              if (!std::exchange(started, true)) program.form().start_validity_check();
                              if (box->windowTitle() != "Cannot accept data") {
                                press(box, "OK");
                                return false;
                              }
                              return !program.form().active_thread && press(box, "OK");
                            });
                EXPECT_TRUE(dialog->isVisible());
                return press(dialog, "Cancel");
              });
  EXPECT_FALSE(program.form().active_thread);
}

TEST(Editors, TheSettingsWaitForTheRestartFileAndGoOnWhenItIsCancelled) {
  running_program program;
  program.form().open_file(SAMPLE);
  with_dialog([&] { program.trigger("ParameterizationItem"); },
              [&](QWidget* dialog) {
                find<QLineEdit>(dialog, "DatasetNameEdit")->setText("typed");
                program.form().start_load_restart_file("missing.rst");
                auto* ok = dialog->findChild<QPushButton*>();
                for (auto* button : dialog->findChildren<QPushButton*>())
                  if (button->text() == "OK") ok = button;
                EXPECT_FALSE(ok->isEnabled());
                dialog->close(); // cancels the job, not the dialog
                EXPECT_TRUE(dialog->isVisible());
                EXPECT_TRUE(wait_for([&] { return !program.form().active_thread; }));
                EXPECT_TRUE(ok->isEnabled());
                EXPECT_EQ(find<QLineEdit>(dialog, "DatasetNameEdit")->text(), "typed");
                return press(dialog, "OK");
              });
  EXPECT_EQ(program.form().current_data_set->description, "typed");
}

TEST(Editors, TheSettingsOutliveTheirCatalogue) {
  const temporary_folder folder;
  std::filesystem::copy(CATALOGUE, folder.path / "database");
  running_program program;
  program.form().set_database_folder(folder.file("database"));
  program.form().new_data_set();
  with_dialog([&] { program.trigger("ParameterizationItem"); },
              [&](QWidget* dialog) {
                std::filesystem::remove_all(folder.path / "database");
                auto* models = find<QComboBox>(dialog, "ModelTypeComboBox");
                EXPECT_GT(models->count(), 1);
                models->setCurrentIndex(1);
                emit models->activated(1);
                EXPECT_TRUE(text_of(dialog, "MessageLabel").startsWith("OK drops"));
                return press(dialog, "OK");
              });
  EXPECT_FALSE(program.form().current_data_set->systems.empty());
}

TEST(Editors, ResultsAreCopiedAsEveryGrid) {
  running_program program({}, "RunTimeGridAlwaysVisible=1\n");
  program.window().initialize_grid({"one", "two"}, 2);
  auto* grid = find<grid_view>(&program.window(), "ResultsTable");
  EXPECT_EQ(grid->model().headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(), "two");
  grid->selectAll();
  grid->setFocus();
  QTest::keyClick(grid, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "one\ttwo\n\t\n\t\n");
}

} // namespace
} // namespace vesk
