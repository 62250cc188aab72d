// Kinetics "oxygen": ammonium and nitrate nitrogen, ultimate CBOD and dissolved oxygen, after the classic oxygen sag
// (Streeter and Phelps, 1925) with the sources and sinks that textbooks add to it (Thomann and Mueller, Principles of
// Surface Water Quality Modeling and Control, 1987, chapter 6; Chapra, Surface Water-Quality Modeling, 1997,
// lectures 21 to 25).
#ifndef REFERENCE_ENGINE_CORE_OXYGEN_H
#define REFERENCE_ENGINE_CORE_OXYGEN_H

#include "core/inputs.h"
#include "core/kinetics.h"

#include <vector>

namespace reference_engine {

class Oxygen : public Kinetics {
public:
  static constexpr std::string_view library = "oxygen";
  static ModelInfo info();

  explicit Oxygen(const Problem& problem);

  bool uses_hydraulics() const override;
  void update(const Hydraulics& hydraulics, const TimeFunctions& time_functions) override;
  bool reacts() const override { return true; }
  void rates(std::size_t begin, std::size_t end, const double* const* concentration,
             double* const* rate) const override;
  Stoichiometry stoichiometry() const override;
  void extents(std::size_t segment, const double* concentration, double* extents) const override;
  std::span<const double> decay() const override { return decay_; }
  bool saturates() const override { return true; }
  void relative_losses(std::size_t begin, std::size_t end, const double* const* concentration,
                       double* losses) const override;
  bool settles(std::size_t system) const override;
  std::span<const double> settling_velocity(std::size_t) const override { return settling_; }
  std::span<const double> temperature() const override { return temperature_.values(); }
  TemperatureRange temperature_range() const override { return temperature_.range(); }
  bool output(int isc, std::span<const double> concentration, std::span<double> values) const override;

private:
  // A process of first order at 20 deg C with its temperature coefficient, its rate in each segment now, and the
  // oxygen at which it runs at half its rate.
  struct Process {
    double rate_20, theta, half_saturation;
    std::vector<double> now; // 1/day
  };

  struct Row;
  Row row(std::size_t begin) const;
  static void rates_loop(std::size_t count, const Row& given, const double* const* concentration, double* const* rate);
  static void losses_loop(std::size_t count, const Row& given, const double* const* concentration, double* losses);
  Process process(int rate_isc, int theta_isc, int half_saturation_isc) const;
  void update_temperature();
  void update_surface(const Hydraulics& hydraulics, double wind);
  double depth_of(const Hydraulics& hydraulics, std::size_t segment, const char* purpose) const;

  const Problem& problem_;
  const ModelInfo& model_;
  WaterTemperature temperature_;
  Process nitrification_, denitrification_, oxidation_;
  double oxygen_per_nitrogen_, demand_half_saturation_;
  double reaeration_theta_, demand_theta_;
  bool has_wind_, has_light_;
  std::vector<double> given_reaeration_;  // 1/day at 20 deg C, 0 where it is worked out
  std::vector<double> given_demand_;      // g/m2/day at 20 deg C
  std::vector<double> photosynthesis_20_; // g/m3/day before the time function
  std::vector<double> salinity_, settling_;
  std::vector<double> reaeration_factor_, demand_factor_; // of the temperature
  std::vector<double> saturation_;                        // g/m3
  std::vector<double> reaeration_;                        // 1/day
  std::vector<double> demand_;                            // g/m3/day
  std::vector<double> photosynthesis_;                    // g/m3/day
  std::vector<double> decay_;                             // 1/day
};

} // namespace reference_engine

#endif
