// A data set of many segments in a row, for benchmarks that run the engine.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <memory>

namespace vesk::bench {

// `segments` in a row, through which a constant flow carries the systems of the catalogue's first model, with explicit
// steps of `step_days` over `days`.
prevesk_dataset_data_type make_long_river(std::shared_ptr<const model_catalogue> catalogue, std::size_t segments,
                                          double step_days, double days);

} // namespace vesk::bench
