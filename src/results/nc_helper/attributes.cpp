#include "results/nc_helper/attributes.h"

#include <netcdf.h>

namespace vesk::nc {

std::string text_attribute(int file, int variable, const char* name) {
  std::size_t length = 0;
  nc_type type = NC_NAT;
  if (nc_inq_att(file, variable, name, &type, &length) != NC_NOERR) return {};
  if (type == NC_STRING && length == 1) {
    char* text = nullptr;
    if (nc_get_att_string(file, variable, name, &text) != NC_NOERR || !text) return {};
    std::string copy = text;
    nc_free_string(1, &text);
    return copy;
  }
  if (type != NC_CHAR) return {};
  std::string value(length, '\0');
  if (nc_get_att_text(file, variable, name, value.data()) != NC_NOERR) return {};
  return value.substr(0, value.find('\0'));
}

std::vector<double> number_attribute(int file, int variable, const char* name) {
  constexpr std::size_t most = 16;
  std::size_t length = 0;
  nc_type type = NC_NAT;
  if (nc_inq_att(file, variable, name, &type, &length) != NC_NOERR || length == 0 || length > most) return {};
  if (type == NC_CHAR || type == NC_STRING) return {};
  std::vector<double> values(length);
  if (nc_get_att_double(file, variable, name, values.data()) != NC_NOERR) return {};
  return values;
}

} // namespace vesk::nc
