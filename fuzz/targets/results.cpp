// A results file is refused in one sentence, or shows series, profiles and bands of the sizes that it claims. It goes
// through the helper program, which may fail as it likes.
#include "results/results_file.h"
#include "support/scratch.h"

#include <algorithm>

namespace {

using namespace vesk;

constexpr std::size_t most_values = 1 << 16; // a small file can claim many

void look_at(const results_file& file) {
  const std::size_t times = std::min(file.times().size(), most_values),
                    segments = std::min(file.segments(), most_values);
  fuzz::demand(std::ranges::is_sorted(file.times()), "times are not in order");
  for (std::size_t v = 0; v < std::min<std::size_t>(file.variables().size(), 4); ++v) {
    fuzz::demand(file.slice(v, {0, times}, {0, 1}).size() == times, "a series has another size than the times");
    fuzz::demand(file.slice(v, {0, 1}, {0, segments}).size() == segments, "a profile has another size");
    if (times * file.segments() > most_values) continue;
    const results_bands bands = file.bands(v, {0, times});
    for (std::size_t s = 0; s < segments; ++s)
      fuzz::demand(bands.counts[s] == 0 || bands.least[s] <= bands.greatest[s], "a band is turned round");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const fuzz::scratch_folder folder;
  const std::string name = folder.write("river.nc", fuzz::as_text(bytes, size));
  try {
    look_at(results_file(name));
  } catch (const results_exception& refusal) {
    fuzz::demand_sentence(refusal.what(), name);
  }
  return 0;
}
