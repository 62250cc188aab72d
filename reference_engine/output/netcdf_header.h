// The header of a file in NetCDF's classic format with 64-bit offsets (CDF-2), and the bytes of its data.
//
// Written here because the NetCDF library takes 8 ms to load, with those it needs, and an eighth of a run of a small
// model would be spent on it. All numbers are big-endian, all arrays begin at a multiple of 4 bytes.
#ifndef REFERENCE_ENGINE_OUTPUT_NETCDF_HEADER_H
#define REFERENCE_ENGINE_OUTPUT_NETCDF_HEADER_H

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace reference_engine {

// NetCDF's default fill values: they mark missing values.
constexpr float netcdf_missing_float = 0x1.ep+122F;
constexpr double netcdf_missing_double = 0x1.ep+122;

template <class Number>
void append_number(std::string& bytes, Number value) {
  auto raw = std::bit_cast<std::array<char, sizeof value>>(value);
  if constexpr (std::endian::native == std::endian::little) std::reverse(raw.begin(), raw.end());
  bytes.append(raw.data(), raw.size());
}

// Fills up with zeros to the next multiple of 4.
void align(std::string& bytes);

// Dimensions, variables and attributes are numbered and written in the order in which they are added. A variable over
// the growing dimension has it first. Names: letters, digits and underscores.
class NetCdfHeader {
public:
  enum class Type : std::uint32_t { text = 2, integer = 4, single = 5, real = 6 };
  using Index = std::uint32_t;

  Index add_growing_dimension(const std::string& name); // at most one
  Index add_dimension(const std::string& name, std::size_t length);
  Index add_variable(const std::string& name, Type type, const std::vector<Index>& dimensions);
  void add_text(const std::string& name, std::string_view text) { attributes_.add(name, Type::text, text, 1); }
  void add_text(Index variable, const std::string& name, std::string_view text) {
    variables_[variable].attributes.add(name, Type::text, text, 1);
  }
  // For a single or real variable; value: of its type.
  template <class Number>
  void add_fill_value(Index variable, Number value) {
    std::string bytes;
    append_number(bytes, value);
    variables_[variable].attributes.add("_FillValue", variables_[variable].type, bytes, sizeof value);
  }

  // To be called once, after all but attributes of the file has been added. Leaves `reserve` bytes for those added
  // later. False if a variable, at one time, is larger than the format allows, 4 GB.
  bool lay_out(std::size_t reserve);

  // After lay_out. The data begin with the variables that do not grow, in their order, each aligned; then follow the
  // records, each with one slice of the growing variables in their order.
  std::uint64_t data_begin() const { return data_begin_; }
  std::string bytes(std::uint32_t records) const;
  bool fits() const { return bytes(0).size() <= data_begin_; } // with the attributes added since

private:
  struct Attributes {
    void add(const std::string& name, Type type, std::string_view value, std::size_t size_of_one);
    std::uint32_t count = 0;
    std::string bytes; // as in the file
  };
  struct Dimension {
    std::string name;
    std::uint64_t length; // 0: it grows
  };
  struct Variable {
    std::string name;
    Type type;
    std::vector<Index> dimensions;
    Attributes attributes;
    std::uint64_t size = 0; // of all its data, or of a slice; in bytes, aligned
    std::uint64_t begin = 0;
  };
  bool grows(const Variable& variable) const {
    return !variable.dimensions.empty() && dimensions_[variable.dimensions.front()].length == 0;
  }

  std::vector<Dimension> dimensions_;
  std::vector<Variable> variables_;
  Attributes attributes_; // of the file
  std::uint64_t data_begin_ = 0;
};

} // namespace reference_engine

#endif
