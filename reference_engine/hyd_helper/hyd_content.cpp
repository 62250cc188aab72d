#include "hyd_helper/hyd_content.h"

#include "hyd_helper/refusal.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace reference_engine::hyd {

namespace {

void check(int status) {
  if (status != NC_NOERR) refuse(std::string("can't be read: ") + nc_strerror(status));
}

std::string quoted(std::string_view name) {
  return '"' + std::string(name) + '"';
}

void add(std::string& packed, std::uint64_t number) {
  packed.append(reinterpret_cast<const char*>(&number), sizeof number);
}
void add(std::string& packed, const Row& values) {
  packed.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(double));
}
void add(std::string& packed, std::string_view text) {
  add(packed, text.size());
  packed += text;
}

} // namespace

HydContent::HydContent(const char* name) {
  const int status = nc_open(name, NC_NOWRITE, &id_);
  if (status == NC_ENOTNC) refuse("is not a NetCDF file");
  check(status);
  for (std::size_t d = 0; d < dimensions; ++d) {
    if (nc_inq_dimid(id_, dimension_names[d], &dimension_[d]) != NC_NOERR)
      refuse("has no dimension " + quoted(dimension_names[d]));
    check(nc_inq_dimlen(id_, dimension_[d], &size_[d]));
  }
}

std::string HydContent::content() {
  const std::string names = packed_names();
  std::string packed;
  for (const Dimension d : {time_dimension, segment_dimension, link_dimension}) add(packed, size_[d]);
  const Variable time = find("time", {time_dimension});
  add(packed, read(time, size_[time_dimension]));
  for (const char* name : {"length", "width"})
    add(packed, read(find(name, {segment_dimension}), size_[segment_dimension]));
  for (const char* name : {"link_from", "link_to"})
    add(packed, read(find(name, {link_dimension}), size_[link_dimension]));
  add(packed, text_attribute(time.id, "units"));
  flow_ = find("flow", {time_dimension, link_dimension});
  volume_ = find("volume", {time_dimension, segment_dimension});
  return packed + names;
}

Row HydContent::row(Quantity quantity, std::size_t time) const {
  const bool flows = quantity == Quantity::flow;
  return read(flows ? flow_ : volume_, size_[flows ? link_dimension : segment_dimension], &time);
}

HydContent::Variable HydContent::find(const char* name, const std::vector<Dimension>& shape) const {
  Variable variable;
  int count = 0;
  if (nc_inq_varid(id_, name, &variable.id) != NC_NOERR) refuse("has no variable " + quoted(name));
  check(nc_inq_varndims(id_, variable.id, &count));
  std::vector<int> found(static_cast<std::size_t>(count)), wanted;
  check(nc_inq_vardimid(id_, variable.id, found.data()));
  std::string wanted_names;
  for (const Dimension d : shape) {
    wanted.push_back(dimension_[d]);
    wanted_names += (wanted_names.empty() ? "" : ", ") + std::string(dimension_names[d]);
  }
  if (found != wanted) refuse("the variable " + quoted(name) + " does not have the dimensions (" + wanted_names + ")");
  if (double fill = 0; nc_get_att_double(id_, variable.id, "_FillValue", &fill) == NC_NOERR) variable.fill = fill;
  return variable;
}

// A whole variable, or its values at one time.
Row HydContent::read(const Variable& variable, std::size_t size, const std::size_t* time) const {
  Row values(size);
  const std::size_t start[] = {time ? *time : 0, 0}, count[] = {1, size};
  if (size > 0)
    check(time ? nc_get_vara_double(id_, variable.id, start, count, values.data())
               : nc_get_var_double(id_, variable.id, values.data()));
  for (double& value : values)
    if (!std::isfinite(value) || value == variable.fill) value = std::numeric_limits<double>::quiet_NaN();
  return values;
}

std::string HydContent::text_attribute(int variable, const char* name) const {
  std::size_t length = 0;
  nc_type type = NC_NAT;
  if (nc_inq_att(id_, variable, name, &type, &length) != NC_NOERR || type != NC_CHAR) return {};
  std::string value(length, '\0');
  check(nc_get_att_text(id_, variable, name, value.data()));
  return value;
}

std::string HydContent::packed_names() const {
  int id = 0, count = 0;
  std::array<int, NC_MAX_VAR_DIMS> shape{};
  std::size_t length = 0;
  nc_type type = NC_NAT;
  if (nc_inq_varid(id_, "segment_name", &id) != NC_NOERR) refuse("has no variable \"segment_name\"");
  check(nc_inq_var(id_, id, nullptr, &type, &count, shape.data(), nullptr));
  if (type != NC_CHAR || count != 2 || shape[0] != dimension_[segment_dimension])
    refuse("the variable \"segment_name\" does not have letters with the dimensions (segment, name_length)");
  check(nc_inq_dimlen(id_, shape[1], &length));
  const std::size_t segments = size_[segment_dimension];
  std::string letters;
  if (segments > 0 && length > letters.max_size() / segments) refuse("has segment names that are too long");
  letters.resize(segments * length);
  if (!letters.empty()) check(nc_get_var_text(id_, id, letters.data()));
  std::string packed;
  for (std::size_t i = 0; i < segments; ++i) {
    std::string_view name = std::string_view(letters).substr(i * length, length);
    name = name.substr(0, name.find('\0'));
    add(packed, name.substr(0, name.find_last_not_of(' ') + 1));
  }
  return packed;
}

} // namespace reference_engine::hyd
