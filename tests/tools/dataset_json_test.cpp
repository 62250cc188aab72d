#include "dataset/iso_dates.h"
#include "tools/dataset_json.h"

#include "old_data_file.h"
#include "sample_data_set.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>

namespace vesk {
namespace {

using namespace std::string_literals;

std::string bytes_of(const prevesk_dataset_data_type& data) {
  std::string bytes;
  binary_writer writer(bytes);
  data.write(writer);
  return bytes;
}

std::string json_of(const prevesk_dataset_data_type& data, json_dates dates = json_dates::numbers) {
  std::string json;
  binary_writer writer(json);
  write_json(writer, data, layout<prevesk_dataset_data_type>::last_section, dates);
  return json;
}

std::string refusal(std::string_view json) {
  try {
    read_json(json);
  } catch (const json_exception& error) {
    return error.what();
  }
  return "none";
}

TEST(DatasetJson, NoControlCharacterReachesTheReadersTerminal) {
  prevesk_dataset_data_type data;
  data.description = "a\x1b[2J\x7f\xc2\x9b"
                     "0m\xe2\x80\xae\n\"\\ \xc3\xa4";
  const std::string json = json_of(data);
  EXPECT_NE(json.find(R"("a\u001b[2J\u007f\u009b0m\u202e\n\"\\ )"
                      "\xc3\xa4"),
            std::string::npos)
      << json;
  EXPECT_EQ(read_json(json).description, data.description);
}

TEST(DatasetJson, AZeroKeepsItsSign) {
  const prevesk_dataset_data_type data =
      read_json(R"({"min_dt": -0, "max_dt": 0, "flow_option": -0, "time_steps": {"points": [[1, 2, -0]]}})");
  EXPECT_TRUE(std::signbit(data.min_dt));
  EXPECT_FALSE(std::signbit(data.max_dt));
  EXPECT_TRUE(std::signbit(data.time_steps.points[0].value));
  EXPECT_EQ(data.flow_option, 0U);
}

TEST(DatasetJson, ADataSetComesBackByteForByte) {
  prevesk_dataset_data_type data = sample_data_set();
  const double numbers[] = {0.0,
                            -0.0,
                            5e-324,
                            1.7976931348623157e308,
                            0.1,
                            1.0 / 3,
                            123456789012345680.0,
                            1e23,
                            -1e22,
                            4096,
                            18446744073709551616.0,
                            std::numeric_limits<double>::infinity(),
                            -std::numeric_limits<double>::infinity(),
                            2.2250738585072014e-308};
  for (const double number : numbers) data.time_steps.points.push_back({{1, 2}, number});
  for (const std::uint64_t bits : {0x7ff8000000000000u, 0xfff8000000000000u, 0x7ff0000000000001u})
    data.time_steps.points.push_back({{1, 2}, std::bit_cast<double>(bits)});
  data.print_intervals.points.push_back({{-2147483647 - 1, 2147483647}, 1});
  data.reserved_option = 4294967295u;
  std::string all_bytes;
  for (int byte = 0; byte < 256; ++byte) all_bytes += static_cast<char>(byte);
  data.comments = all_bytes;
  data.description = "control \x01\x1f\x7f, quote \" and \\ \t\r\n\b, zero \0 and \xe2\x82\xac"s;
  const std::string json = json_of(data);
  EXPECT_EQ(bytes_of(read_json(json)), bytes_of(data));
  EXPECT_EQ(json_of(read_json(json)), json);
}

// The two ways of counting days of the data file, and what no ISO text gives back bit for bit.
TEST(DatasetJson, DatesAsIsoTextsComeBackByteForByte) {
  prevesk_dataset_data_type data = read_json("{}");
  data.seed_date = 40817; // 1 October 2011
  data.seed_time = 0.25;
  data.end_date = 40817.5;         // not a whole day
  data.end_time = 23400.5 / 86400; // not a whole second
  data.skip_date = std::numeric_limits<double>::infinity();
  data.skip_time = -0.0;
  data.time_steps.points = {
      {{150388, 23400}, 1}, {{0, 86399}, 2}, {{59, 0}, 3}, {{150388, 86400}, 4}, {{-584025, -1}, 5}};
  const std::string iso = json_of(data, json_dates::iso);
  for (const char* line :
       {R"(["2011-10-01", "06:30:00", 1])", R"(["1600-01-01", "23:59:59", 2])", R"(["1600-02-29", "00:00:00", 3])",
        R"(["2011-10-01", 86400, 4])", "[-584025, -1, 5]", R"("seed_date": "2011-10-01")", R"("seed_time": "06:00:00")",
        R"("end_date": 40817.5)", R"("end_time": 0.270839)", R"("skip_date": "inf")", R"("skip_time": -0.0)"})
    EXPECT_NE(iso.find(line), std::string::npos) << line << "\n" << iso;
  EXPECT_EQ(bytes_of(read_json(iso)), bytes_of(data));

  for (std::int32_t second = 0; second < 86400; ++second) { // no time of day is a number
    const auto text = iso_time_of_fraction(second / 86400.0);
    ASSERT_TRUE(text && fraction_of_iso_time(*text) == second / 86400.0) << second;
  }

  const prevesk_dataset_data_type typed = read_json(
      R"({"seed_date": "2012-02-29", "end_time": "18:00", "time_steps": {"points": [["1600-12-31", "00:01", 2]]}})");
  EXPECT_EQ(typed.seed_date, 40968);
  EXPECT_EQ(typed.end_time, 0.75);
  EXPECT_EQ(typed.time_steps.points, (point_list{{{365, 60}, 2}}));
  for (const char* wrong :
       {"2011-02-29", "2011-13-01", "2011-1-01", "10/01/2011", "2011-10-01T06:00", "0000-01-01", ""})
    EXPECT_EQ(refusal(R"({"end_date": ")" + std::string(wrong) + "\"}"),
              "end_date: expected a day number or a date like \"2011-10-01\", found \"" + std::string(wrong) + "\".");
  for (const char* wrong : {"24:00:00", "06:60", "06:30:60", "6:30", "06-30", "06:30:", "ab:cd"})
    EXPECT_EQ(refusal(R"({"time_steps": {"points": [["2011-10-01", ")" + std::string(wrong) + "\", 1]]}}"),
              "time_steps.points[0][1]: expected seconds or a time like \"06:30:00\", found \"" + std::string(wrong) +
                  "\".");
}

TEST(DatasetJson, PrintsEveryKindOfMember) {
  prevesk_dataset_data_type data = read_json("{}");
  data.time_steps.points = {{{1, 2}, 0.5}, {{3, 4}, std::numeric_limits<double>::quiet_NaN()}};
  data.exchange_fields.clear();
  data.nps_file = "Stra\xdf"
                  "e";
  flow_function_data_type function;
  function.pairs = {{0.5, -1, 2}};
  data.flow_fields.clear();
  data.flow_fields.resize(1);
  data.flow_fields.edit(0).functions = {function};
  data.file_version = 0x00010001;
  EXPECT_EQ(json_of(data), R"({
  "file_version": 65537,
  "print_intervals": {
    "points": []
  },
  "time_steps": {
    "points": [
      [1, 2, 0.5],
      [3, 4, "nan"]
    ]
  },
  "segments": [],
  "time_functions": [],
  "constant_groups": [],
  "systems": [],
  "parameters": [],
  "exchange_fields": [],
  "flow_fields": [
    {
      "functions": [
        {
          "points": [],
          "pairs": [
            {"fraction": 0.5, "from_segment": -1, "to_segment": 2}
          ],
          "description": "Flow Function"
        }
      ],
      "used": false,
      "reserved": 0,
      "scale": 1,
      "conversion": 1,
      "description": ""
    }
  ],
  "comments": "",
  "description": "Unnamed VESK Input Data Set",
  "hydrodynamic_file": "",
  "nps_file": {"windows-1252": "Straße"},
  "seed_date": 0,
  "end_date": 0,
  "seed_time": 0,
  "end_time": 0,
  "time_step_option": true,
  "negative_solution": false,
  "use_nps_file": false,
  "bed_compaction_option": false,
  "reserved_option": 0,
  "model_type": 0,
  "restart_option": 0,
  "flow_option": 1,
  "volume_scale_factor": 1,
  "volume_conversion_factor": 1,
  "bed_compaction_time_step": 0
}
)");
}

std::string without_spaces(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
  return text;
}

TEST(DatasetJson, MembersOfEveryRecordHaveTheirNames) {
  std::string expected = R"({
"file_version": 458759,
"print_intervals": {"points": [[146097, 3600, 0.5]], "query": Q(print)},
"time_steps": {"points": [], "query": Q(step)},
"segments": [{
  "parameters": [{"isc": 11, "value": 1}, {"isc": 12, "value": 2}],
  "systems": [{"isc": 21, "initial_concentration": 3, "fraction_dissolved": 0.5}],
  "volume": 100, "vmult": 1, "vexp": 2, "dmult": 3, "dexp": 4, "segment_type": 5, "bottom_segment": -1,
  "name": "Bend", "length": 10, "width": 20, "slope": 30, "bottom_roughness": 40, "minimum_depth": 50}],
"time_functions": [{
  "used": true, "isc": 31, "description": "Wind", "points": [[146097, 3600, 1]],
  "interpolation_type": 1, "query": Q(wind)}],
"constant_groups": [{
  "group_id": 41, "description": "Global", "constants": [{
    "isc": 51, "minimum": 0, "maximum": 1, "default_value": 0.5, "description": "Rate", "used": true,
    "value": 0.75}]}],
"systems": [{
  "isc": 21, "gsysbypass": 1, "ifield": 2, "jmass": true, "noqsysbypass": false, "norsysbypass": true,
  "density": 1.5, "cmax": 2.5, "scalb": 3.5, "convb": 4.5, "scalw": 5.5, "convw": 6.5, "description": "Nitrate",
  "loads": [{"points": [[146097, 3600, 2]], "segment": 0, "interpolation_type": 1, "query": Q(load)}],
  "boundaries": [{"points": [[146097, 3600, 3]], "segment": 1, "interpolation_type": 1, "query": Q(boundary)}]}],
"parameters": [{
  "isc": 11, "minimum": 0, "maximum": 9, "default_value": 4, "description": "Shade", "used": true, "scale": 2}],
"exchange_fields": [{
  "functions": [{
    "points": [[146097, 3600, 4]], "pairs": [{"area": 5, "length": 6, "segment_one": 0, "segment_two": -1}],
    "description": "Mix", "interpolation_type": 1, "query": Q(mix)}],
  "reserved": 77, "used": true, "scale": 1.5, "conversion": 2.5, "description": "Surface"}],
"flow_fields": [{
  "functions": [{
    "points": [[146097, 3600, 5]], "pairs": [{"fraction": 0.25, "from_segment": -1, "to_segment": 0}],
    "description": "Flow", "interpolation_type": 1, "query": Q(flow)}],
  "used": true, "reserved": 78, "scale": 3.5, "conversion": 4.5, "description": "Main"}],
"comments": "remark", "description": "Old river", "hydrodynamic_file": "h.hyd", "nps_file": "n.nps",
"seed_date": 36526, "end_date": 36527, "seed_time": 0.25, "end_time": 0.75,
"time_step_option": false, "negative_solution": true, "use_nps_file": true, "bed_compaction_option": true,
"reserved_option": 61, "model_type": 7, "restart_option": 1, "flow_option": 2,
"volume_scale_factor": 1.25, "volume_conversion_factor": 2.25, "bed_compaction_time_step": 3.25,
"hydrodynamic_file_type": 4, "solution_type": 3,
"output_controls": [{
  "isc": 61, "description": "Oxygen", "short_description": "DO", "units": "mg/L", "enabled": false,
  "csv_enabled": true}],
"skip_date": 36526.5, "skip_time": 0.125, "fraction_of_max_time_step": 0.8, "max_dt": 0.5, "min_dt": 0.001,
"vesk_to_vesk_linkage_option": 1, "project_files": ["a.vki", "b.vki"]
})";
  // Q(name) is a query.
  for (std::size_t begin; (begin = expected.find("Q(")) != std::string::npos;) {
    const std::size_t end = expected.find(')', begin);
    expected.replace(begin, end + 1 - begin,
                     R"({"name": ")" + expected.substr(begin + 2, end - begin - 2) +
                         R"(", "file_name": "a.db", "table_name": "", "restrict_to_run_period": false,
                         "average_duplicates": true, "date_time_field": "when", "value_field": "what",
                         "replace_existing": false, "conditions": [{"field_name": "station", "conjunction": 1,
                         "comparison": 4, "value_text": "7"}], "deferred": true})");
  }
  EXPECT_EQ(without_spaces(json_of(old_data_set(0x00070007))), without_spaces(expected));
}

TEST(DatasetJson, AnOlderVersionsMembersComeBackWithDefaultsForTheOthers) {
  for (const std::uint32_t version : {0x00010001u, 0x00010009u, 0x00070001u, 0x00070002u, 0x00070004u, 0x00070007u}) {
    prevesk_dataset_data_type data = old_data_set(version);
    if (version < 0x00070003) data.skip_date = data.skip_time = 0;
    prevesk_dataset_data_type expected = data;
    expected.file_version = 0x00070007;
    EXPECT_EQ(read_json(json_of(data)), expected) << version;
  }
}

TEST(DatasetJson, MembersLeftOutHaveTheirDefaults) {
  prevesk_dataset_data_type expected;
  expected.seed_date = expected.end_date = expected.skip_date = 0;
  expected.seed_time = expected.end_time = expected.skip_time = 0;
  EXPECT_EQ(read_json("{}"), expected);
  EXPECT_EQ(expected.model_type, 0u);
  expected.segments.resize(2);
  expected.segments.edit(1).systems.resize(1);
  expected.exchange_fields.clear();
  EXPECT_EQ(read_json(R"({"exchange_fields": [], "segments": [{}, {"systems": [{}]}]})"), expected);
}

TEST(DatasetJson, WhatIsWrongIsNamedByItsPath) {
  const std::string long_text(256, 'x');
  const struct {
    std::string json, refusal;
  } cases[] = {
      {R"({"segments": [{}, {}, {}, {"volume": "big"}]})", "segments[3].volume: expected a number, found a text."},
      {R"({"segments": [{}, {"volume": 1e999}]})",
       "segments[1].volume: 1e999 is outside -1.7976931348623157e+308 to 1.7976931348623157e+308."},
      {R"({"time_steps": {"points": [[1, 2, -1e999]]}})",
       "time_steps.points[0][2]: -1e999 is outside -1.7976931348623157e+308 to 1.7976931348623157e+308."},
      {R"({"segments": [{"volume": null}]})", "segments[0].volume: expected a number, found null."},
      {R"({"segments": [{"volume": "nan:0000000000000001"}]})", "segments[0].volume: expected a number, found a text."},
      {R"({"segments": [{"volum": 1}]})", "segments[0].volum: unknown member; the nearest is volume."},
      {R"({"segmants": []})", "segmants: unknown member; the nearest is segments."},
      {R"({"wind and weather": []})", "wind and weather: unknown member."},
      {R"({"segments": [{"parameters": [{}, {"valeu": 1}]}]})",
       "segments[0].parameters[1].valeu: unknown member; the nearest is value."},
      {R"({"segments": {}})", "segments: expected an array, found an object."},
      {R"({"segments": [7]})", "segments[0]: expected an object, found 7."},
      {R"([])", "expected an object, found an array."},
      {R"({"model_type": -1})", "model_type: -1 is outside 0 to 4294967295."},
      {R"({"model_type": 4294967296})", "model_type: 4294967296 is outside 0 to 4294967295."},
      {R"({"model_type": 1.5})", "model_type: expected a whole number, found 1.5."},
      {R"({"segments": [{"bottom_segment": 2147483648}]})",
       "segments[0].bottom_segment: 2147483648 is outside -2147483648 to 2147483647."},
      {R"({"use_nps_file": 1})", "use_nps_file: expected true or false, found 1."},
      {R"({"time_steps": {"points": [[1, 2, 3], [1, 2]]}})", "time_steps.points[1]: a point is [date, time, value]."},
      {R"({"time_steps": {"points": [[1, 2, 3, 4]]}})", "time_steps.points[0][3]: a point is [date, time, value]."},
      {R"({"time_steps": {"points": [[1, "2", 3]]}})",
       "time_steps.points[0][1]: expected seconds or a time like \"06:30:00\", found \"2\"."},
      {R"({"time_steps": {"query": {"conditions": [{"comparison": []}]}}})",
       "time_steps.query.conditions[0].comparison: expected a whole number, found an array."},
      {R"({"description": {"windows-1252": "中"}})", "description.windows-1252: a character is not in Windows-1252."},
      {R"({"description": {}})", "description: expected a text, found an empty object."},
      {R"({"description": {"latin-1": "a"}})", "description.latin-1: unknown member; the only one is windows-1252."},
      {R"({"project_files": ["a", ")" + long_text + R"("]})",
       "project_files[1]: the text has 256 bytes; at most 255 are allowed."},
      {R"({"flow_option": 1, "flow_option": 2})", "flow_option: given twice."},
      {R"({"file_version": 458760})", "file_version: 7.8 is newer than 7.7, the version that is written."},
      {"{\"segments\": [\n{\"volume\": }]}", "parse error at line 2, column 12: syntax error while parsing value - "
                                             "unexpected '}'; expected '[', '{', or a literal."},
      {"", "parse error at line 1, column 1: syntax error while parsing value - unexpected end of input; expected "
           "'[', '{', or a literal."},
  };
  for (const auto& c : cases) EXPECT_EQ(refusal(c.json), c.refusal) << c.json;
}

} // namespace
} // namespace vesk
