#include "output/netcdf_header.h"

#include <limits>

namespace reference_engine {

namespace {

// What a list in the header begins with. An empty list begins with 0.
enum class Tag : std::uint32_t { none = 0, dimensions = 10, variables = 11, attributes = 12 };

void append_list_head(std::string& bytes, Tag tag, std::size_t count) {
  append_number(bytes, static_cast<std::uint32_t>(count == 0 ? Tag::none : tag));
  append_number(bytes, static_cast<std::uint32_t>(count));
}

void append_name(std::string& bytes, const std::string& name) {
  append_number(bytes, static_cast<std::uint32_t>(name.size()));
  bytes += name;
  align(bytes);
}

std::uint64_t size_of_one(NetCdfHeader::Type type) {
  switch (type) {
  case NetCdfHeader::Type::text: return 1;
  case NetCdfHeader::Type::real: return 8;
  default: return 4;
  }
}

} // namespace

void align(std::string& bytes) {
  bytes.append((4 - bytes.size() % 4) % 4, '\0');
}

void NetCdfHeader::Attributes::add(const std::string& name, Type type, std::string_view value,
                                   std::size_t size_of_one) {
  ++count;
  append_name(bytes, name);
  append_number(bytes, static_cast<std::uint32_t>(type));
  append_number(bytes, static_cast<std::uint32_t>(value.size() / size_of_one));
  bytes += value;
  align(bytes);
}

NetCdfHeader::Index NetCdfHeader::add_growing_dimension(const std::string& name) {
  return add_dimension(name, 0);
}

NetCdfHeader::Index NetCdfHeader::add_dimension(const std::string& name, std::size_t length) {
  dimensions_.push_back({name, length});
  return static_cast<Index>(dimensions_.size() - 1);
}

NetCdfHeader::Index NetCdfHeader::add_variable(const std::string& name, Type type,
                                               const std::vector<Index>& dimensions) {
  variables_.push_back({name, type, dimensions, {}});
  return static_cast<Index>(variables_.size() - 1);
}

bool NetCdfHeader::lay_out(std::size_t reserve) {
  constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max() - 3;
  for (Variable& variable : variables_) {
    variable.size = size_of_one(variable.type);
    for (const Index i : variable.dimensions) {
      if (dimensions_[i].length > largest) return false;
      if (dimensions_[i].length > 0) variable.size *= dimensions_[i].length;
      if (variable.size > largest) return false;
    }
    variable.size = (variable.size + 3) / 4 * 4;
  }
  data_begin_ = (bytes(0).size() + reserve + 3) / 4 * 4;
  std::uint64_t offset = data_begin_;
  for (const bool growing : {false, true})
    for (Variable& variable : variables_)
      if (grows(variable) == growing) {
        variable.begin = offset;
        offset += variable.size;
      }
  return true;
}

std::string NetCdfHeader::bytes(std::uint32_t records) const {
  std::string out("CDF\2", 4);
  append_number(out, records);
  append_list_head(out, Tag::dimensions, dimensions_.size());
  for (const Dimension& dimension : dimensions_) {
    append_name(out, dimension.name);
    append_number(out, static_cast<std::uint32_t>(dimension.length));
  }
  append_list_head(out, Tag::attributes, attributes_.count);
  out += attributes_.bytes;
  append_list_head(out, Tag::variables, variables_.size());
  for (const Variable& variable : variables_) {
    append_name(out, variable.name);
    append_number(out, static_cast<std::uint32_t>(variable.dimensions.size()));
    for (const Index dimension : variable.dimensions) append_number(out, dimension);
    append_list_head(out, Tag::attributes, variable.attributes.count);
    out += variable.attributes.bytes;
    append_number(out, static_cast<std::uint32_t>(variable.type));
    append_number(out, static_cast<std::uint32_t>(variable.size));
    append_number(out, variable.begin);
  }
  return out;
}

} // namespace reference_engine
