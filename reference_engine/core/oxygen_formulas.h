// Formulas of the oxygen balance that need no model.
#ifndef REFERENCE_ENGINE_CORE_OXYGEN_FORMULAS_H
#define REFERENCE_ENGINE_CORE_OXYGEN_FORMULAS_H

namespace reference_engine {

// Dissolved oxygen in equilibrium with air at sea level, g/m3. celsius: 0 to 40. salinity: g/kg, 0 to 40.
double oxygen_saturation(double celsius, double salinity);

// Reaeration rate of a stream at 20 deg C, 1/day. velocity: m/s. depth: m, more than 0.
double stream_reaeration(double velocity, double depth);

// Velocity with which wind moves oxygen through the surface, m/day. wind: m/s at 10 m, 0 or more.
double wind_transfer(double wind);

} // namespace reference_engine

#endif
