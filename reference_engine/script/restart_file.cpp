#include "script/restart_file.h"

#include "core/errors.h"
#include "core/text.h"
#include "script/words.h"

#include <cstdio>
#include <fstream>

namespace reference_engine {

namespace {
constexpr std::string_view label_begins = "# State at "; // read by later versions: never change
}

std::optional<RestartLabel> read_restart_label(std::string_view file_content) {
  if (!file_content.starts_with(label_begins)) return std::nullopt;
  const std::string label(file_content.substr(label_begins.size(), file_content.find('\n') - label_begins.size()));
  RestartLabel it;
  Moment& at = it.moment;
  const int found = std::sscanf(label.c_str(), "%d-%d-%d %d:%d:%d of %zu segments, %zu systems", &at.year, &at.month,
                                &at.day, &at.hour, &at.minute, &at.second, &it.segments, &it.systems);
  if (found != 8 || !at.is_valid())
    throw InputError(text("\"", label, "\" does not give the date and time of the state"));
  return it;
}

RestartFile::RestartFile(const std::filesystem::path& base, const State& state, double volume_factor,
                         const Moment& moment)
    : file_(base, base.string() + ".rst") {
  std::ofstream out(file_.temporary(), std::ios::binary);
  const std::size_t segments = state.volume.size();
  std::string line = text(label_begins, moment.iso(' '), " of ", segments, " segments, ",
                          state.concentration.size() / segments, " systems\n");
  out << line;
  const auto write = [&](const char* keyword, std::initializer_list<std::size_t> indices, double value) {
    line = keyword;
    for (const std::size_t index : indices) append_number(line += ' ', static_cast<std::int32_t>(index));
    append_number(line += ' ', static_cast<float>(value));
    out << (line += '\n');
  };
  for (std::size_t i = 0; i < segments; ++i) write("VOLUME", {i + 1}, state.volume[i] / volume_factor);
  for (std::size_t k = 0; k < state.concentration.size(); ++k)
    write("INITC", {k / segments + 1, k % segments + 1}, state.concentration[k]);
  out.close();
  if (!out) throw WriteError(file_.final_name().string(), errno);
}

} // namespace reference_engine
