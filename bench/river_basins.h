// A model of any size for measuring how time and memory grow: identical river basins.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <memory>

namespace vesk::bench {

inline constexpr std::size_t segments_of_basin = 1000, series_of_basin = 10, hours_of_year = 8760;

// `segments` (a multiple of segments_of_basin) of the catalogue's first model, which must be the dissolved oxygen
// model, and a run of `days` from the middle of the series on, in explicit steps of the greatest length the engine
// allows.
//
// A basin has four headwaters of 100 segments that join in pairs; the two rivers flow into a lake of two layers of 100
// segments, and 200 segments lead from it to the sea. Ten series of a basin have a point for each hour of a year: the
// flows of the headwaters, the mixing of the lake's layers, three loads and two boundary concentrations. The water
// temperature is one more such series, shared by the whole model.
prevesk_dataset_data_type make_river_basins(std::shared_ptr<const model_catalogue> catalogue, std::size_t segments,
                                            double days);

} // namespace vesk::bench
