#include "sample_data_set.h"
#include "temporary_folder.h"

#include "dataset/any_case.h"
#include "dataset/findings_list.h"
#include "dataset/text_encoding.h"
#include "dataset/unshared_bytes.h"
#include "dataset/vki_file.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>

namespace vesk {
namespace {

TEST(DataSet, ANewOneHasTheTransportFieldsAndTheClocksDates) {
  const prevesk_dataset_data_type data;
  std::string names;
  for (const auto& field : data.exchange_fields) names += field.description.str() + ";";
  EXPECT_EQ(names, "Surface Water;Pore Water;");
  names.clear();
  for (const auto& field : data.flow_fields) names += field.description.str() + ";";
  EXPECT_EQ(names, "Surface Water;Pore Water;Solids 1;Solids 2;Solids 3;Evaporation/Precipitation;");
  EXPECT_EQ(data.description, "Unnamed VESK Input Data Set");
  EXPECT_EQ(data.library, "UNKNOWN.DLL");
  EXPECT_EQ(data.model_name, "UNKNOWN MODEL");
  EXPECT_EQ(data.time_steps.query->name, "New Query");
  EXPECT_EQ(data.file_version, 0x00070007u);
  EXPECT_NEAR(data.start_date_time(), current_date_time(), 2.0 / 86400);
  EXPECT_EQ(data.seed_date, std::floor(data.seed_date));
  EXPECT_EQ(data.end_date, data.skip_date);
}

TEST(Records, DefaultsOfNewOnes) {
  const flow_pair_record_type flow;
  EXPECT_EQ(flow, (flow_pair_record_type{1.0, -1, -1}));
  EXPECT_EQ(exchange_pair_record_type{}, (exchange_pair_record_type{0, 0, -1, -1}));
  const system_data_type system;
  for (const double factor : {system.density, system.scalb, system.convb, system.scalw, system.convw})
    EXPECT_EQ(factor, 1.0);
  EXPECT_EQ(system.cmax, 100.0);
  EXPECT_EQ(segment_data_type{}.name, "Vesk Segment");
  EXPECT_EQ(segment_data_type{}.bottom_segment, -1);
  EXPECT_EQ(exchange_function_data_type{}.description, "Exchange Function");
  EXPECT_EQ(flow_function_data_type{}.description, "Flow Function");
  EXPECT_EQ(time_function_data_type{}.cursor_next.value, std::numeric_limits<double>::max());
}

TEST(Records, ShortTextsAreCutTo255Bytes) {
  const std::string long_text = std::string(254, 'a') + "bcd";
  EXPECT_EQ(short_text(long_text).str(), std::string(254, 'a') + "b");
  // Never inside a character, unless the bytes are not UTF-8: each is a character then.
  const std::string head(253, 'a');
  for (const auto& [text, kept] : {std::pair(head + "\u20acb", head),      // 3 bytes, one too many
                                   {head + "\u00e9b", head + "\u00e9"},    // fits to the byte
                                   {head + "b\U0001f41f", head + "b"},     // 4 bytes, three too many
                                   {head + "\xe2\x82", head + "\xe2\x82"}, // the text itself ends inside one
                                   {head + "b\xe9\xa9q", head + "b\xe9"},  // not a character as a whole
                                   {"\xe9" + head + "\u00e9", "\xe9" + head + "\xc3"}})
    EXPECT_EQ(short_text(text).str(), kept);
  output_control_type output;
  output.units = long_text;
  EXPECT_EQ(output.units.size(), 255u);
}

TEST(DataSet, EmptySeriesGetTwoPointsOverTheRunAndOthersStay) {
  prevesk_dataset_data_type data;
  data.seed_date = 36526;
  data.seed_time = 0.25;
  data.end_date = 36530;
  data.end_time = 0.5;
  data.apply_seed();
  point_list points;
  data.ensure_default_points(points);
  EXPECT_EQ(points, (point_list{{{year_2000, 21600}, 0}, {{year_2000 + 4, 43200}, 0}}));
  point_list one{{{1, 2}, 3}};
  data.ensure_default_points(one);
  EXPECT_EQ(one.size(), 1u);
}

TEST(DataSet, WhatIsSuspiciousIsListedOncePerPlace) {
  prevesk_dataset_data_type data;
  data.seed_date = 36526;
  data.seed_time = data.end_time = 0;
  data.end_date = 36530;
  data.apply_seed();
  data.segments.resize(2);
  data.segments.edit(1).name = "Weir";
  parameter_data_type depth;
  depth.description = "Depth";
  depth.used = true;
  depth.minimum = 1;
  depth.maximum = 9;
  data.parameters.push_back(depth);
  for (std::size_t i = 0; i < 2; ++i) data.segments.edit(i).parameters.resize(1);
  data.give_default_points();
  data.time_steps.points = {{{year_2000, 0}, 1}};
  flow_function_data_type flow;
  flow.points = {{{year_2000, 0}, 1}, {{year_2000, 0}, 2}};
  flow.pairs = {{1, no_segment, 0}, {1, 0, 7}, {1, 1, 1}};
  data.flow_fields.edit(0).used = true;
  data.flow_fields.edit(0).functions.push_back(flow);
  data.flow_fields.edit(1).functions.push_back(flow);
  system_data_type system;
  system.description = "Salt";
  loads_data_type load;
  load.segment = 1;
  load.points = {{{year_2000 + 99, 0}, 1}};
  system.loads.push_back(load);
  load.segment = 500;
  load.points = {{{year_2000, 0}, 1}};
  system.loads.push_back(load);
  data.systems.push_back(system);
  time_function_data_type unused;
  data.time_functions.push_back(unused);
  EXPECT_EQ(list_findings(data),
            (std::vector<std::string>{
                "Parameter Depth, segment 1 (Vesk Segment): The value is outside the catalogue's range, from 1 to 9. 2 "
                "segments in all.",
                "Flows, Surface Water Function #1, pair 2: Segment 8 does not exist. 2 pairs in all.",
                "Flows, Pore Water: This field is not used: its functions and pairs have no effect on a run.",
                "Print Interval, row 1: The bundled engine refuses an interval of 0 or less. 2 rows in all.",
                "Load, Segment 2 (Weir), Salt: This series is used, but it begins after the end of the run.",
                "Load, Segment 501 (), Salt: Segment 501 does not exist.",
                "Flows, Surface Water Function #1, row 1: Another row has the same date and time. 2 rows in all."}));
}

TEST(DataSet, SegmentsThatGetTheirFirstListsShareThemAndOthersKeepTheirValues) {
  prevesk_dataset_data_type data;
  data.parameters.resize(1);
  data.resize_segments(3);
  data.segments.edit(0).parameters.set(0, {7, 2.5});
  data.parameters.resize(2);
  data.systems.resize(1);
  data.resize_segments(4);
  EXPECT_EQ(data.segments[0].parameters[0], segment_parameter_data_record_type(7, 2.5));
  EXPECT_EQ(data.segments[0].parameters[1], segment_parameter_data_record_type(0, 0.0));
  EXPECT_EQ(data.segments[3].parameters.size(), 2u);
  EXPECT_TRUE(data.segments[3].systems.values().shares_with(data.segments[0].systems.values()));
  EXPECT_TRUE(data.segments[3].systems.isc_numbers().shares_with(data.segments[0].systems.isc_numbers()));
}

TEST(DataSet, TheLimitsAreCheckedInOneOrderAndWhatIsUnusedIsOnlyNoted) {
  prevesk_dataset_data_type data; // all limits are 0
  const auto with_point = [](auto series) {
    series.points.push_back({});
    return series;
  };
  data.resize_segments(1);
  data.segments.edit(0).name = "Bay";
  data.exchange_fields.edit(0).used = true;
  data.exchange_fields.edit(0).functions.push_back(with_point(exchange_function_data_type{}));
  data.flow_fields.edit(1).functions.push_back(with_point(flow_function_data_type{}));
  const auto add_system = [&](const char* name, std::uint32_t bypass, std::int32_t segment) {
    system_data_type system;
    system.description = name;
    system.gsysbypass = bypass;
    loads_data_type load;
    load.segment = segment;
    system.loads.push_back(with_point(load));
    if (bypass != system_bypassed) system.boundaries.push_back(with_point(boundary_data_type{}));
    data.systems.push_back(system);
  };
  add_system("Salt", system_constant, 0);
  add_system("Dye", system_bypassed, 7);
  data.print_intervals.points.push_back({});
  data.time_steps.points.push_back({});
  time_function_data_type function;
  function.description = "Wind";
  data.time_functions.push_back(with_point(function));

  EXPECT_FALSE(data.check_limits());
  std::string findings;
  for (const auto& [message, severity] : data.validation_results)
    findings += std::to_string(severity) + " " + message + "\n";
  EXPECT_EQ(findings,
            "2 Maximum of 0 segments exceeded\n"
            "2 Maximum of 0 exchange functions for Surface Water exchange field exceeded\n"
            "2 Maximum of 0 time value pairs for exchange function 1 of Surface Water exchange field exceeded\n"
            "1 Maximum of 0 flow functions for UNUSED Pore Water flow field exceeded\n"
            "1 Maximum of 0 time value pairs for flow function 1 of UNUSED Pore Water flow field exceeded\n"
            "2 Maximum of 0 loads for Salt system exceeded\n"
            "2 Maximum of 0 time/value pairs for segment 1 (Bay) load on Salt system exceeded\n"
            "1 Maximum of 0 loads for BYPASSED Dye system exceeded\n"
            "1 Maximum of 0 time/value pairs for segment 8 () load on BYPASSED Dye system exceeded\n"
            "2 Maximum of 0 boundaries for Salt system exceeded\n"
            "2 Maximum of 0 time/value pairs for segment 1 (Bay) boundary on Salt system exceeded\n"
            "1 BYPASSED Dye system has no boundaries.\n"
            "2 Maximum of 0 time/value pairs for print intervals exceeded\n"
            "2 Maximum of 0 time/value pairs for time steps exceeded\n"
            "1 Maximum of 0 time/value pairs for UNUSED Wind time function exceeded\n");
}

TEST(DataSet, ACopyIsRestoredWholeWhateverWasEdited) {
  const prevesk_dataset_data_type snapshot = sample_data_set();
  prevesk_dataset_data_type data = snapshot;
  EXPECT_EQ(data, snapshot);
  data.segments.edit(1).parameters.set(0, {10, 99});
  EXPECT_NE(data, snapshot);
  data.systems.edit(0).loads.edit(0).points.edit(1).value = 5;
  data.flow_fields.edit(5).functions.edit(0).pairs.erase(0);
  data.time_functions.edit(1).query.edit().conditions.clear();
  EXPECT_EQ(snapshot, sample_data_set());
  data = snapshot;
  EXPECT_EQ(data, sample_data_set());
}

// 100 segments with 1,000 parameters each, and a series of 100,000 points.
prevesk_dataset_data_type large_data_set() {
  prevesk_dataset_data_type data;
  for (int i = 0; i < 100; ++i) data.segments.push_back(sample_segment(i, 1000, 2));
  data.time_functions = {sample_time_function(1), sample_time_function(2)};
  for (int i = 0; i < 100000; ++i) data.time_functions.edit(1).points.push_back({{i, 0}, 1.5});
  data.time_functions.edit(1).points.shrink_to_fit();
  return data;
}

TEST(UnsharedBytes, CountWhatACopyHoldsAlone) {
  const prevesk_dataset_data_type data = large_data_set();
  const std::size_t records = 40'000; // room for what containers reserve, and for the records that hold an array
  const auto expect_bytes = [&](const prevesk_dataset_data_type& kept, const prevesk_dataset_data_type& now,
                                std::size_t arrays) {
    const std::size_t bytes = unshared_bytes(kept, now);
    EXPECT_GE(bytes, arrays);
    EXPECT_LE(bytes, arrays + records);
  };
  prevesk_dataset_data_type now = data;
  expect_bytes(data, now, 0);
  now.time_functions.edit(1).points.set(7, {{7, 0}, 9});
  expect_bytes(data, now, 16 * 100'003); // three points came with the sample
  now = data;
  now.segments.edit(3).parameters.set(0, {10, 99}); // its values, not its numbers
  expect_bytes(data, now, 8 * 1000);
  now.segments.insert(0, sample_segment(7, 1000, 2)); // all others move on, with the arrays that they share
  expect_bytes(data, now, 8 * 1000 + 100 * sizeof(segment_data_type));
  now = data;
  now.segments.clear();
  expect_bytes(data, now, 100 * (sizeof(segment_data_type) + 12 * 1000));
  expect_bytes(now, data, 0);
  expect_bytes(data, prevesk_dataset_data_type(), 100 * (sizeof(segment_data_type) + 12 * 1000) + 16 * 100'003);
  now = data;
  now.comments = std::string(500'000, 'c');
  expect_bytes(now, data, 500'000);
}

TEST(UnsharedBytes, CountAFilesArenaWholeOnceTheOtherHasNothingOfIt) {
  const temporary_folder folder;
  save_data_file(folder.file("large.vki"), large_data_set());
  const std::size_t file = std::filesystem::file_size(folder.file("large.vki"));
  prevesk_dataset_data_type data;
  read_data_file(folder.file("large.vki"), data);
  prevesk_dataset_data_type edited = data;
  edited.time_functions.edit(0).points.set(0, {{7, 0}, 9}); // of three points
  EXPECT_LT(unshared_bytes(data, edited), 20'000u);
  prevesk_dataset_data_type kept; // only these three points
  kept.time_functions.push_back(data.time_functions[0]);
  EXPECT_LT(unshared_bytes(kept, edited), 20'000u);
  EXPECT_GE(unshared_bytes(kept, prevesk_dataset_data_type()), file);
  EXPECT_LT(unshared_bytes(data, prevesk_dataset_data_type()), file + 100'000); // not once for each array
}

TEST(TextEncoding, Utf8IsTakenStrictly) {
  for (const char* good : {"", "plain", "\xc3\xa4", "\xe2\x82\xac", "\xf4\x8f\xbf\xbf", "\xed\x9f\xbf"})
    EXPECT_TRUE(is_utf8(good)) << good;
  for (const char* bad : {"\x80", "\xc3", "\xc3(", "\xc0\xaf", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80",
                          "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf8\x88\x80\x80\x80", "\xe2\x82"})
    EXPECT_FALSE(is_utf8(bad)) << bad;
}

TEST(TextEncoding, EveryByteOfWindows1252HasACharacterAndComesBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  const std::string text = utf8_from_windows_1252(all);
  EXPECT_TRUE(is_utf8(text));
  EXPECT_EQ(windows_1252_from_utf8(text), all);
  EXPECT_EQ(utf8_from_windows_1252("\x80\x81\xdf"), "\xe2\x82\xac\xc2\x81\xc3\x9f");
  EXPECT_EQ(windows_1252_from_utf8("\xc2\x80"), std::nullopt); // U+0080: its byte is the euro sign
  EXPECT_EQ(windows_1252_from_utf8("\xe4\xb8\xad"), std::nullopt);
  EXPECT_EQ(shown_text("\xc3\xa4"), "\xc3\xa4");
  EXPECT_EQ(shown_text("\xe4"), "\xc3\xa4");
}

TEST(TextEncoding, NamesAreEqualInAnyCaseOfEveryScript) {
  EXPECT_EQ(in_capitals("Oak city 7"), "OAK CITY 7");
  EXPECT_EQ(in_capitals("Мост ñandú straße ὀδυσσεύς 𐐨 橋"), "МОСТ ÑANDÚ STRAßE ὈΔΥΣΣΕΎΣ 𐐀 橋");
  EXPECT_TRUE(equal_names("M\xfchle", "MÜHLE")); // Windows-1252 and UTF-8
  EXPECT_FALSE(equal_names("Mühle", "Muhle"));
}

TEST(TextEncoding, WhatCommandsATerminalIsWrittenOut) {
  const struct {
    std::string bytes, printed;
  } cases[] = {
      {"Roanoke, upper reach\tkm 3", "Roanoke, upper reach\tkm 3"},
      {"M\xc3\xbchlbach \xe2\x86\x92 Elbe", "M\xc3\xbchlbach \xe2\x86\x92 Elbe"},
      {"M\xfchlbach", "M\xc3\xbchlbach"},
      {"\x1b]52;c;cm0gLXJmIH4=\x07", "\\x1b]52;c;cm0gLXJmIH4=\\x07"}, // would fill the clipboard
      {"done\rfailed", "done\\x0dfailed"},                            // would hide what was written before
      {"one\ntwo\r\nthree\n", "one\\ntwo\\nthree\\n"},                // would forge a line
      {std::string("\0\x7f\b", 3), "\\x00\\x7f\\x08"},
      {"\xc2\x9b"
       "2J \xc2\x85",
       "\\x9b2J \\x85"},                           // C1: CSI in two bytes of UTF-8
      {"\x81", "\\x81"},                           // a byte that Windows-1252 leaves open
      {"a\xe2\x80\xaeikv.exe", "a\\u202eikv.exe"}, // would show the ending the other way round
      {"\xd8\x9c\xe2\x80\x8e\xe2\x80\x8f\xe2\x81\xa6\xe2\x81\xa9", "\\u061c\\u200e\\u200f\\u2066\\u2069"},
      {"\xe2\x80\x8d\xe2\x80\xaf\xe2\x81\xaa", "\xe2\x80\x8d\xe2\x80\xaf\xe2\x81\xaa"}, // their neighbours
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(printable_text(c.bytes), c.printed);
}

} // namespace
} // namespace vesk
