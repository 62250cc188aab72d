#include "output/csv_name.h"

#include "core/errors.h"
#include "core/text.h"

namespace reference_engine {

namespace {

// C0, DEL, and C1 in UTF-8.
bool has_control(std::string_view name) {
  unsigned char before = 0;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f || (before == 0xc2 && byte >= 0x80 && byte < 0xa0)) return true;
    before = byte;
  }
  return false;
}

} // namespace

std::string csv_name_fault(std::string_view name) {
  const auto fault = [name](const char* cause) { return text("the name \"", name, "\" ", cause); };
  if (name.find_first_of("/\\") != name.npos) return fault("has a path separator");
  if (has_control(name)) return fault("has a control character");
  if (name == "." || name == "..") return fault("is a folder's");
  return {};
}

std::filesystem::path csv_result_name(const std::filesystem::path& base, const OutputVariable& variable) {
  if (const std::string fault = csv_name_fault(variable.csv_file); !fault.empty())
    throw InputError(text("CSV output ", variable.isc, " (", variable.name, "): ", fault, "."));
  return base.string() + "_" + (variable.csv_file.empty() ? text("output_", variable.isc, ".csv") : variable.csv_file);
}

} // namespace reference_engine
