#include "charts/graph_form.h"
#include "editing_host.h"
#include "editors/constants_form.h"
#include "editors/output_control_form.h"
#include "editors/parameter_form.h"
#include "editors/print_interval_form.h"
#include "editors/system_form.h"
#include "editors/time_functions_form.h"
#include "editors/time_step_form.h"
#include "print_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace vesk {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int32_t first_day = 150754; // 1 October 2012

moment_value_pair_type point(std::int32_t day, std::int32_t second, double value) {
  return {{first_day + day, second}, value};
}

struct Editors : testing::Test {
  Editors() {
    prevesk_dataset_data_type& data = host.data;
    data.seed_date = first_day - date_time_origin;
    data.end_date = data.seed_date + 10;
    data.seed_time = data.end_time = 0;
    data.apply_seed();
    data.print_intervals.points = {point(0, 0, 1), point(5, 0, 0.25)};
    for (const auto* name : {"Ammonium", "Oxygen"}) {
      system_data_type system;
      system.description = name;
      system.jmass = system.description == "Ammonium";
      data.systems.push_back(system);
    }
    parameter_data_type parameter;
    parameter.description = "Temperature";
    data.parameters.push_back(parameter);
    for (const auto* name : {"Light", "Wind"}) {
      time_function_data_type function;
      function.description = name;
      function.used = true;
      data.time_functions.push_back(function);
    }
    data.time_functions.edit(0).points = {point(0, 0, 10), point(1, 43200, 20)};
    for (const auto* name : {"Decay", "Reaeration"}) {
      constant_group_data_type group;
      group.description = name;
      constant_data_type constant;
      constant.description = std::string(name) + " rate";
      constant.used = true;
      constant.value = constant.default_value = 0.1;
      constant.maximum = 10;
      group.constants.push_back(constant);
      data.constant_groups.push_back(group);
    }
    output_control_type output;
    output.description = "Oxygen";
    output.units = "g/m3";
    data.output_controls.push_back(output);
  }
  ~Editors() override { moment_type::moment_seed_is_set = false; }

  template <class Form>
  TFillCalcTable& shown(Form& form, std::size_t panel = 0) {
    host.open = &form;
    form.FormShow();
    return form.panels()[panel]->table;
  }

  editing_host host;
};

TEST_F(Editors, ASeriesIsTypedSortedAndChecked) {
  TPrintIntervalForm form(host);
  TFillCalcTable& table = shown(form);
  editor_panel& panel = *form.panels()[0];
  EXPECT_EQ(print(table), "10/01/2012|00:00|1.0000\n10/06/2012|00:00|0.2500\n");
  EXPECT_EQ(form.status(panel), "2 points, 1 Oct 2012 to 6 Oct 2012, minimum 0.25, mean 0.625, maximum 1");
  EXPECT_EQ(table.tool_tip(0, 2), "In days. \"30 s\", \"5 min\", \"6 h\" and \"1 d\" are accepted as well.");

  table.set_active(1, 0);
  EXPECT_TRUE(table.extend_on_down(move_command::down)); // at the seed, so it sorts first after the edit
  EXPECT_TRUE(table.enter(2, 2, "6 h"));
  EXPECT_EQ(print(table), "10/01/2012|00:00|1.0000\n10/01/2012|00:00|0.2500\n10/06/2012|00:00|0.2500\n");
  EXPECT_EQ(table.tool_tip(1, 0), "Another row has the same date and time.");
  EXPECT_FALSE(form.FormCloseQuery(true));
  EXPECT_TRUE(form.FormCloseQuery(false));
  EXPECT_THAT(host.boxes, ElementsAre("Cannot accept data: Each record must be unique"));

  table.enter(1, 0, "2012-10-02");
  EXPECT_TRUE(form.FormCloseQuery(true));
  table.enter(1, 2, "0");
  EXPECT_THAT(table.tool_tip(1, 2), HasSubstr("The bundled engine refuses an interval of 0 or less."));
  form.GraphButtonClick(panel);
  ASSERT_EQ(host.graphs.size(), 1U);
  EXPECT_EQ(host.graphs[0]->series()[0]->label, "Print Interval");
  EXPECT_TRUE(host.graphs[0]->series()[0]->steps);
}

TEST_F(Editors, DeletingTheOnlyPointLeavesABlankRow) {
  TPrintIntervalForm form(host);
  TFillCalcTable& table = shown(form);
  editor_panel& panel = *form.panels()[0];
  form.DeleteAllButtonClick(panel);
  form.DeleteRowButtonClick(panel);
  EXPECT_EQ(print(table), "||\n");
  EXPECT_FALSE(table.extend_on_down(move_command::down));
  host.clipboard = "kept";
  form.CopyButtonClick(panel);
  EXPECT_EQ(host.clipboard, "kept");
  form.GraphButtonClick(panel);
  EXPECT_EQ(form.message(), "Nothing to draw: no values.");
  EXPECT_THAT(form.status(panel), HasSubstr("This series is used, but it has no points."));
  form.InsertRowButtonClick(panel);
  EXPECT_EQ(print(table), "10/01/2012|00:00|0.0000\n");
}

TEST_F(Editors, EveryOperationIsOneStep) {
  TPrintIntervalForm form(host);
  TFillCalcTable& table = shown(form);
  editor_panel& panel = *form.panels()[0];
  const std::string before = print(table);
  host.clipboard = "2012-10-03\t12:00\t2\n2012-10-04\t\t3\n";
  form.PasteButtonClick(panel);
  EXPECT_THAT(host.boxes, ElementsAre("Paste: Line 2, column 2: expected a time as HH:MM or HH:MM:SS, found \"\". "
                                      "Nothing was pasted."));
  EXPECT_EQ(host.undo_label(), "");
  host.clipboard = "2012-10-03\t12:00\t2\n2012-10-13\t0:00\t3\n";
  form.PasteButtonClick(panel);
  EXPECT_EQ(form.message(), "Pasted: 2 rows, 3 Oct 2012 to 13 Oct 2012.");
  EXPECT_THAT(form.status(panel), HasSubstr("1 of 2 points is outside the run"));
  host.expression = "x / 2";
  table.set_selection(cell_range{0, 2, 1, 2});
  form.FillCalcButtonClick(panel);
  EXPECT_EQ(host.undo_label(), "Print Interval: Fill/Calc");
  EXPECT_EQ(print(table), "10/03/2012|12:00|1.0000\n10/13/2012|00:00|1.5000\n");
  form.undo();
  form.undo();
  EXPECT_EQ(form.message(), "Undone: Paste.");
  EXPECT_EQ(print(table), before);
  form.redo();
  EXPECT_EQ(form.message(), "Redone: Paste.");
  EXPECT_EQ(print(table), "10/03/2012|12:00|2.0000\n10/13/2012|00:00|3.0000\n");
  host.expression = "x / (2 - i)"; // refused in the second row
  table.set_selection(cell_range{0, 2, 1, 2});
  host.boxes.clear();
  form.FillCalcButtonClick(panel);
  EXPECT_THAT(host.boxes, ElementsAre(HasSubstr("Row 2: the result is not a finite number. Nothing was filled.")));
  EXPECT_EQ(print(table), "10/03/2012|12:00|2.0000\n10/13/2012|00:00|3.0000\n");
  EXPECT_EQ(table.selection().rows(), 2U);
  host.expression.reset();
  form.FillCalcButtonClick(panel);
  EXPECT_EQ(host.undo_label(), "Print Interval: Paste");
}

TEST_F(Editors, AStepThatFailsHalfwayIsTakenBack) {
  TTimeFunctionsForm form(host);
  TFillCalcTable& table = shown(form);
  const prevesk_dataset_data_type before = host.data;
  const auto fail = [&](auto& owner) {
    history_step step(owner, "Half");
    host.data.time_functions.clear();
    throw std::bad_alloc();
  };
  EXPECT_THROW(fail(table), std::bad_alloc);
  EXPECT_EQ(host.data, before);
  EXPECT_THROW(fail(static_cast<editor_host&>(host)), std::bad_alloc);
  EXPECT_EQ(host.data, before);
  EXPECT_EQ(host.undo_label(), "");
}

TEST_F(Editors, ARefusedEntryHoldsUpEveryCommandButCancel) {
  TPrintIntervalForm form(host);
  TFillCalcTable& table = shown(form);
  EXPECT_FALSE(table.enter(0, 0, "13/45/2012"));
  form.DeleteAllButtonClick(*form.panels()[0]);
  EXPECT_EQ(table.row_limit(), 2U);
  EXPECT_EQ(form.status(*form.panels()[0]),
            "Row 1: \"13/45/2012\" is not a day of the calendar. Correct it, or press Escape for the old value.");
  EXPECT_FALSE(form.FormCloseQuery(true));
  EXPECT_THAT(host.boxes, IsEmpty());
  EXPECT_TRUE(form.FormCloseQuery(false));
}

TEST_F(Editors, RegularTimesAndInterpolation) {
  TPrintIntervalForm form(host);
  TFillCalcTable& table = shown(form);
  editor_panel& panel = *form.panels()[0];
  host.on_regular_times = [](TRegularTimesForm& times) {
    times.StepField.enter("48 h");
    times.EndDateField.enter("2012-10-06");
    return times.FormCloseQuery(true);
  };
  form.regular_times_click(panel);
  EXPECT_EQ(print(table), "10/01/2012|00:00|1.0000\n10/03/2012|00:00|0.7000\n10/05/2012|00:00|0.4000\n"
                          "10/06/2012|00:00|0.2500\n");
  table.enter(2, 2, "9");
  table.set_selection(cell_range{0, 2, 3, 2});
  form.interpolate_between(panel);
  EXPECT_EQ(table.text(2, 2), "0.4000");
  EXPECT_EQ(host.undo_label(), "Print Interval: Interpolate between");
  host.on_regular_times = [](TRegularTimesForm& times) {
    times.StepField.enter("1 s");
    EXPECT_EQ(times.StepField.text(), "1 s");
    EXPECT_EQ(times.StepField.value(), 1 / 86400.0);
    times.EndDateField.enter("2011-10-06");
    EXPECT_EQ(times.message(), "The end is before the start.");
    return times.FormCloseQuery(true);
  };
  form.regular_times_click(panel);
  EXPECT_EQ(table.row_limit(), 4U);
}

TEST_F(Editors, ADeferredSeriesCanKeepItsPoints) {
  host.data.print_intervals.query.edit().deferred = true;
  TPrintIntervalForm form(host);
  shown(form);
  editor_panel& panel = *form.panels()[0];
  EXPECT_EQ(form.deferred_note(panel), "Filled by its query before each run. Changes made here do not affect a run.");
  form.keep_these_points(panel);
  EXPECT_EQ(form.deferred_note(panel), "");
  form.undo();
  EXPECT_TRUE(host.data.print_intervals.query->deferred);
}

TEST_F(Editors, TheFirstTimeStepsFillEmptySeries) {
  loads_data_type load;
  host.data.systems.edit(0).loads.push_back(load);
  host.data.print_intervals.points.clear();
  TTimeStepForm form(host);
  TFillCalcTable& table = shown(form);
  form.InsertRowButtonClick(*form.panels()[0]);
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_TRUE(host.data.print_intervals.points.empty()); // one row is not enough
  form.FormShow();
  table.extend_on_down(move_command::down);
  table.enter(1, 0, "10/11/2012");
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_TRUE(host.data.print_intervals.points.empty()); // there were rows on opening
  host.data.time_steps.points.clear();
  form.FormShow();
  host.clipboard = "2012-10-01\t0:00\t1\n2012-10-11\t0:00\t1\n";
  form.PasteButtonClick(*form.panels()[0]);
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_EQ(host.data.print_intervals.points.size(), 2U);
  EXPECT_EQ(host.data.time_functions[1].points.size(), 2U);
  EXPECT_EQ(host.data.time_functions[0].points[1].value, 20); // had a series
  EXPECT_EQ(host.data.systems[0].loads[0].points.size(), 2U);
}

TEST_F(Editors, TimeFunctionsShowTheSeriesOfTheActiveRow) {
  TTimeFunctionsForm form(host);
  TFillCalcTable& list = shown(form);
  const editor_panel& detail = *form.panels()[1];
  EXPECT_EQ(print(list), "Light|1|Linear\nWind|1|Linear\n");
  EXPECT_EQ(detail.label, "Time/value pairs for Light");
  EXPECT_EQ(print(detail.table), "10/01/2012|00:00|10\n10/02/2012|12:00|20\n");
  list.set_active(1, 0);
  EXPECT_EQ(detail.label, "Time/value pairs for Wind");
  EXPECT_TRUE(detail.table.is_shown_as_empty());
  list.enter(1, 0, "Gale");
  EXPECT_EQ(detail.label, "Time/value pairs for Gale");
  list.enter(1, 2, "Step");
  form.InsertRowButtonClick(*form.panels()[1]);
  form.InsertRowButtonClick(*form.panels()[1]);
  EXPECT_FALSE(form.FormCloseQuery(true));
  EXPECT_THAT(host.boxes, ElementsAre("Cannot accept data: Detected duplicate moment in time function for\r\nGale"));
  list.set_active(0, 0);
  form.go_to_next_mark(); // goes to the entry that OK refused
  EXPECT_EQ(list.active_row(), 1U);
  EXPECT_EQ(list.tool_tip(1, 1), "Two of its points have the same date and time.");
  list.enter(1, 1, "no"); // unused functions are not checked
  EXPECT_TRUE(form.FormCloseQuery(true));
  host.data.time_functions.clear();
  form.data_set_replaced();
  EXPECT_EQ(detail.label, "Time/value pairs");
  EXPECT_EQ(form.message(),
            "A job has replaced the data set. If it changed the input, Undo restores the previous one.");
  form.InsertRowButtonClick(*form.panels()[1]); // nothing to insert into
}

// Only consecutive cells typed into the same series become one step.
TEST_F(Editors, StepsThatMayMerge) {
  const auto key = [this] { return host.merge_keys.empty() ? "" : host.merge_keys.back(); };
  const time_function_data_type light = host.data.time_functions[0];
  host.data.time_functions.edit(1) = light; // of the same name
  TTimeFunctionsForm functions(host);
  TFillCalcTable& list = shown(functions);
  TFillCalcTable& detail = functions.panels()[1]->table;
  detail.enter(0, 2, "1");
  const std::string first = key();
  EXPECT_NE(first, "");
  detail.enter(1, 2, "1");
  EXPECT_EQ(key(), first);
  list.set_active(1, 0);
  detail.enter(0, 2, "1");
  EXPECT_NE(key(), first);
  list.click(1, 1);
  EXPECT_EQ(key(), "");
  detail.insert_row_at_active();
  EXPECT_EQ(key(), "");
}

TEST_F(Editors, ARefusedEntryIsNotDroppedByLookingElsewhere) {
  TTimeFunctionsForm functions(host);
  TFillCalcTable& list = shown(functions);
  TFillCalcTable& detail = functions.panels()[1]->table;
  EXPECT_FALSE(detail.enter(0, 2, "1,5"));
  list.set_active(1, 1);
  EXPECT_EQ(list.active_row(), 0U);
  list.click(0, 1);
  EXPECT_FALSE(list.enter(0, 2, "Step"));
  EXPECT_EQ(print(list), "Light|1|Linear\nWind|1|Linear\n");
  EXPECT_EQ(detail.text(0, 2), "1,5");
  detail.give_up_refused();
  list.set_active(1, 1);
  EXPECT_EQ(functions.panels()[1]->label, "Time/value pairs for Wind");
  TConstantsForm constants(host);
  TFillCalcTable& table = shown(constants);
  EXPECT_FALSE(table.enter(0, 2, "1,5"));
  constants.ChoiceChange(1);
  EXPECT_EQ(constants.choice()->position, 0U);
  EXPECT_EQ(table.text(0, 2), "1,5");
}

TEST_F(Editors, TheNextMarkIsLookedForInAllGrids) {
  host.data.time_functions.edit(0).points.edit(1).value = std::nan("");
  TTimeFunctionsForm form(host);
  TFillCalcTable& list = shown(form);
  TFillCalcTable& detail = form.panels()[1]->table;
  EXPECT_EQ(list.tool_tip(0, 1), "");
  EXPECT_EQ(list.tool_tip(1, 1), "This series is used, but it has no points.");
  form.go_to_next_mark(); // in the list
  EXPECT_EQ(list.active_row(), 1U);
  list.set_active(0, 2);
  detail.set_active(0, 0);
  form.go_to_next_mark(); // again the list's
  list.set_active(0, 0);
  list.click(1, 1); // no longer used
  form.go_to_next_mark();
  EXPECT_EQ(detail.active_row(), 1U);
  form.FormShow(); // the series starts at its first row
  EXPECT_EQ(detail.active_row(), 0U);
  form.go_to_next_mark();
  form.go_to_next_mark(); // wraps around
  EXPECT_EQ(detail.active_row(), 1U);
  EXPECT_EQ(form.message(), "");
}

// Texts and positions that a file may contain although nobody can type them.
TEST_F(Editors, StoredValuesSurviveCopyAndPaste) {
  host.data.time_functions.edit(1).description = "W\xF6rth \"north\""; // Windows-1252
  host.data.time_functions.edit(1).interpolation_type = 2;
  TTimeFunctionsForm form(host);
  TFillCalcTable& list = shown(form);
  EXPECT_EQ(list.text(1, 2), "Step");
  const prevesk_dataset_data_type before = host.data;
  list.set_selection(cell_range{0, 0, 1, 2});
  form.CopyButtonClick(*form.panels()[0]);
  EXPECT_EQ(host.clipboard, "Light\t1\tLinear\nWörth \"north\"\t1\tStep\n");
  form.PasteButtonClick(*form.panels()[0]);
  EXPECT_EQ(host.data, before);
  host.data.constant_groups.edit(0).constants.edit(0).value = std::nan("");
  TConstantsForm constants(host);
  EXPECT_THAT(shown(constants).tool_tip(0, 2), HasSubstr("The value is not a finite number."));
}

TEST_F(Editors, OneSystemHasTheMassBalance) {
  TSystemForm form(host);
  TFillCalcTable& table = shown(form);
  EXPECT_EQ(table.text(0, 3), "1");
  table.click(1, 3);
  EXPECT_FALSE(host.data.systems[0].jmass);
  EXPECT_TRUE(host.data.systems[1].jmass);
  const std::size_t steps = host.merge_keys.size();
  table.click(1, 3);
  EXPECT_TRUE(host.data.systems[1].jmass);
  EXPECT_EQ(host.merge_keys.size(), steps); // nothing to undo
  table.set_selection(cell_range{0, 3, 1, 3});
  EXPECT_EQ(table.do_paste("1\n0\n").refusal, "");
  EXPECT_EQ(table.calculate_selection("1"), "The selected cells cannot be changed.");
  EXPECT_FALSE(host.data.systems[0].jmass);
  table.click(0, 4);
  EXPECT_TRUE(host.data.systems[0].norsysbypass);
  EXPECT_TRUE(table.enter(0, 1, "Constant"));
  EXPECT_EQ(host.data.systems[0].gsysbypass, system_constant);
}

TEST_F(Editors, ConstantsAreShownByGroup) {
  TConstantsForm form(host);
  TFillCalcTable& table = shown(form);
  EXPECT_THAT(form.choice()->items, ElementsAre("Decay", "Reaeration"));
  form.ChoiceChange(1);
  EXPECT_EQ(print(table), "Reaeration rate|1|0.1|0.0000|10.0000\n");
  EXPECT_EQ(table.tool_tip(0, 2), "default 0.1, from 0 to 10");
  table.enter(0, 2, "12");
  EXPECT_EQ(table.tool_tip(0, 2),
            "The value is outside the catalogue's range, from 0 to 10.\ndefault 0.1, from 0 to 10");
  EXPECT_TRUE(form.FormCloseQuery(true)); // and is accepted
  table.set_active(0, 2);
  form.back_to_default(*form.panels()[0]);
  EXPECT_EQ(host.data.constant_groups[1].constants[0].value, 0.1);
  table.enter(0, 2, "0");
  table.click(0, 1);
  EXPECT_EQ(form.message(), "");
  table.click(0, 1); // used again
  EXPECT_EQ(form.message(), "\"Reaeration rate\" is now used with the value 0. The catalogue's default is 0.1: "
                            "\"Back to the default\" in the menu of the value sets it.");
  form.FormShow();
  EXPECT_EQ(form.choice()->position, 0U);
  EXPECT_EQ(table.active_column(), 2U); // stays
  host.data.constant_groups.clear();
  form.data_set_replaced();
  EXPECT_THAT(form.choice()->items, IsEmpty());
  EXPECT_EQ(form.status(*form.panels()[0]), "The model has none of these.");
  host.expression = "1";
  form.FillCalcButtonClick(*form.panels()[0]); // asks for no expression
  EXPECT_EQ(form.message(), "This table has no rows to fill.");
  EXPECT_THAT(host.boxes, IsEmpty());
}

// Reads and changes every cell of every editor, then undoes the change; nothing else changes.
TEST_F(Editors, EveryCellTakesAnEntryAndGivesItBack) {
  TPrintIntervalForm print_interval(host);
  TTimeStepForm time_step(host);
  TTimeFunctionsForm time_functions(host);
  TSystemForm systems(host);
  TConstantsForm constants(host);
  TParameterForm parameters(host);
  TOutputControlForm outputs(host);
  host.data.time_steps.points = {point(0, 0, 0.01)};
  const prevesk_dataset_data_type before = host.data;
  std::size_t entries = 0;
  for (editor* form : std::initializer_list<editor*>{&print_interval, &time_step, &time_functions, &systems, &constants,
                                                     &parameters, &outputs}) {
    host.open = form;
    form->FormShow();
    for (const auto& panel : form->panels())
      for (std::size_t column = 0; column < panel->table.content().columns().size(); ++column) {
        const grid_column& c = panel->table.content().columns()[column];
        const std::string exact = panel->table.entry_text(0, column);
        EXPECT_TRUE(panel->table.enter(0, column, exact)) << form->class_name() << column;
        EXPECT_EQ(host.data, before);
        if (!c.editable) continue;
        if (c.type.kind == cell_kind::check) {
          panel->table.click(c.typed_only ? 1 : 0, column);
        } else {
          const std::string entry = c.type.kind == cell_kind::date     ? "10/04/2012"
                                    : c.type.kind == cell_kind::time   ? "13:14:15"
                                    : c.type.kind == cell_kind::number ? "123.456789"
                                    : c.type.kind == cell_kind::combo  ? c.type.items->text(1)
                                                                       : "Wörter";
          EXPECT_TRUE(panel->table.enter(0, column, entry)) << form->class_name() << column;
        }
        EXPECT_NE(host.data, before) << form->class_name() << " column " << column;
        form->undo();
        EXPECT_EQ(host.data, before) << form->class_name() << " column " << column;
        ++entries;
      }
  }
  EXPECT_EQ(entries, 3U + 3 + (3 + 3) + 12 + 3 + 3 + 4);
}

} // namespace
} // namespace vesk
