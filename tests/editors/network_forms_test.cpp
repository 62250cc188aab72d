#include "charts/graph_form.h"
#include "dataset/network.h"
#include "editors/boundary_form.h"
#include "editors/exchanges_flows_form.h"
#include "editors/loads_form.h"
#include "editors/segment_form.h"
#include "network_forms.h"
#include "print_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vesk {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Segments = NetworkForms;
using ExchangesFlows = NetworkForms;
using Trees = NetworkForms;

TEST_F(Segments, RowsComeAndGoWithTheirRecords) {
  TSegmentForm form(host);
  TFillCalcTable& table = shown(form);
  TFillCalcTable& parameters = form.panels()[1]->table;
  EXPECT_TRUE(parameters.enter(1, 0, "21.5"));
  EXPECT_EQ(host.data.segments[1].parameters[0].value, 21.5);
  EXPECT_TRUE(form.panels()[3]->table.enter(0, 1, "1.5"));
  EXPECT_EQ(form.panels()[3]->table.tool_tip(0, 1), "A dissolved fraction must lie between 0 and 1.\n1: Weldon");

  form.panels()[2]->table.set_active(1, 0); // the pages share the active row
  EXPECT_EQ(table.active_row(), 1U);
  form.InsertButtonClick();
  EXPECT_EQ(host.data.segments.size(), 4U);
  EXPECT_EQ(verify(host.data), "");
  EXPECT_EQ(host.data.segments[1].segment_type, 7U);
  EXPECT_EQ(host.data.segments[2].parameters[0].value, 21.5);
  EXPECT_EQ(parameters.row_limit(), 4U);
  host.undo();
  EXPECT_EQ(parameters.row_limit(), 3U);

  host.clipboard = "New one\t5e6\nNew two\t6e6\n";
  table.set_active(2, 0);
  form.PasteButtonClick(*form.panels()[0]);
  EXPECT_EQ(host.data.segments.size(), 4U);
  EXPECT_EQ(host.data.segments[3].volume, 6e6);
  EXPECT_EQ(verify(host.data), "");
  for (int i = 0; i < 4; ++i) form.DeleteButtonClick();
  EXPECT_TRUE(host.data.segments.empty());

  host.data.resize_segments(12); // a block that was selected downwards
  shown(form);
  table.set_active(8, 0);
  table.set_selection(cell_range{3, 0, 8, 0});
  form.delete_selected_rows(*form.panels()[0]);
  for (const auto& panel : form.panels()) EXPECT_EQ(panel->table.active_row(), 3U) << panel->name;
  table.delete_all_rows();
  EXPECT_THAT(form.status(*form.panels()[0]), HasSubstr("choose Insert"));
}

TEST_F(Segments, CombosShowPositionsAndKeepWhatTheyDoNotKnow) {
  host.data.segments.edit(0).segment_type = 55;
  host.data.segments.edit(2).bottom_segment = 9;
  TSegmentForm form(host);
  TFillCalcTable& table = shown(form);
  enum : std::size_t { type = 6, bottom = 7 };
  EXPECT_EQ(table.text(0, type), "Surface");
  EXPECT_EQ(table.tool_tip(0, type), "The model has no segment type 55; the first one is shown.");
  EXPECT_EQ(host.data.segments[0].segment_type, 55U);
  EXPECT_TRUE(table.enter(0, type, "Surface", true)); // chosen from the list
  EXPECT_EQ(host.data.segments[0].segment_type, 7U);
  EXPECT_TRUE(table.enter(0, type, "bed"));
  EXPECT_EQ(host.data.segments[0].segment_type, 9U);
  EXPECT_EQ(table.text(1, bottom), "None");
  EXPECT_EQ(table.text(2, bottom), "3: Oak City"); // set to the last segment
  EXPECT_EQ(form.message(), "References past the last segment now refer to it: 1 bottom reference.");
  for (const auto& [entry, reference] : std::vector<std::pair<const char*, int>>{
           {"3: oak city", 2}, {"halifax", 1}, {"1", 0}, {"0", -1}, {"2: Halifax", 1}, {"none", -1}}) {
    EXPECT_TRUE(table.enter(1, bottom, entry)) << entry;
    EXPECT_EQ(host.data.segments[1].bottom_segment, reference) << entry;
  }
  EXPECT_TRUE(table.enter(2, 0, "Halifax")); // now two have this name
  EXPECT_FALSE(table.enter(1, bottom, "halifax"));
  host.data.model_type = 99; // not in the catalogue: no types to choose from
  shown(form);
  EXPECT_EQ(table.content().columns()[type].type.items->size(), 0U);
  EXPECT_EQ(table.text(0, type), "");
  table.set_active(0, type);
  EXPECT_EQ(table.do_paste("Surface").refusal, "");
  EXPECT_EQ(host.data.segments[0].segment_type, 9U);
}

// The catalogue may have been exchanged for one that does not fit.
TEST_F(Segments, ACatalogueWithOtherListsTakesNothingAway) {
  loads_data_type load;
  load.points = {{{150754, 0}, 3}};
  for (std::size_t system = 0; system < 2; ++system) host.data.systems.edit(system).loads.push_back(load);
  host.data.parameters.edit(1).used = true;
  host.data.segments.edit(1).parameters.set(0, {0, 21.5});
  host.data.segments.edit(1).systems.set(1, {0, 4, 0.5});
  const prevesk_dataset_data_type before = host.data;
  const auto without_the_last = [](catalogue_model& model) { model.systems.pop_back(); };
  const auto with_one_in_front = [](catalogue_model& model) {
    model.systems.insert(model.systems.begin(), {9, "Phosphorus"});
    model.parameters.insert(model.parameters.begin(), {8, 0, 1, 0, "Wind"});
  };
  const auto without_the_model = [](catalogue_model& model) { model.model_id = 99; };
  for (const std::function<void(catalogue_model&)>& change :
       {std::function<void(catalogue_model&)>(without_the_last), {with_one_in_front}, {without_the_model}}) {
    host.data = before;
    model_catalogue other = *before.catalogue();
    change(other.models[0]);
    host.data.set_catalogue(std::make_shared<const model_catalogue>(other));
    TSegmentForm form(host);
    shown(form);
    form.InsertButtonClick();
    host.clipboard = "One";
    form.PasteButtonClick(*form.panels()[0]);
    form.insert_and_renumber_click();
    EXPECT_EQ(verify(host.data), "");
    EXPECT_EQ(host.data.segments[3], before.segments[1]);
    EXPECT_EQ(host.data.segments[1].systems[1].fraction_dissolved, 1);
    form.delete_and_renumber_click();
    EXPECT_EQ(host.data.systems, before.systems);
    EXPECT_EQ(host.data.parameters, before.parameters);
  }
}

// A name may be in Windows-1252, and contain any script.
TEST_F(Segments, NamesOfAllScriptsAreFoundAndShown) {
  host.data.segments.edit(0).name = "M\xfchle";
  host.data.segments.edit(1).name = "Мост";
  host.data.systems.edit(0).description = "Sauerstoff g\xf6l\xf6st";
  TSegmentForm form(host);
  TFillCalcTable& table = shown(form);
  for (const char* entry : {"1: mühle", "MÜHLE", "мост"}) EXPECT_TRUE(table.enter(2, 7, entry)) << entry;
  EXPECT_EQ(host.data.segments[2].bottom_segment, 1);
  EXPECT_TRUE(table.enter(1, 7, "mühle"));
  table.set_active(1, 7);
  EXPECT_EQ(table.do_copy(), "1: Mühle\n");
  form.find_next(nullptr, "ÜHL");
  EXPECT_EQ(table.active_row(), 0U);
  EXPECT_EQ(form.panels()[2]->table.content().columns()[0].header, "Sauerstoff gölöst");
  TLoadsForm loads(host);
  shown(loads);
  loads.go_to_segment(0);
  EXPECT_EQ(loads.message(), "No row here refers to segment 1 (Mühle).");
  loads.add_all_loads(0);
  loads.select(editor_tree::node{0, 1});
  EXPECT_EQ(loads.panels()[0]->label, "Time functions for segment 2 (Мост), Sauerstoff gölöst");
}

// A large network must not stay in memory for the names of its segments.
TEST_F(Segments, TheirNamesAreForgottenWithTheForm) {
  host.data.flow_fields.edit(0).functions.resize(1);
  host.data.flow_fields.edit(0).functions.edit(0).pairs = {{1, 0, 1}};
  TSegmentForm form(host);
  TExchangesFlowsForm flows(host);
  flows.exchange_mode = false;
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(shown(form).enter(0, 7, "halifax")); // changes nothing the second time
  EXPECT_TRUE(shown(flows, 2).enter(0, 0, "halifax"));
  EXPECT_TRUE(form.FormCloseQuery(true) && flows.FormCloseQuery(false));
  host.forget_steps();
  const segment_data_type* first = &host.data.segments[0];
  host.data.segments.edit(0).volume = 1; // copies what somebody else still holds
  EXPECT_EQ(&host.data.segments[0], first);
}

TEST_F(Segments, ParametersGoBackToTheCataloguesDefault) {
  host.data.parameters.edit(0).default_value = 20;
  host.data.parameters.edit(0).used = true;
  TSegmentForm form(host);
  shown(form);
  editor_panel& parameters = *form.panels()[1];
  EXPECT_EQ(parameters.table.tool_tip(0, 0), "1: Weldon\ndefault 20, from 0 to 30");
  EXPECT_TRUE(parameters.table.enter(0, 0, "31"));
  form.back_to_default(parameters);
  EXPECT_EQ(host.data.segments[0].parameters[0].value, 20);
  EXPECT_FALSE(form.panels()[2]->table.has_default());
}

// The paste itself creates and names the items of the bottom segments.
TEST_F(Segments, PastedBottomsAreAmongTheRowsThatCome) {
  host.data.segments.edit(0).bottom_segment = 2;
  host.data.segments.edit(2).bottom_segment = 0;
  TSegmentForm form(host);
  TFillCalcTable& table = shown(form);
  const auto paste = [&](const std::string& text) {
    host.clipboard = text;
    form.PasteButtonClick(*form.panels()[0]);
    EXPECT_EQ(verify(host.data), "");
    std::vector<int> bottoms;
    for (const segment_data_type& segment : host.data.segments) bottoms.push_back(segment.bottom_segment);
    return bottoms;
  };
  const auto select_all = [&] { table.set_selection(cell_range{0, 0, table.row_limit() - 1, 12}); };
  const auto line = [](const std::string& name, const std::string& bottom) {
    return name + "\t1\t0\t0\t0\t0\tSurface\t" + bottom + "\n";
  };
  select_all();
  const std::string all = table.do_copy();
  table.delete_all_rows();
  EXPECT_THAT(paste(all), ElementsAre(2, -1, 0));
  EXPECT_EQ(table.do_copy(), "Weldon\n");
  select_all();
  EXPECT_EQ(table.do_copy(), all);

  table.set_selection(std::nullopt);
  table.set_active(2, 0);
  EXPECT_THAT(paste(line("Oak City", "1: weldon") + line("", "None") + line("Bed", "5: Bed") + line("Mud", "0")),
              ElementsAre(2, -1, 0, -1, 4, -1));
  EXPECT_THAT(paste(line("Oak City", "4: ")), ElementsAre(2, -1, 3, -1, 4, -1)); // a segment without a name
  EXPECT_THAT(paste(line("Oak City", "")), ElementsAre(2, -1, 3, -1, 4, -1));
  EXPECT_THAT(host.boxes.back(), HasSubstr("Line 1, column 8: "));
  EXPECT_THAT(paste(line("Oak City", "5: Mud")), ElementsAre(2, -1, 3, -1, 4, -1));
  EXPECT_THAT(host.boxes.back(), HasSubstr("Line 1, column 8: \"5: Mud\" is not in the list. Nothing was pasted."));
  std::string muddy = line("Mud", "mud");
  for (int i = 0; i < 4; ++i) muddy += line("Mud", "0");
  paste(muddy);
  EXPECT_THAT(host.boxes.back(), HasSubstr("\"mud\" is the name of segments 3, 4, 5 and 2 more; write the number, or "
                                           "\"3: Mud\". Nothing was pasted."));

  select_all();
  EXPECT_EQ(paste(line("Mill", "4") + line("Lock", "0")).size(), 6U); // would refer to a deleted row
  // Was 3: set to the last segment.
  EXPECT_THAT(paste(line("Mill", "lock") + line("Lock", "None") + "Bed\n"), ElementsAre(1, -1, 2));
  EXPECT_EQ(form.message(), "Pasted: 3 rows. 1 bottom reference now names another segment.");
}

TEST_F(Segments, SaysWhatNamesAnotherSegmentAndRenumbers) {
  flow_function_data_type flow;
  flow.pairs = {{1, no_segment, 0}, {1, 0, 1}, {1, 1, 2}};
  host.data.flow_fields.edit(0).functions.push_back(flow);
  TSegmentForm form(host);
  TFillCalcTable& table = shown(form);
  table.set_active(1, 0);
  form.InsertButtonClick();
  EXPECT_EQ(form.message(), "2 pairs now name another segment.");
  host.undo();
  table.set_active(2, 0);
  form.DeleteButtonClick(); // the last one
  EXPECT_EQ(form.message(), "1 pair now names a segment that no longer exists.");
  EXPECT_TRUE(table.extend_on_down(move_command::down));
  EXPECT_EQ(verify(host.data), "");
  EXPECT_EQ(form.message(), "1 pair now names another segment.");
  host.clipboard = "A\nB\nC\n";
  table.set_active(0, 0);
  form.PasteButtonClick(*form.panels()[0]); // the same number of rows
  EXPECT_EQ(form.message(), "Pasted: 3 rows.");
  for (int step = 0; step < 3; ++step) host.undo();
  table.set_active(1, 0);
  form.insert_and_renumber_click();
  EXPECT_EQ(form.message(), "Renumbered, so that they name the same segments as before: 2 pairs.");
  EXPECT_EQ(host.data.flow_fields[0].functions[0].pairs[2].to_segment, 3);
  table.set_active(0, 0);
  form.delete_and_renumber_click();
  EXPECT_EQ(form.message(), "Segment 1 (Weldon) was deleted, with all that referred to it: 2 pairs.");
  EXPECT_EQ(host.data.flow_fields[0].functions[0].pairs.size(), 1U);
  form.undo();
  EXPECT_EQ(form.message(), "Undone: Delete and renumber.");
  const std::size_t segments = host.data.segments.size();
  editor_panel& values = *form.panels()[1]; // in whose page the rows are selected
  form.grid_entered(1);
  values.table.set_active(2, 0);
  values.table.set_selection(cell_range{1, 0, 2, 1});
  form.delete_and_renumber_click();
  EXPECT_EQ(form.message(), "Segments 2 to 3 were deleted, with all that referred to them: 2 pairs.");
  EXPECT_EQ(host.data.segments.size(), segments - 2);
  EXPECT_EQ(table.active_row(), 1U);
  EXPECT_EQ(host.undo_label(), "Segments: Delete and renumber");
  form.DeleteAllButtonClick(*form.panels()[0]);
  form.DeleteButtonClick();
  EXPECT_EQ(form.message(), "There is nothing to delete.");
  form.delete_and_renumber_click();
  EXPECT_EQ(form.message(), "There is nothing to delete.");
}

TEST_F(Segments, FactorsAreWrittenOnOkAlone) {
  TSegmentForm form(host);
  shown(form);
  EXPECT_TRUE(form.VolumeScaleFactorField.enter("2.5"));
  EXPECT_TRUE(form.FormCloseQuery(false));
  EXPECT_EQ(host.data.volume_scale_factor, 1);
  EXPECT_FALSE(form.VolumeConversionFactorField.enter("x"));
  EXPECT_FALSE(form.FormCloseQuery(true));
  EXPECT_THAT(form.message(), HasSubstr("Volume Conversion Factor"));
  EXPECT_TRUE(form.VolumeConversionFactorField.enter("10"));
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_EQ(host.data.volume_scale_factor, 2.5);
  EXPECT_EQ(host.data.volume_conversion_factor, 10);
}

TEST_F(ExchangesFlows, FourGridsFollowEachOther) {
  TExchangesFlowsForm form(host);
  form.exchange_mode = false;
  TFillCalcTable& fields = shown(form);
  editor_panel &functions = *form.panels()[1], &pairs = *form.panels()[2], &series = *form.panels()[3];
  EXPECT_EQ(form.panels()[0]->label, "Flow Fields");
  EXPECT_EQ(pairs.label, "Segment pairs");
  form.InsertRowButtonClick(pairs); // no function
  EXPECT_TRUE(pairs.table.is_shown_as_empty());

  form.InsertRowButtonClick(functions);
  EXPECT_EQ(print(functions.table), "Flow Function|Linear\n");
  EXPECT_EQ(print(series.table), "10/01/2012|00:00|0\n10/11/2012|00:00|0\n");
  EXPECT_TRUE(functions.table.extend_on_down(move_command::down)); // added without points
  EXPECT_TRUE(series.table.is_shown_as_empty());
  EXPECT_TRUE(functions.table.enter(1, 0, "Bypass"));
  const std::string field = host.data.flow_fields[0].description.str();
  EXPECT_EQ(series.label, "Time/value pairs for " + field + ", Bypass");
  EXPECT_EQ(functions.label, field + " functions");

  host.clipboard = "Boundary\tweldon\t1\n1\t2: Halifax\t0.5\n";
  form.PasteButtonClick(pairs);
  EXPECT_EQ(print(pairs.table), "Boundary|1: Weldon|1.0000\n1: Weldon|2: Halifax|0.5000\n");
  host.clipboard = "Atlantis\t1\n";
  form.PasteButtonClick(pairs);
  EXPECT_THAT(host.boxes.back(), HasSubstr("Atlantis"));
  host.data.flow_fields.edit(0).functions.edit(1).pairs.edit(1).to_segment = 3; // one past the end
  EXPECT_EQ(pairs.table.text(1, 1), "4");
  EXPECT_EQ(pairs.table.tool_tip(1, 1), "Segment 4 does not exist.");
  pairs.table.set_selection(cell_range{0, 0, 1, 2});
  const std::string copied = pairs.table.do_copy();
  EXPECT_EQ(pairs.table.do_paste(copied).refusal, "");
  EXPECT_EQ(pairs.table.do_copy(), copied);
  EXPECT_TRUE(pairs.table.enter(1, 1, "boundary"));
  EXPECT_EQ(host.data.flow_fields[0].functions[1].pairs[1].to_segment, no_segment);

  fields.set_active(1, 0);
  EXPECT_EQ(pairs.label, "Segment pairs");
  EXPECT_TRUE(functions.table.is_shown_as_empty());
}

// Undo, a job's end and a refused entry keep the user's position; another opening or field resets it.
TEST_F(ExchangesFlows, KeepTheFunctionInView) {
  auto& fields_of_data = host.data.flow_fields;
  fields_of_data.edit(0).description = "";
  fields_of_data.edit(0).functions.resize(3);
  for (std::size_t i = 0; i < 3; ++i) {
    flow_function_data_type& function = fields_of_data.edit(0).functions.edit(i);
    function.description = "Flow " + std::to_string(i);
    function.interpolation_type = 5;
    function.pairs = {{1, no_segment, 0}, {1, 0, 1}, {1, 1, 2}};
  }
  TExchangesFlowsForm form(host);
  form.exchange_mode = false;
  TFillCalcTable& fields = shown(form);
  editor_panel& function_panel = *form.panels()[1];
  TFillCalcTable &functions = function_panel.table, &pairs = form.panels()[2]->table;
  EXPECT_EQ(function_panel.label, " functions");
  EXPECT_EQ(functions.text(2, 1), "Step");
  functions.set_active(2, 1);
  pairs.set_active(1, 2);
  EXPECT_TRUE(pairs.enter(1, 2, "0.5"));
  form.undo();
  EXPECT_EQ(functions.active_row(), 2U);
  EXPECT_EQ(pairs.active_row(), 1U);
  host.replace_data(prevesk_dataset_data_type(host.data));
  EXPECT_EQ(functions.active_row(), 2U);
  EXPECT_EQ(form.panels()[2]->label, "Segment pairs for , Flow 2");

  EXPECT_FALSE(pairs.enter(1, 2, "1,5"));
  functions.set_active(0, 1);
  EXPECT_EQ(functions.active_row(), 2U);
  fields.set_active(1, 0);
  EXPECT_EQ(fields.active_row(), 0U);
  EXPECT_EQ(pairs.text(1, 2), "1,5");
  pairs.give_up_refused();
  EXPECT_FALSE(functions.enter(2, 1, "Curved"));
  fields.set_active(1, 0);
  EXPECT_EQ(functions.text(2, 1), "Curved");
  functions.give_up_refused();

  functions.set_active(1, 0);
  pairs.set_active(2, 0);
  pairs.set_selection(cell_range{1, 0, 2, 2});
  form.DeleteRowButtonClick(function_panel); // the next one moves up
  EXPECT_EQ(pairs.active_row(), 0U);
  EXPECT_EQ(pairs.selection(), (cell_range{0, 0, 0, 0}));
  form.find_next(form.panels()[2].get(), "flow 0");
  EXPECT_EQ(functions.active_row(), 0U);
  functions.set_active(1, 0);
  form.FormShow();
  EXPECT_EQ(functions.active_row(), 0U);

  form.panels()[2]->table.OnBeginChange("Edit");
  form.panels()[2]->table.OnEndChange(false); // a failure, not a job
  EXPECT_EQ(form.message(), "");
  host.data.flow_fields.clear();
  shown(form);
  EXPECT_EQ(function_panel.label + ", " + form.panels()[2]->label, "Functions, Flow Function Pairs");
}

// Another function may be at its position.
TEST_F(ExchangesFlows, TheShownFunctionIsFollowedThroughUndoAndJobs) {
  host.data.flow_fields.edit(0).functions.resize(3);
  for (std::size_t i = 0; i < 3; ++i) {
    flow_function_data_type& function = host.data.flow_fields.edit(0).functions.edit(i);
    function.description = "Flow " + std::to_string(i);
    function.pairs = {{1, no_segment, 0}, {1, 0, 1}, {1, 1, 2}};
  }
  TExchangesFlowsForm form(host);
  form.exchange_mode = false;
  shown(form);
  TFillCalcTable &functions = form.panels()[1]->table, &pairs = form.panels()[2]->table;
  form.InsertRowButtonClick(*form.panels()[1]); // in front of all
  functions.set_active(2, 0);
  pairs.set_active(2, 0);
  pairs.set_selection(cell_range{1, 0, 2, 0});
  form.undo();
  EXPECT_EQ(functions.text(functions.active_row(), 0), "Flow 1");
  EXPECT_THAT(form.panels()[2]->label, HasSubstr("Flow 1"));
  EXPECT_EQ(pairs.selection(), (cell_range{1, 0, 2, 0}));
  EXPECT_TRUE(functions.enter(1, 0, "Renamed"));
  EXPECT_TRUE(form.panels()[0]->table.enter(0, 0, "Surface"));
  for (int step = 0; step < 2; ++step) form.undo();
  EXPECT_EQ(functions.text(1, 0), "Flow 1");
  EXPECT_EQ(pairs.selection(), (cell_range{1, 0, 2, 0}));
  prevesk_dataset_data_type of_job = host.data;
  of_job.flow_fields.edit(0).functions.erase(1, 1); // and Flow 2 takes its place
  host.replace_data(of_job);
  EXPECT_EQ(functions.active_row(), 1U);
  EXPECT_EQ(pairs.selection(), (cell_range{0, 0, 0, 0}));
}

// What was selected in one field is not selected in the next.
TEST_F(ExchangesFlows, ABlockOfFunctionsBelongsToItsField) {
  for (std::size_t field = 0; field < 2; ++field) host.data.flow_fields.edit(field).functions.resize(3);
  TExchangesFlowsForm form(host);
  form.exchange_mode = false;
  TFillCalcTable& fields = shown(form);
  TFillCalcTable& functions = form.panels()[1]->table;
  functions.set_selection(cell_range{0, 0, 2, 0}); // upwards: the active row is the first
  fields.set_active(1, 0);
  EXPECT_EQ(functions.selection(), (cell_range{0, 0, 0, 0}));
}

TEST_F(ExchangesFlows, PairsThatMoveNothingAreMarked) {
  host.data.exchange_fields.edit(0).functions.resize(1);
  host.data.exchange_fields.edit(0).functions.edit(0).pairs = {
      {1, 1, 1, 1}, {1, 1, no_segment, no_segment}, {1, 1, -5, 0}, {1, 1, no_segment, 0}};
  TExchangesFlowsForm form(host);
  shown(form);
  const grid& pairs = form.panels()[2]->table.content();
  EXPECT_EQ(pairs.mark(0, 1).text, "Both sides are the same segment.");
  EXPECT_EQ(pairs.mark(1, 0).text, "Both sides are outside the network, so this pair makes no boundary.");
  EXPECT_THAT(pairs.mark(2, 0).text, HasSubstr("The stored number is -5, which makes no boundary."));
  for (const auto& [row, column] : std::vector<std::pair<std::size_t, std::size_t>>{{0, 2}, {2, 1}, {3, 0}, {3, 1}})
    EXPECT_EQ(pairs.mark(row, column).text, "") << row << column;
}

TEST_F(ExchangesFlows, FieldsWithPairsThatAreNotUsedAreMarked) {
  TExchangesFlowsForm form(host);
  form.exchange_mode = false;
  TFillCalcTable& fields = shown(form);
  form.InsertRowButtonClick(*form.panels()[1]);
  EXPECT_FALSE(fields.content().mark(0, 1)); // a function without pairs moves nothing anyway
  form.InsertRowButtonClick(*form.panels()[2]);
  EXPECT_EQ(fields.content().mark(0, 1).text,
            "This field is not used: its functions and pairs have no effect on a run.");
  EXPECT_FALSE(fields.content().mark(0, 0));
  EXPECT_FALSE(fields.content().mark(1, 1));
  fields.click(0, 1);
  EXPECT_FALSE(fields.content().mark(0, 1));
}

TEST_F(ExchangesFlows, RefusesDuplicatesInTheWordsOfTheMode) {
  for (const bool exchanges : {true, false}) {
    TExchangesFlowsForm form(host);
    form.exchange_mode = exchanges;
    shown(form);
    form.InsertRowButtonClick(*form.panels()[1]);
    EXPECT_TRUE(form.panels()[3]->table.enter(1, 0, "2012-10-01"));
    EXPECT_FALSE(form.FormCloseQuery(true));
  }
  const std::string field = host.data.exchange_fields[0].description.str();
  EXPECT_THAT(host.boxes, ElementsAre("Cannot accept data: Detected duplicate moment in time function for\r\n" + field +
                                          " Exchange Function",
                                      "Cannot accept data: Each record must be unique"));
}

TEST_F(Trees, LoadsAreAddedAndRemovedThroughMenusAndQuestions) {
  TLoadsForm form(host);
  shown(form);
  EXPECT_FALSE(form.menu({1, {}})[2].enabled); // nothing to delete
  form.add_all_loads(1);
  EXPECT_EQ(form.item_count(1), 3U);
  EXPECT_EQ(form.item_text(1, 2), "Oak City");
  form.select(editor_tree::node{1, 1});
  editor_panel& series = *form.panels()[0];
  EXPECT_EQ(series.label, "Time functions for segment 2 (Halifax), Oxygen");
  EXPECT_EQ(print(series.table), "10/01/2012|00:00|0\n10/11/2012|00:00|0\n");
  form.ChoiceChange(1);
  EXPECT_EQ(host.data.systems[1].loads[1].interpolation_type, interpolation_step);
  form.GraphButtonClick(series);
  EXPECT_EQ(host.graphs.back()->series()[0]->label, "Segment 2 (Halifax), Oxygen");

  host.answer = box_answer::no;
  form.delete_load(1, 1);
  EXPECT_EQ(form.item_count(1), 3U);
  host.answer = box_answer::yes;
  form.delete_load(1, 1);
  EXPECT_EQ(form.item_count(1), 2U);
  EXPECT_EQ(host.boxes.back(), "Delete Load?: You have chosen to delete the following load:\r\nOxygen\r\n2: Halifax\r\n"
                               "This will delete this load and all of its\r\ntime/value information.\r\n"
                               "Are you sure you want to do this?");
  EXPECT_EQ(form.selected(), std::nullopt);
  EXPECT_EQ(series.label, "Time Functions");

  host.on_select_segments = [](TSelectSegmentsForm& list) {
    EXPECT_EQ(list.caption(), "Loads for Oxygen");
    EXPECT_EQ(list.segment_text(1), "2: Halifax");
    EXPECT_THAT(list.SegmentCheckListBox, ElementsAre(true, false, true));
    list.SegmentCheckListBox = {false, true, false};
    return true;
  };
  host.boxes.clear();
  form.add_remove_loads(1);
  EXPECT_EQ(host.boxes.size(), 2U);
  ASSERT_EQ(form.item_count(1), 1U);
  EXPECT_EQ(host.data.systems[1].loads[0].segment, 1);
  form.delete_all_loads(1);
  EXPECT_EQ(form.item_count(1), 0U);
  EXPECT_THAT(form.status(series), HasSubstr("No loads: open a system's menu"));
  host.undo();
  EXPECT_EQ(form.item_count(1), 1U);
}

// The list refreshed by a job applies.
TEST_F(Trees, AJobThatEndsUnderTheSelectionOfSegmentsLosesNothing) {
  TLoadsForm form(host);
  shown(form);
  host.on_select_segments = [&](TSelectSegmentsForm& list) {
    EXPECT_EQ(list.message(), "0 loads.");
    list.SegmentCheckListBox[0] = true;
    EXPECT_EQ(list.message(), "OK adds 1 load.");
    loads_data_type load;
    load.segment = 2;
    host.data.systems.edit(0).loads.push_back(load);
    host.replace_data_set();
    list.data_set_replaced();
    EXPECT_THAT(list.SegmentCheckListBox, ElementsAre(false, false, true));
    list.SegmentCheckListBox = {false, true, false};
    EXPECT_EQ(list.message(), "A job has replaced the data set; the list shows its loads. OK adds 1 load and removes 1 "
                              "load after a question.");
    return true;
  };
  host.answer = box_answer::no;
  form.add_remove_loads(0);
  EXPECT_EQ(form.item_count(0), 2U);

  host.on_box = [&] { // while the question is open
    host.data.systems.edit(0).loads.clear();
    host.replace_data_set();
  };
  host.answer = box_answer::yes;
  form.delete_load(0, 0);
  EXPECT_EQ(form.item_count(0), 0U);
  EXPECT_EQ(form.message(),
            "A job has replaced the data set. If it changed the input, Undo restores the previous one.");
}

// Another load may be at its position.
TEST_F(Trees, TheSelectedRecordIsFollowedThroughUndoAndJobs) {
  TLoadsForm form(host);
  shown(form);
  form.add_all_loads(0);
  form.select(editor_tree::node{0, 2});
  prevesk_dataset_data_type of_job = host.data;
  of_job.systems.edit(0).loads.erase(0, 1);
  host.replace_data(of_job);
  EXPECT_EQ(form.selected(), (editor_tree::node{0, 1}));
  EXPECT_THAT(form.panels()[0]->label, HasSubstr("segment 3 (Oak City)"));
  of_job.systems.edit(0).loads.edit(1).segment = 0;
  host.replace_data(of_job);
  EXPECT_EQ(form.selected(), std::nullopt);

  using node = editor_tree::node;
  for (const node& stays : {node{1, {}}, node{}}) { // a system and the root
    form.select(stays);
    form.add_all_loads(1);
    EXPECT_EQ(form.selected(), stays);
    form.undo();
    EXPECT_EQ(form.selected(), stays);
  }
  form.select(node{1, {}});
  of_job.systems.erase(0, 1);
  host.replace_data(of_job);
  EXPECT_EQ(form.selected(), (node{0, {}}));
  of_job.systems.clear();
  host.replace_data(of_job);
  EXPECT_EQ(form.selected(), std::nullopt);
}

TEST_F(Trees, BoundariesNameTheirSegmentAlsoWhenThereIsNone) {
  boundary_data_type boundary;
  boundary.segment = 8;
  boundary.points = {{{150754, 0}, 1}, {{150754, 0}, 2}};
  host.data.systems.edit(0).boundaries.push_back(boundary);
  TBoundaryForm form(host);
  shown(form);
  EXPECT_EQ(form.item_text(0, 0), "");
  EXPECT_EQ(form.item_tip(0, 0), "Segment 9 does not exist.");
  EXPECT_TRUE(form.item_mark(0, 0));
  form.go_to_next_mark();
  EXPECT_EQ(form.selected(), (editor_tree::node{0, 0}));
  form.select(std::nullopt);
  form.select(editor_tree::node{0, 0});
  EXPECT_EQ(form.panels()[0]->label, "Time functions for segment 9 (), Ammonium");
  EXPECT_FALSE(form.FormCloseQuery(true));
  EXPECT_THAT(host.boxes, ElementsAre("Cannot accept data: Detected duplicate moment in time function for\r\n"
                                      "segment 9 (), Ammonium"));
  form.select(editor_tree::node{0, std::nullopt});
  EXPECT_FALSE(form.InterpolationTypeComboBox.is_visible);
  form.InsertRowButtonClick(*form.panels()[0]); // nothing is selected
  EXPECT_EQ(host.data.systems[0].boundaries[0].points.size(), 2U);
  EXPECT_TRUE(form.panels()[1]->table.enter(0, 1, "3"));
  EXPECT_EQ(host.data.systems[0].scalb, 3);
  EXPECT_EQ(host.data.systems[0].scalw, 1);
  host.data.systems.edit(0).boundaries.clear();
  shown(form);
  EXPECT_EQ(form.status(*form.panels()[0]), "No boundaries: give a pair in Exchanges or Flows a side \"Boundary\".");
}

// Requests from the network window to the open editor.
TEST_F(ExchangesFlows, GoToTheRowsOfASegmentOneAfterTheOther) {
  flow_function_data_type main, side;
  main.pairs = {{1, no_segment, 0}, {1, 0, 1}, {1, 1, no_segment}};
  side.pairs = {{1, 2, 1}};
  host.data.flow_fields.edit(0).functions = {main};
  host.data.flow_fields.edit(3).functions = {main, side};
  TExchangesFlowsForm form(host);
  form.exchange_mode = false;
  shown(form);
  const auto place = [&] {
    std::string rows;
    for (const auto& panel : form.panels().first(3)) rows += std::to_string(panel->table.active_row()) + " ";
    return rows;
  };
  EXPECT_EQ(form.segment_in_focus(), 0U);
  std::string walked;
  for (int i = 0; i < 6; ++i) {
    form.go_to_segment(1);
    walked += place() + "/ ";
  }
  EXPECT_EQ(walked, "0 0 1 / 0 0 2 / 3 0 1 / 3 0 2 / 3 1 0 / 0 0 1 / ");
  form.go_to_segment(2);
  EXPECT_EQ(place(), "3 1 0 ");
  EXPECT_EQ(form.segment_in_focus(), 2U);
  form.go_to_segment(99);
  EXPECT_EQ(place(), "3 1 0 ");
  host.data.flow_fields.edit(3).functions.clear();
  host.replace_data_set();
  form.go_to_segment(2);
  EXPECT_EQ(form.message(), "No row here refers to segment 3 (Oak City).");
}

TEST_F(Trees, AndSegmentsGoToTheRowOfASegment) {
  loads_data_type load;
  load.segment = 1;
  host.data.systems.edit(0).loads = {load};
  host.data.systems.edit(1).loads = {loads_data_type{}, load};
  TLoadsForm loads(host);
  shown(loads);
  EXPECT_EQ(loads.segment_in_focus(), std::nullopt);
  using node = editor_tree::node;
  for (const node& expected : {node{0, 0}, node{1, 1}, node{0, 0}}) {
    loads.go_to_segment(1);
    EXPECT_EQ(loads.selected(), expected);
  }
  EXPECT_EQ(loads.segment_in_focus(), 1U);
  loads.go_to_segment(2);
  EXPECT_EQ(loads.message(), "No row here refers to segment 3 (Oak City).");

  TSegmentForm segments(host);
  shown(segments);
  segments.go_to_segment(2);
  for (const auto& panel : segments.panels()) EXPECT_EQ(panel->table.active_row(), 2U);
  EXPECT_EQ(segments.segment_in_focus(), 2U);
  EXPECT_FALSE(segments.panels()[0]->table.enter(2, 1, "much")); // a refused entry keeps the row
  segments.go_to_segment(0);
  EXPECT_EQ(segments.segment_in_focus(), 2U);
}

} // namespace
} // namespace vesk
