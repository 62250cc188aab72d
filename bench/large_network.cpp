#include "large_network.h"

#include <string>

namespace vesk::bench {

prevesk_dataset_data_type make_large_network(std::size_t segments) {
  prevesk_dataset_data_type data;
  data.parameters.resize(30);
  data.systems.resize(20);
  data.resize_segments(segments);
  for (std::size_t i = 0; i < segments; ++i) {
    segment_data_type& segment = data.segments.edit(i);
    segment.name = "Reach " + std::to_string(i + 1);
    segment.volume = 1e6 + static_cast<double>(i);
    // As after reading a file: numbers are shared, values are not.
    segment.parameters.set_values(0, static_cast<double>(i));
    segment.systems.set_values(0, {static_cast<double>(i), 1.0});
  }
  return data;
}

void add_flow_functions(prevesk_dataset_data_type& data, std::size_t functions) {
  flow_function_data_type function;
  function.points = {{{150754, 0}, 1}, {{150764, 0}, 2}};
  function.pairs = {{1, no_segment, 0}, {1, 0, 1}};
  auto& list = data.flow_fields.edit(0).functions;
  list.resize(functions, function);
  for (std::size_t i = 0; i < functions; ++i) {
    list.edit(i).description = "Flow " + std::to_string(i + 1);
    list.edit(i).points.edit(0).value = static_cast<double>(i);
  }
}

} // namespace vesk::bench
