// Limits reactions to the mass that is available. A reaction that runs short of one reactant takes less of all of them,
// which conserves mass and keeps the oxygen consumed in proportion to the amount oxidised.
#ifndef REFERENCE_ENGINE_CORE_REACTION_LIMIT_H
#define REFERENCE_ENGINE_CORE_REACTION_LIMIT_H

#include "core/kinetics.h"

#include <span>

namespace reference_engine {

// Reduces extents until no system ends below 0: amounts[s] + sum of gains times extents >= 0, up to rounding. Extents
// are amounts here, g/m3 over a step. An amount already below 0 is not corrected, but nothing more is taken from it.
void limit_extents(const Stoichiometry& stoichiometry, std::span<const double> amounts, std::span<double> extents);

// For methods that solve for the end of a step: lets losses of order 0 fade where the system is nearly gone, in
// proportion to what is left below `traces`, g/m3, and all partners of that reaction with them.
void fade_extents(const Stoichiometry& stoichiometry, std::span<const double> concentration, double traces,
                  std::span<double> extents);

// rates[s] = sum of gains times extents.
void add_up(const Stoichiometry& stoichiometry, std::span<const double> extents, std::span<double> rates);

} // namespace reference_engine

#endif
