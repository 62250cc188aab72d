#include "script/restart_file.h"

#include "core/errors.h"
#include "core/text.h"
#include "script/words.h"

#include <fstream>

namespace reference_engine {

RestartFile::RestartFile(const std::filesystem::path& base, const State& state, double volume_factor)
    : file_(base.string() + ".rst") {
  std::ofstream out(file_.temporary(), std::ios::binary);
  std::string line;
  const auto write = [&](const char* keyword, std::initializer_list<std::size_t> indices, double value) {
    line = keyword;
    for (const std::size_t index : indices) append_number(line += ' ', static_cast<std::int32_t>(index));
    append_number(line += ' ', static_cast<float>(value));
    out << (line += '\n');
  };
  const std::size_t segments = state.volume.size();
  for (std::size_t i = 0; i < segments; ++i) write("VOLUME", {i + 1}, state.volume[i] / volume_factor);
  for (std::size_t k = 0; k < state.concentration.size(); ++k)
    write("INITC", {k / segments + 1, k % segments + 1}, state.concentration[k]);
  out.close();
  if (!out) throw RunError(text(file_.final_name().string(), ": can't be written."));
}

} // namespace reference_engine
