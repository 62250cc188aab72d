#include "core/reaction_limit.h"

#include <algorithm>

namespace reference_engine {

void limit_extents(const Stoichiometry& stoichiometry, std::span<const double> amounts, std::span<double> extents) {
  constexpr double rounding = 1e-15;
  // Less of one reaction can leave the next one short of what the first makes. Extents only ever fall, so a few rounds
  // settle it.
  constexpr int most_rounds = 20;
  bool settled = false;
  for (int round = 0; round < most_rounds && !settled; ++round) {
    settled = true;
    for (std::size_t s = 0; s < stoichiometry.systems; ++s) {
      double there = std::max(amounts[s], 0.0), taken = 0;
      for (std::size_t p = 0; p < extents.size(); ++p) {
        const double gain = stoichiometry(p, s) * extents[p];
        (gain < 0 ? taken : there) += std::abs(gain);
      }
      if (taken <= there * (1 + rounding)) continue;
      settled = false;
      for (std::size_t p = 0; p < extents.size(); ++p)
        if (stoichiometry(p, s) * extents[p] < 0) extents[p] *= there / taken;
    }
  }
}

void fade_extents(const Stoichiometry& stoichiometry, std::span<const double> concentration, double traces,
                  std::span<double> extents) {
  for (std::size_t p = 0; p < extents.size(); ++p) {
    double share = 1;
    for (std::size_t s = 0; s < stoichiometry.systems; ++s)
      if (stoichiometry.never_fades[p * stoichiometry.systems + s] && stoichiometry(p, s) * extents[p] < 0)
        share = std::min(share, std::max(concentration[s], 0.0) / traces);
    extents[p] *= share;
  }
}

void add_up(const Stoichiometry& stoichiometry, std::span<const double> extents, std::span<double> rates) {
  std::ranges::fill(rates, 0.0);
  for (std::size_t p = 0; p < extents.size(); ++p)
    for (std::size_t s = 0; s < rates.size(); ++s) rates[s] += stoichiometry(p, s) * extents[p];
}

} // namespace reference_engine
