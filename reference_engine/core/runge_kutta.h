// The classic explicit Runge-Kutta method of order 4, on the masses V C and the volumes V. A step that would take a
// concentration below 0 is Euler's instead, which holds reactions to what is there.
#ifndef REFERENCE_ENGINE_CORE_RUNGE_KUTTA_H
#define REFERENCE_ENGINE_CORE_RUNGE_KUTTA_H

#include "core/euler.h"

#include <array>
#include <vector>

namespace reference_engine {

class RungeKutta : public Euler {
public:
  StepLimit limit(Equations& equations, const State& state, double days) override;
  void step(Equations& equations, State& state, double days, Balances& balances) override;

private:
  static constexpr std::size_t stages = 4;

  // Segments whose stages are worked out together. While nothing but sources varies, and neighbours are numbered one
  // after the other, a few hundred are taken through all stages while they are in the cache; each stage needs one
  // segment more on both sides than the next one. Else all are one tile, and its stages are those of the model.
  struct Tile {
    std::size_t begin = 0, end = 0;  // that it finishes
    std::size_t first = 0, last = 0; // that its arrays hold, with a place more on both sides

    std::size_t size() const { return last - first + 2; }
    std::size_t at(std::size_t segment) const { return segment - first + 1; }
  };
  // Of consecutive segments: coefficients by class, and a stage's factors.
  struct Stretch {
    LayerValues layers;
    std::vector<Coefficients> classes;
    std::vector<double> per_gram, per_volume;
  };
  struct Weights { // of a stage, one for each segment of a stretch; of earlier stages where those count
    std::vector<double> keep, per_rate;
    std::array<std::vector<double>, 3> earlier;
  };

  void allocate(const Equations& equations, std::size_t stage_size);
  // False when a concentration ends below 0.
  bool step_in_tiles(Equations& equations, const State& state, double days, Balances& balances);
  bool step_in_stages(Equations& equations, const State& state, double days, Balances& balances);
  void begin_tile(const Equations& equations, const Tile& tile, const State& state);
  void end_tile(const Tile& tile);
  void take_sources(const Equations& equations, std::size_t stage, double days, Balances& balances);
  void take_coefficients(const Equations& equations, std::size_t begin, std::size_t end);
  // Works out a stage in segments begin to end of the tile, by their coefficients, which begin at segment `origin`.
  // False when a concentration ends below 0.
  bool advance_stretch(Equations& equations, std::size_t stage, const Tile& tile, std::size_t begin, std::size_t end,
                       std::size_t origin, const State& state, double days, Balances& balances);
  // share(k): volume of stage k / volume at the next stage, for all segments of a stretch
  template <class Share>
  void find_weights(std::size_t stage, double days, Share share);
  // Where a system's concentrations of a stage stand, of segment tile.first - 1.
  const double* stage_values(std::size_t stage, std::size_t system, const Tile& tile, const State& state) const;
  bool advance_class(const Equations& equations, std::size_t which, std::size_t stage, const Tile& tile,
                     std::size_t begin, std::size_t end, std::size_t origin, bool reacts, const State& state);
  void add_to_balances(const Equations& equations, std::size_t stage, const Tile& tile, std::size_t from,
                       std::size_t to, std::size_t begin, double days, const State& state, Balances& balances);
  double* values(std::size_t stage, std::size_t system) { return &stage_[stage][system * stage_size_]; }

  std::size_t stage_size_ = 0;                                // of one system in a tile's arrays
  std::array<std::vector<double>, stages> stage_;             // concentrations of a tile, [system][segment]
  std::array<std::vector<double>, stages> volume_;            // of a tile; those of the last stage are the new ones
  std::array<std::vector<std::vector<double>>, stages> gain_; // by system, g/day at the equations' gaining segments
  Stretch stretch_;
  std::array<Weights, stages> weights_;
  std::vector<double> rate_;
  std::vector<double*> rate_rows_;
  std::vector<const double*> now_rows_;
  std::vector<StageRow> rows_;
  std::vector<double> next_, next_volume_;          // at the end of the step, [system][segment] and [segment]
  bool volumes_change_ = false, is_steady_ = false; // in this step
  bool exceeds_ = false;                            // a concentration its largest, at the end of this step
};

} // namespace reference_engine

#endif
