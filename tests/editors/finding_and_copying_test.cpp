// Tools for large lists of series: finding names, copying, exporting, and detecting newer sources.
#include "charts/csv_text.h"
#include "editors/boundary_form.h"
#include "editors/loads_form.h"
#include "editors/segment_form.h"
#include "editors/system_form.h"
#include "network_forms.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vesk {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Finding = NetworkForms;
using Copying = NetworkForms;
using Exporting = NetworkForms;
using Sources = NetworkForms;

struct noting_view final : editor_view {
  void texts_changed() override {}
  void series_changed() override {}
  void go_to_panel(editor_panel& panel) override { went_to = &panel; }

  editor_panel* went_to = nullptr;
};

TEST_F(Finding, GoesRoundTheNamesOfATree) {
  TLoadsForm form(host);
  shown(form);
  for (const std::size_t system : {0, 1}) form.add_all_loads(system);
  const auto next = [&](const char* wanted) {
    form.find_next(nullptr, wanted);
    return form.selected();
  };
  using node = editor_tree::node;
  EXPECT_EQ(next("AK c"), (node{0, 2}));
  EXPECT_EQ(next("ak c"), (node{1, 2}));
  EXPECT_EQ(next("ak c"), (node{0, 2}));
  EXPECT_EQ(next("oxy"), (node{1, std::nullopt})); // a system
  EXPECT_EQ(next("weldon"), (node{1, 0}));
  EXPECT_EQ(next("atlantis"), (node{1, 0}));
  EXPECT_EQ(form.message(), "No name contains \"atlantis\".");
  EXPECT_EQ(next(""), (node{1, 0}));
  EXPECT_THAT(form.message(), StartsWith("Type part of the name"));
}

TEST_F(Finding, GoesToTheRowOfAGridWhereverTheFocusIs) {
  TSegmentForm form(host);
  noting_view view;
  TFillCalcTable& table = shown(form);
  form.set_view(&view);
  form.find_next(form.panels()[0].get(), "OAK");
  EXPECT_EQ(table.active_row(), 2U);
  form.find_next(form.panels()[1].get(), "hal");
  EXPECT_EQ(table.active_row(), 1U);
  EXPECT_EQ(form.panels()[1]->table.active_row(), 1U);
  EXPECT_EQ(view.went_to, nullptr); // the page of the parameters shows that row, too
  EXPECT_FALSE(table.enter(1, 1, "no number"));
  form.find_next(nullptr, "weldon"); // the refused entry comes first
  EXPECT_EQ(table.active_row(), 1U);
  EXPECT_EQ(view.went_to, form.panels()[0].get());
  form.set_view(nullptr);
}

TEST_F(Copying, GivesALoadToSystemsAndSegments) {
  TLoadsForm form(host);
  shown(form);
  form.add_all_loads(0);
  loads_data_type& source = host.data.systems.edit(0).loads.edit(1);
  source.points.edit(0).value = 7;
  source.interpolation_type = interpolation_step;
  source.query.edit().file_name = "gauges.csv";
  const point_list points = source.points;
  host.on_copy_series = [&](TCopySeriesForm& dialog) {
    EXPECT_EQ(dialog.source, "Segment 2 (Halifax), Ammonium");
    EXPECT_EQ(dialog.segment_text(2), "3: Oak City");
    EXPECT_THAT(dialog.SystemCheckListBox, ElementsAre(true, false));
    EXPECT_EQ(dialog.message(), "Choose the systems and segments to copy to.");
    dialog.SystemCheckListBox = {true, true};
    dialog.SegmentCheckListBox = {false, true, true};
    EXPECT_EQ(dialog.message(), "1 load gets new points, 2 loads are added.");
    return true;
  };
  form.copy_record({series_kind::load, 0, 1});
  EXPECT_EQ(form.message(), "Copied: 1 load gets new points, 2 loads are added.");
  ASSERT_EQ(form.item_count(1), 2U);
  for (const loads_data_type& load : {host.data.systems[0].loads[2], host.data.systems[1].loads[0]}) {
    EXPECT_EQ(load.points, points);
    EXPECT_EQ(load.interpolation_type, interpolation_step);
    EXPECT_EQ(load.query->file_name, "gauges.csv");
  }
  EXPECT_EQ(host.data.systems[1].loads[1].segment, 2);
  EXPECT_NE(host.data.systems[0].loads[0].points, points);
  host.undo();
  EXPECT_EQ(form.item_count(1), 0U);
  EXPECT_NE(host.data.systems[0].loads[2].points, points);

  host.on_copy_series = [&](TCopySeriesForm& dialog) {
    dialog.SegmentCheckListBox[0] = true;
    dialog.with_query = false;
    return true;
  };
  form.copy_record({series_kind::load, 0, 1});
  EXPECT_EQ(host.data.systems[0].loads[0].points, points);
  EXPECT_EQ(host.data.systems[0].loads[0].interpolation_type, interpolation_linear);
  const prevesk_dataset_data_type before = host.data;
  host.on_copy_series = [&](TCopySeriesForm& dialog) { // a job ends meanwhile
    dialog.SegmentCheckListBox.assign(3, true);
    host.replace_data_set();
    dialog.data_set_replaced();
    EXPECT_THAT(dialog.message(), HasSubstr("OK copies nothing"));
    return true;
  };
  form.copy_record({series_kind::load, 0, 1});
  EXPECT_EQ(host.data, before);
}

TEST_F(Copying, AddsNoBoundary) {
  boundary_data_type boundary;
  boundary.points = {{{150754, 0}, 1}};
  boundary.segment = 0;
  host.data.systems.edit(0).boundaries.push_back(boundary);
  boundary.points = {};
  host.data.systems.edit(1).boundaries.push_back(boundary);
  boundary.segment = 2;
  host.data.systems.edit(1).boundaries.push_back(boundary);
  TBoundaryForm form(host);
  shown(form);
  host.on_copy_series = [&](TCopySeriesForm& dialog) {
    EXPECT_THAT(dialog.offered, ElementsAre(0, 2));
    dialog.SystemCheckListBox = {true, true};
    dialog.SegmentCheckListBox = {true, true};
    return true;
  };
  form.copy_record({series_kind::boundary, 0, 0});
  EXPECT_EQ(form.message(), "Copied: 2 boundaries get new points.");
  EXPECT_EQ(form.item_count(0), 1U);
  for (const boundary_data_type& one : host.data.systems[1].boundaries) EXPECT_EQ(one.points.size(), 1U);
}

TEST_F(Exporting, WritesExactValuesAndNoFormulas) {
  const temporary_folder folder;
  host.data.systems.edit(0).description = "=cmd(\"x\"), y";
  host.data.systems.edit(1).cmax = 0.1 + 0.2;
  host.data.systems.edit(1).description = "Кислород";
  TSystemForm systems(host);
  shown(systems);
  host.file = folder.file("systems.csv");
  systems.export_csv(*systems.panels()[0]);
  EXPECT_EQ(systems.message(), "Exported: 2 rows to " + *host.file + ".");
  const std::string text = folder.read("systems.csv");
  EXPECT_THAT(text, HasSubstr("\n\"'=cmd(\"\"x\"\"), y\","));
  EXPECT_THAT(text, HasSubstr("\nКислород,"));
  EXPECT_THAT(text, HasSubstr(",0.30000000000000004,"));

  TLoadsForm loads(host);
  shown(loads);
  loads.export_csv(*loads.panels()[0]);
  EXPECT_EQ(loads.message(), "There is nothing to export.");
  loads.add_all_loads(0);
  loads.select(editor_tree::node{0, 0});
  host.file = folder.file("load.csv");
  loads.export_csv(*loads.panels()[0]);
  EXPECT_EQ(folder.read("load.csv"), "Date,Time,Value\n2012-10-01,00:00:00,0\n2012-10-11,00:00:00,0\n");
  host.file = folder.file("missing/load.csv");
  loads.export_csv(*loads.panels()[0]);
  EXPECT_THAT(host.boxes.back(), StartsWith("Export: Cannot "));
}

// A data file written at ten o'clock, its table, and a load filled from the table.
struct NewerSource : Sources {
  NewerSource() {
    write_table("1");
    set_time("gauges.csv", 0);
    host.folder = folder.path;
    host.data.origin.file = folder.path / "river.vki";
    host.data.origin.identity.changed_seconds = ten;
    form.add_all_loads(0);
    import_query_descriptor& query = host.data.systems.edit(0).loads.edit(0).query.edit();
    query.file_name = query.table_name = "gauges.csv";
    query.date_time_field = "time";
    query.value_field = "flow";
    query.restrict_to_run_period = false;
    shown(form);
    form.select(editor_tree::node{0, 0});
  }
  void write_table(const std::string& value) const {
    folder.write("gauges.csv", "time,flow\n2012-10-01 00:00,5\n2012-10-02 00:00," + value + "\n");
  }
  void set_time(const char* file, int seconds_after_ten) const {
    const auto since = std::chrono::seconds(ten + seconds_after_ten);
    std::filesystem::last_write_time(
        folder.path / file, std::chrono::file_clock::from_sys(std::chrono::sys_time<std::chrono::nanoseconds>(since)));
  }
  std::string note() { return form.source_note(series); }
  loads_data_type& stored() { return host.data.systems.edit(0).loads.edit(0); }
  double value(std::size_t row) { return stored().points[row].value; }

  static constexpr std::int64_t ten = 1'700'000'000;
  const temporary_folder folder;
  TLoadsForm form{host};
  editor_panel& series = *form.panels()[0];
};

TEST_F(NewerSource, IsNotedUntilTheSeriesIsRefreshed) {
  EXPECT_EQ(note(), "");
  set_time("gauges.csv", 2); // unpacked together with the data file
  shown(form);
  form.select(editor_tree::node{0, 0});
  EXPECT_EQ(note(), "");
  EXPECT_FALSE(form.item_mark(0, 0));
  write_table("6");      // at the current time
  EXPECT_EQ(note(), ""); // looked up once per showing
  shown(form);
  form.select(editor_tree::node{0, 0});
  EXPECT_EQ(note(), "gauges.csv has changed since this series was filled from it.");
  EXPECT_TRUE(form.item_mark(0, 0));
  EXPECT_EQ(form.item_tip(0, 0), "Segment 1\n" + note());
  EXPECT_FALSE(form.item_mark(0, 1)); // has no query

  form.refresh_from_source(series);
  EXPECT_EQ(form.message(), "Refreshed: gauges.csv, 2 rows, 2 points.");
  EXPECT_THAT(host.long_works, ElementsAre("Reading gauges.csv"));
  EXPECT_EQ(host.undo_label(), "Loads: Refresh this series");
  EXPECT_EQ(value(1), 6);
  EXPECT_EQ(note(), "");
  EXPECT_FALSE(form.item_mark(0, 0));
  host.undo();
  EXPECT_EQ(value(1), 0);
  EXPECT_NE(note(), "");

  set_time("gauges.csv", 1'000'000'000); // by the clock of a server that is ahead
  host.redo();
  EXPECT_NE(note(), "");
  form.refresh_from_source(series);
  EXPECT_EQ(form.message(), "Refreshed: gauges.csv, 2 rows, 2 points. The points are the same as before.");
  EXPECT_EQ(note(), "");
  host.undo();
  EXPECT_EQ(value(1), 0); // this was not a step
  EXPECT_NE(note(), "");
  stored().query.edit().deferred = true; // is read before each run anyway
  EXPECT_EQ(note(), "");
}

TEST_F(NewerSource, IsNotedByTheLogOfADatabase) {
  const auto note_with_log = [&](const char* log) {
    folder.write("gauges.sqlite-wal", log);
    shown(form);
    form.select(editor_tree::node{0, 0});
    return note();
  };
  stored().query.edit().file_name = "gauges.sqlite";
  folder.write("gauges.sqlite", "unchanged");
  set_time("gauges.sqlite", 0);
  EXPECT_EQ(note_with_log(""), ""); // a reader may leave an empty one
  EXPECT_EQ(note_with_log("a change"), "gauges.sqlite has changed since this series was filled from it.");
}

// The query has added its points before, when the series was filled.
TEST_F(NewerSource, ByAQueryThatAddsPointsReplacesThoseThatItFinds) {
  stored().query.edit().replace_existing = false;
  stored().points = {{{150700, 0}, 1}, {{150754, 0}, 2}, {{150800, 0}, 3}};
  form.refresh_from_source(series);
  const point_list once{{{150700, 0}, 1}, {{150754, 0}, 5}, {{150755, 0}, 1}, {{150800, 0}, 3}};
  EXPECT_EQ(stored().points, once);
  form.refresh_from_source(series);
  EXPECT_EQ(stored().points, once);
}

TEST_F(NewerSource, ThatCannotBeReadLeavesTheSeriesAsItWas) {
  const prevesk_dataset_data_type before = host.data;
  host.cancels_long_work = true;
  form.refresh_from_source(series);
  EXPECT_EQ(form.message(), "Cancelled. The series is unchanged.");
  host.cancels_long_work = false;
  folder.write("gauges.csv", "time,flow\n");
  form.refresh_from_source(series);
  folder.write("gauges.csv", std::string("\0\1\2garbage\n\0", 12));
  form.refresh_from_source(series);
  std::filesystem::remove(folder.path / "gauges.csv");
  form.refresh_from_source(series);
  shown(form);
  form.select(editor_tree::node{0, 0});
  EXPECT_EQ(note(), "");
  stored().query.edit().value_field.clear();
  form.refresh_from_source(series);
  const std::string end = " The series is unchanged.";
  EXPECT_THAT(
      host.boxes,
      ElementsAre(
          "Refresh this series: Refreshed: gauges.csv, no rows found. Check the conditions, and that the table covers "
          "the time of the run." +
              end,
          AllOf(HasSubstr("gauges.csv"), EndsWith("." + end)),
          "Refresh this series: gauges.csv: no such file, neither in the folder of the data file nor in the current "
          "folder." +
              end,
          AllOf(HasSubstr("gauges.csv: no such file"), EndsWith("." + end))));
  stored().query.edit().value_field = "flow";
  EXPECT_EQ(host.data, before);
  EXPECT_EQ(host.undo_label(), "Loads: Add All Loads");

  write_table("6");
  host.in_long_work = [&] { host.replace_data(before); }; // a job ends
  form.refresh_from_source(series);
  EXPECT_EQ(host.data, before);
  EXPECT_THAT(form.message(), StartsWith("A job has replaced the data set."));
  form.select(editor_tree::node{0, 1});
  EXPECT_FALSE(form.has_source(series));
  host.boxes.clear();
  form.refresh_from_source(series); // no query
  EXPECT_TRUE(host.boxes.empty());
}

} // namespace
} // namespace vesk
