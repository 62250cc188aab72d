// The content of a hydrodynamic file, read by the NetCDF library.
#ifndef REFERENCE_ENGINE_HYD_HELPER_HYD_CONTENT_H
#define REFERENCE_ENGINE_HYD_HELPER_HYD_CONTENT_H

#include "hyd_helper/protocol.h"

#include <netcdf.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace reference_engine::hyd {

using Row = std::vector<double>;

// All functions throw Refusal if the file is unusable.
class HydContent {
public:
  explicit HydContent(const char* name);

  // In the format of the protocol. Call it before any row is read.
  std::string content();

  // time: from 0.
  Row row(Quantity quantity, std::size_t time) const;

private:
  enum Dimension { time_dimension, segment_dimension, link_dimension, dimensions };
  static constexpr std::array<const char*, dimensions> dimension_names = {"time", "segment", "link"};
  struct Variable {
    int id = 0;
    double fill = NC_FILL_DOUBLE; // in double precision; the default of single precision has the same value
  };

  Variable find(const char* name, const std::vector<Dimension>& shape) const;
  Row read(const Variable& variable, std::size_t size, const std::size_t* time = nullptr) const;
  std::string text_attribute(int variable, const char* name) const;
  std::string packed_names() const;

  int id_ = -1;
  std::array<int, dimensions> dimension_{};
  std::array<std::size_t, dimensions> size_{};
  Variable flow_, volume_;
};

} // namespace reference_engine::hyd

#endif
