// Data sets with flows between segments, described as in a drawing.
#pragma once

#include "network/network_graph.h"

#include <string>
#include <vector>

namespace vesk {

struct drawn_flow {
  int from, to; // segments from 1; 0: the outside
  double mean;  // m3/s
};

// Segments of 100 m each, with these flows in the field of surface water.
inline prevesk_dataset_data_type drawn_data(std::size_t segments, const std::vector<drawn_flow>& flows) {
  prevesk_dataset_data_type data;
  data.seed_date = 36526, data.seed_time = 0, data.end_date = 36536, data.end_time = 0;
  data.resize_segments(segments);
  for (std::size_t i = 0; i < segments; ++i) {
    data.segments.edit(i).length = 100;
    data.segments.edit(i).name = "S" + std::to_string(i + 1);
  }
  data.flow_fields.edit(0).used = true;
  for (const drawn_flow& one : flows) {
    flow_function_data_type function;
    function.points = {{moment_type::from_date_time(36526), one.mean}};
    function.pairs = {{1, one.from - 1, one.to - 1}};
    data.flow_fields.edit(0).functions.push_back(function);
  }
  return data;
}

inline network_graph drawn_network(std::size_t segments, const std::vector<drawn_flow>& flows) {
  return make_network(drawn_data(segments, flows));
}

// "1-2-4 200 m 3.5 m3/s": a way or a flow per line.
inline std::string number_text(double value) {
  std::string text = std::to_string(value);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

} // namespace vesk
