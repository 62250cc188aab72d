// The network editors on data that no editor creates, or that users create by mistake.
#include "dataset/network.h"
#include "editors/boundary_form.h"
#include "editors/exchanges_flows_form.h"
#include "editors/loads_form.h"
#include "editors/segment_form.h"
#include "network_forms.h"
#include "print_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace vesk {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min(),
                       largest = std::numeric_limits<std::int32_t>::max();

struct OddNetwork : NetworkForms {
  flow_function_data_type& flow() {
    auto& functions = host.data.flow_fields.edit(0).functions;
    if (functions.empty()) functions.push_back({});
    return functions.edit(0);
  }
  exchange_function_data_type& exchange() {
    auto& functions = host.data.exchange_fields.edit(0).functions;
    if (functions.empty()) functions.push_back({});
    return functions.edit(0);
  }
  void add_load(std::size_t system, std::int32_t segment) {
    loads_data_type load;
    load.segment = segment;
    host.data.systems.edit(system).loads.push_back(load);
  }
  std::vector<std::int32_t> loaded(std::size_t system) const {
    std::vector<std::int32_t> segments;
    for (const loads_data_type& load : host.data.systems[system].loads) segments.push_back(load.segment);
    return segments;
  }
  // The message of pasting pairs, or else the resulting pairs.
  std::string pasted(TExchangesFlowsForm& form, const std::string& text) {
    host.boxes.clear();
    host.clipboard = text;
    form.panels()[2]->table.set_active(0, 0);
    form.PasteButtonClick(*form.panels()[2]);
    return host.boxes.empty() ? print(form.panels()[2]->table) : host.boxes[0];
  }
};

TEST_F(OddNetwork, PairsOutsideItAreShownMarkedAndKept) {
  flow().pairs = {{0.5, -1, -1}, {1, 1, 1}, {1, -7, smallest}, {1, 3, largest}, {1, 0, 2}};
  exchange().pairs = {{1, 1, largest, 0}, {1, 1, 0, 0}};
  const prevesk_dataset_data_type before = host.data;
  for (const bool exchanges : {false, true}) {
    TExchangesFlowsForm form(host);
    form.exchange_mode = exchanges;
    shown(form);
    TFillCalcTable& pairs = form.panels()[2]->table;
    EXPECT_EQ(print(pairs), exchanges
                                ? "2147483648|1: Weldon|1.0000|1.0000\n1: Weldon|1: Weldon|1.0000|1.0000\n"
                                : "Boundary|Boundary|0.5000\n2: Halifax|2: Halifax|1.0000\n"
                                  "Boundary|Boundary|1.0000\n4|2147483648|1.0000\n1: Weldon|3: Oak City|1.0000\n");
    EXPECT_EQ(pairs.tool_tip(exchanges ? 0 : 3, exchanges ? 0 : 1), "Segment 2147483648 does not exist.");
    pairs.set_selection(cell_range{0, 0, pairs.row_limit() - 1, pairs.content().columns().size() - 1});
    form.CopyButtonClick(*form.panels()[2]); // pasting it back changes nothing
    EXPECT_TRUE(form.FormCloseQuery(true));
    EXPECT_EQ(host.data, before);
    EXPECT_EQ(pasted(form, host.clipboard), print(pairs));
    EXPECT_THAT(pasted(form, "4\n4\n4\n4\n4\n"), HasSubstr("\"4\" is not in the list")); // it is not a valid entry
    EXPECT_EQ(host.data, before);
    host.data = before;
  }
  host.data.find_boundaries(); // of segments only: a pair with both ends outside has none
  for (const system_data_type& system : host.data.systems) EXPECT_TRUE(system.boundaries.empty());
}

TEST_F(OddNetwork, PairsArePastedInAnySpellingOrNotAtAll) {
  host.data.segments.edit(2).name = "2: Halifax"; // the number before a name decides
  flow();
  TExchangesFlowsForm form(host);
  form.exchange_mode = false;
  shown(form);
  EXPECT_EQ(
      pasted(form, "Boundary\tWELDON\t1\r\n 2 \t1: weldon\t.5\r\n0\thalifax\t1e-1\r\n2: Halifax\tboundary\t-1\r\n"),
      "Boundary|1: Weldon|1.0000\n2: Halifax|1: Weldon|0.5000\nBoundary|2: Halifax|0.1000\n"
      "2: Halifax|Boundary|-1.0000\n");
  const std::string as_it_was = print(form.panels()[2]->table);
  const char* const nonsense[][2] = {
      {"1\t2\t1\nAtlantis\t1\t1\n", "Line 2, column 1: "},
      {"1\t4\t1\n", "Line 1, column 2: "},
      {"1\t-1\t1\n", "Line 1, column 2: "},
      {"1.5\t1\t1\n", "Line 1, column 1: "},
      {"1\t2\tnan\n", "Line 1, column 3: "},
      {"1\t2\t1,5\n", "Line 1, column 3: "},
      {"1\t2\t1\tx\n", "Line 1, column 4: "},
      {"5: Halifax\t2\t1\n", "Line 1, column 1: "},
      {"\t2\t1\n", "Line 1, column 1: "},
      {"99999999999999999999\t2\t1\n", "Line 1, column 1: "},
  };
  for (const auto& [text, where] : nonsense) {
    EXPECT_THAT(pasted(form, text), AllOf(HasSubstr(where), EndsWith("Nothing was pasted."))) << text;
    EXPECT_EQ(print(form.panels()[2]->table), as_it_was) << text;
  }
  host.data.segments.edit(2).name = " ";
  EXPECT_THAT(pasted(form, "\t2\t1\n"), HasSubstr("Line 1, column 1: "));
  EXPECT_FALSE(form.panels()[2]->table.enter(0, 0, ""));
  form.panels()[2]->table.give_up_refused();
  host.data.segments.edit(2).name = "halifax";
  EXPECT_THAT(pasted(form, "Halifax\t1\t1\n"),
              HasSubstr("Line 1, column 1: \"Halifax\" is the name of segments 2 and 3; write the number, or "
                        "\"2: Halifax\". Nothing was pasted."));
  EXPECT_THAT(pasted(form, "3: HALIFAX\t1\t1\n"), HasSubstr("3: halifax|1: Weldon|1.0000\n"));
}

TEST_F(OddNetwork, NamesOfAnyScriptFitWholeEverywhere) {
  const std::pair<const char*, std::size_t> letters[] = {{"Ж", 127}, {"河", 85}, {"ẞ", 85}, {"🜄", 63}, {"m", 128}};
  for (const auto& [letter, count] : letters) { // as many as fit in 255 bytes
    std::string name, typed;
    for (std::size_t i = 0; i < 200; ++i) (i < count ? name : typed) += letter;
    typed = name + typed;
    TSegmentForm segments(host);
    EXPECT_TRUE(shown(segments).enter(1, 0, typed));
    EXPECT_EQ(host.data.segments[1].name.str(), name);
    EXPECT_TRUE(segments.panels()[0]->table.enter(0, 7, name)); // as the bottom segment
    EXPECT_EQ(host.data.segments[0].bottom_segment, 1);
    segments.find_next(nullptr, letter);
    EXPECT_EQ(segments.panels()[0]->table.active_row(), 1U);

    flow().description = name;
    flow().pairs = {{1, -1, -1}};
    TExchangesFlowsForm flows(host);
    flows.exchange_mode = false;
    shown(flows);
    EXPECT_EQ(pasted(flows, name + "\t2: " + name + "\t1\n"), "2: " + name + "|2: " + name + "|1.0000\n");
    EXPECT_THAT(flows.panels()[3]->label, EndsWith(", " + name));

    host.data.systems.edit(0).loads.clear();
    host.data.systems.edit(0).description = name;
    TLoadsForm loads(host);
    shown(loads);
    loads.add_all_loads(0);
    loads.select(editor_tree::node{0, 1});
    EXPECT_EQ(loads.item_text(0, 1), name);
    EXPECT_EQ(loads.panels()[0]->label, "Time functions for segment 2 (" + name + "), " + name);
  }
}

TEST_F(OddNetwork, LoadsOutsideItAreNamedByNumberAndCanBeDeleted) {
  for (const std::int32_t segment : {-3, 1, largest, 3, 1}) add_load(0, segment);
  TLoadsForm form(host);
  shown(form);
  EXPECT_EQ(form.item_text(0, 0), "");
  EXPECT_EQ(form.item_tip(0, 0), "Segment -2 does not exist.");
  EXPECT_EQ(form.item_tip(0, 2), "Segment 2147483648 does not exist.");
  EXPECT_TRUE(form.item_mark(0, 3));
  form.add_all_loads(0);
  EXPECT_THAT(loaded(0), ElementsAre(-3, 1, largest, 3, 1, 0, 2));
  host.answer = box_answer::yes;
  host.on_select_segments = [](TSelectSegmentsForm& list) {
    EXPECT_THAT(list.SegmentCheckListBox, ElementsAre(true, true, true));
    list.SegmentCheckListBox = {true, false, true};
    return true;
  };
  form.add_remove_loads(0); // removes the first of the two
  EXPECT_THAT(loaded(0), ElementsAre(-3, largest, 3, 1, 0, 2));
  form.delete_load(0, 1);
  EXPECT_THAT(host.boxes.back(), HasSubstr("\r\nAmmonium\r\n2147483648: \r\n"));
  EXPECT_THAT(loaded(0), ElementsAre(-3, 3, 1, 0, 2));
  host.on_copy_series = [](TCopySeriesForm& dialog) {
    EXPECT_EQ(dialog.source, "Segment 4 (), Ammonium");
    dialog.SystemCheckListBox = {false, true};
    dialog.SegmentCheckListBox = {true, false, false};
    return true;
  };
  form.copy_record({series_kind::load, 0, 1});
  EXPECT_THAT(loaded(1), ElementsAre(0));

  TSegmentForm segments(host); // the load with number 3 now gets a segment
  TFillCalcTable& table = shown(segments);
  table.set_active(2, 0);
  segments.insert_and_renumber_click();
  EXPECT_THAT(loaded(0), ElementsAre(-3, 4, 1, 0, 3));
  table.set_active(0, 0);
  segments.delete_and_renumber_click();
  EXPECT_THAT(loaded(0), ElementsAre(-3, 3, 0, 2));
  EXPECT_EQ(verify(host.data), "");
}

// No segments, one, and a model without systems: every command either works or gives the reason why not.
TEST_F(OddNetwork, WithoutSegmentsOrSystemsEveryCommandIsHarmless) {
  for (const bool with_systems : {true, false})
    for (const std::size_t count : {0U, 1U}) {
      host.data.resize_segments(count);
      if (!with_systems) host.data.systems.clear();
      for (std::size_t i = 0; i < count; ++i) reconcile_segment_records(host.data);
      if (!with_systems) host.data.systems.clear();
      flow().pairs = {{1, 0, -1}, {1, 0, 1}};
      flow().points = {};
      TSegmentForm segments(host);
      TExchangesFlowsForm flows(host);
      TLoadsForm loads(host);
      TBoundaryForm boundaries(host);
      host.clipboard = "x\t1\n";
      host.expression = "x+1";
      host.file = "/nowhere/x.csv";
      host.on_import = [](TImportTimeSeriesForm& dialog) { return dialog.FormCloseQuery(true); };
      host.on_regular_times = [](TRegularTimesForm&) { return true; };
      for (editor* form : std::initializer_list<editor*>{&segments, &flows, &loads, &boundaries}) {
        host.open = form;
        form->FormShow();
        const prevesk_dataset_data_type before = host.data;
        host.forget_steps();
        for (const auto& panel : form->panels()) {
          using button = void (editor::*)(editor_panel&);
          const std::pair<unsigned, button> buttons[] = {{insert_button, &editor::InsertRowButtonClick},
                                                         {insert_button, &editor::delete_selected_rows},
                                                         {delete_button, &editor::DeleteRowButtonClick},
                                                         {paste_button, &editor::PasteButtonClick},
                                                         {fill_calc_button, &editor::FillCalcButtonClick},
                                                         {graph_button, &editor::GraphButtonClick},
                                                         {import_button, &editor::ImportButtonClick},
                                                         {graph_button, &editor::sort_by_date_and_time},
                                                         {graph_button, &editor::regular_times_click},
                                                         {graph_button, &editor::interpolate_between},
                                                         {graph_button, &editor::refresh_from_source},
                                                         {~0U, &editor::back_to_default},
                                                         {~0U, &editor::export_csv},
                                                         {delete_all_button, &editor::DeleteAllButtonClick}};
          for (const auto& [of, click] : buttons)
            if (panel->buttons & of) (form->*click)(*panel);
          form->CopyButtonClick(*panel, true);
          form->status(*panel);
        }
        for (const editor_command& command : form->common_commands()) command.run();
        if (editor_tree* tree = form->tree()) {
          tree->select(editor_tree::node{});
          tree->select(editor_tree::node{0, {}});
          tree->select(editor_tree::node{0, 0});
          EXPECT_EQ(tree->group_count(), with_systems ? 2U : 0U);
          EXPECT_THAT(tree->menu({}), IsEmpty());
        }
        form->go_to_next_mark();
        form->find_next(nullptr, "x");
        EXPECT_EQ(verify(host.data), "") << form->caption() << count << with_systems;
        while (!host.undo_label().empty()) form->undo();
        EXPECT_EQ(host.data, before) << form->caption();
        EXPECT_TRUE(form->FormCloseQuery(true)) << host.boxes.back();
      }
      host.data.find_boundaries();
    }
  TLoadsForm loads(host);
  shown(loads);
  EXPECT_EQ(loads.status(*loads.panels()[0]), "The model has no systems. Data > Data set chooses a model.");
}

} // namespace
} // namespace vesk
