// A catalogue of two models, and a small river with the first one.
#pragma once

#include "dataset/dataset.h"

namespace vesk {

inline std::shared_ptr<const model_catalogue> river_catalogue() {
  auto catalogue = std::make_shared<model_catalogue>();
  catalogue->models.push_back({1,
                               "Oxygen",
                               "OXYGEN.DLL",
                               {{11, 0, 9, 1, "Salinity"}, {12, 0, 9, 2, "Depth of light"}, {13, 0, 9, 3, "Demand"}},
                               {{5, "Ammonia"}, {1, "Oxygen"}},
                               {{3, "Temperature"}, {1, "Wind"}},
                               {{1, "Rates", {{101, 0, 9, 1, "A"}, {102, 0, 9, 1, "B"}, {103, 0, 9, 1, "C"}}},
                                {2, "Limits", {{104, 0, 9, 1, "D"}}}},
                               {{7, "Surface water"}},
                               {{41, "Oxygen", "mg/L", "DO", "oxygen.csv"}, {42, "Flow", "m3/s", "Q", "flow.csv"}}});
  catalogue->models.push_back({2, "Tracer", "TRACER.DLL", {}, {{1, "Dye"}}, {}, {}, {}, {}});
  return catalogue;
}

// Starts on 1 January 2000 at 6:00. Segments 1 to 4, with water from outside into 1 and from 4 to the outside.
// System 5 is first, system 1 second.
// Switched on: constants B, C and D, time function 1, parameters 12 and 13, output 42 (and 41 and 42 as text files).
inline prevesk_dataset_data_type river() {
  prevesk_dataset_data_type data(river_catalogue());
  data.seed_date = 36526;
  data.seed_time = 0.25;
  data.end_date = 36556;
  data.end_time = 0.5;
  data.skip_date = 36530;
  data.skip_time = 0.75;
  data.apply_seed();
  data.hydrodynamic_file = "tides.hyd";
  data.nps_file = "runoff.nps";
  data.project_files = {"lower.vki", "upper.vki"};
  data.resize_segments(4);
  for (std::size_t i = 0; i < 4; ++i) {
    data.segments.edit(i).volume = 1000.5 * static_cast<double>(i + 1);
    data.segments.edit(i).parameters.set(1, {0, 0.5 + static_cast<double>(i)});
    data.segments.edit(i).systems.set(1, {0, 8.0 + static_cast<double>(i), 0.25});
  }
  auto& rates = data.constant_groups.edit(0).constants;
  rates.edit(1).used = rates.edit(2).used = data.constant_groups.edit(1).constants.edit(0).used = true;
  rates.edit(1).value = 0.125;
  data.parameters.edit(1).used = data.parameters.edit(2).used = true;
  const point_list points = {{{146097, 21600}, 1.5}, {{146107, 43200}, 2.5}};
  data.time_functions.edit(1).used = true;
  data.time_functions.edit(1).points = data.time_steps.points = data.print_intervals.points = points;
  system_data_type& oxygen = data.systems.edit(1);
  oxygen.jmass = true;
  oxygen.gsysbypass = system_constant;
  oxygen.loads.resize(1);
  oxygen.loads.edit(0).points = points;
  oxygen.loads.edit(0).segment = 2;
  oxygen.boundaries.resize(2);
  oxygen.boundaries.edit(0).points = points;
  oxygen.boundaries.edit(0).segment = 3;
  exchange_function_data_type mixing;
  mixing.points = points;
  mixing.pairs = {{12.5, 300, 0, 1}};
  data.exchange_fields.edit(0).functions = {mixing};
  data.exchange_fields.edit(0).used = true;
  flow_function_data_type main_stem;
  main_stem.points = points;
  main_stem.pairs = {{1, no_segment, 0}, {0.5, 3, no_segment}};
  data.flow_fields.edit(0).functions = {main_stem};
  data.flow_fields.edit(0).used = true;
  data.output_controls.edit(0).enabled = false;
  data.output_controls.edit(0).csv_enabled = data.output_controls.edit(1).csv_enabled = true;
  return data;
}

} // namespace vesk
