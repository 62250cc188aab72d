// Kinetics "tracer": a conservative tracer, a tracer with first-order decay, and suspended solids that settle.
#ifndef REFERENCE_ENGINE_CORE_TRACER_H
#define REFERENCE_ENGINE_CORE_TRACER_H

#include "core/inputs.h"
#include "core/kinetics.h"

#include <vector>

namespace reference_engine {

class Tracer : public Kinetics {
public:
  static constexpr std::string_view library = "tracer";
  static ModelInfo info();

  explicit Tracer(const Problem& problem);

  bool uses_hydraulics() const override { return false; } // but for what settles
  void update(const Hydraulics& hydraulics, const TimeFunctions& time_functions) override;
  bool reacts() const override { return decay_rate_ > 0; }
  bool couples() const override { return false; }
  void rates(std::size_t begin, std::size_t end, const double* const* concentration,
             double* const* rate) const override;
  Stoichiometry stoichiometry() const override { return {3, {0, -1, 0}, {false, false, false}}; }
  void extents(std::size_t segment, const double* concentration, double* extents) const override;
  std::span<const double> decay() const override { return decay_; }
  bool settles(std::size_t system) const override;
  std::span<const double> settling_velocity(std::size_t) const override { return settling_; }
  std::span<const double> temperature() const override { return temperature_.values(); }
  TemperatureRange temperature_range() const override { return temperature_.range(); }
  bool output(int isc, std::span<const double> concentration, std::span<double> values) const override;

private:
  WaterTemperature temperature_;
  double decay_rate_, decay_theta_; // 1/day at 20 deg C
  std::vector<double> decay_;       // 1/day
  std::vector<double> settling_;    // m/day
};

} // namespace reference_engine

#endif
