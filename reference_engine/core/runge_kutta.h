// The classic explicit Runge-Kutta method of order 4, on the masses V C and the volumes V. With steady water and
// without reactions its result comes from shorter stages. A step that would take a concentration below 0 is Euler's
// instead, which holds reactions to what is there.
#ifndef REFERENCE_ENGINE_CORE_RUNGE_KUTTA_H
#define REFERENCE_ENGINE_CORE_RUNGE_KUTTA_H

#include "core/euler.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace reference_engine {

class RungeKutta : public Euler {
public:
  StepLimit limit(Equations& equations, const State& state, double days, double enough) override;
  void step(Equations& equations, State& state, double days, Balances& balances) override;

private:
  static constexpr std::size_t stages = 4;

  // Four stages. Moments, weights and reaches are shares of the step.
  struct Tableau {
    std::array<double, stages> moments;
    std::array<double, stages> weights;    // of the stage's rates in what the step moves
    std::array<double, stages> reach;      // how far its rates carry: to the next stage, or to the result
    std::array<std::size_t, stages> array; // that holds the stage's concentrations
    bool is_linear;                        // for steady water without reactions; the last stage is the result
  };
  static const Tableau classic, linear;

  // Segments whose stages are computed together. Where neighbours are numbered one after the other, some of them are
  // taken through all stages while they are in the cache; each stage needs one segment more on both sides than the next
  // one. Else all are one tile, and its stages are those of the model.
  struct Tile {
    std::size_t begin = 0, end = 0;  // that it finishes
    std::size_t first = 0, last = 0; // that its arrays hold, with a place more on both sides

    std::size_t size() const { return last - first + 2; }
    std::size_t at(std::size_t segment) const { return segment - first + 1; }
    // With so many segments more on both sides, where the model of `count` segments has them.
    std::pair<std::size_t, std::size_t> with_margin(std::size_t margin, std::size_t count) const {
      return {begin > margin ? begin - margin : 0, std::min(end + margin, count)};
    }
  };
  // The network of consecutive segments at the time of a stage: of a tile three of these, or one.
  struct Stretch {
    LayerValues layers;
    WaterMoved water;
    std::vector<Coefficients> classes; // but for what leaves
  };
  // What a stage needs of consecutive segments, from `begin` on: of a tile or a stretch, or of all.
  struct Shares {
    struct OfClass {
      std::vector<double> out, lower, upper;
    };
    std::size_t begin = 0;
    std::vector<OfClass> classes;
    std::vector<double> per_volume, per_rate;  // where volumes change
    const double* next_per_volume = nullptr;   // of the next stage, from `begin` on
    std::array<std::vector<double>, 3> ratios; // of volumes, as StageShares has them

    void resize(std::size_t class_count, std::size_t size);
  };
  // A stage in segments begin to end of a tile.
  struct Part {
    std::size_t stage;
    const Tile& tile;
    std::size_t begin, end;
    bool volumes_change; // anywhere in the tile, or up to this stage of the model
    double days;         // of the step
    const Shares& shares;
  };

  void allocate(const Equations& equations, std::size_t stage_size);
  // False when a concentration ends below 0.
  bool step_in_tiles(Equations& equations, const State& state, double days, Balances& balances);
  bool step_in_stages(Equations& equations, const State& state, double days, Balances& balances);
  bool step_tile(Equations& equations, const Tile& tile, const State& state, double days, Balances& balances);
  // By the shares of the whole model.
  bool step_linear_tile(Equations& equations, const Tile& tile, const State& state, double days, Balances& balances);
  void fill_first_stage(const Equations& equations, const Tile& tile, const State& state);
  void take_sources(const Equations& equations, std::size_t stage, double days, Balances& balances);
  void take_network(const Equations& equations, std::size_t begin, std::size_t end, Stretch& into) const;
  void keep_new_volumes(const Tile& tile, const State& state);
  // Computes the shares of segments begin to end, by the network that begins there.
  void find_shares(const Equations& equations, const Part& part, const Stretch& network, const State& state);
  // The same without volumes that change, into `into` from `at` on.
  void find_class_shares(const Equations& equations, std::size_t begin, std::size_t end, double days,
                         const double* per_volume, const Stretch& network, Shares& into, std::size_t at) const;
  // Computes those of the whole model, unless they are of a step like this one.
  void find_all_shares(const Equations& equations, const State& state, double days);
  // False when a concentration ends below 0.
  bool advance_part(Equations& equations, const Part& part, const State& state, Balances& balances);
  bool advance_class(const Equations& equations, std::size_t which, const Part& part, const State& state);
  void add_to_balances(const Equations& equations, const Part& part, const State& state, Balances& balances);
  // A system's concentrations in a stage, from segment tile.first - 1 on.
  const double* stage_values(std::size_t stage, std::size_t system, const Tile& tile, const State& state) const;
  double* values(std::size_t stage, std::size_t system) { return &stage_[tableau_.array[stage]][system * stage_size_]; }

  Tableau tableau_;
  std::size_t stage_size_ = 0;                                // of one system in a tile's arrays
  std::array<std::vector<double>, stages> stage_;             // concentrations of a tile, [system][segment]
  std::array<std::vector<double>, stages> volume_;            // of a tile; those of the last stage are the new ones
  std::array<std::vector<std::vector<double>>, stages> gain_; // by system, g/day at the equations' gaining segments
  std::array<Equations::Moment, 3> moments_;                  // the begin, middle and end of a step with changing flows
  bool flows_vary_ = false;
  bool is_steady_ = false; // no volume changes, in tiles
  std::array<Stretch, 3> networks_;
  Shares shares_, all_shares_;
  std::uint64_t version_ = 0, volume_version_ = 0; // that all_shares_ are of, and the step's length
  double days_ = 0;
  std::vector<double> rate_;
  std::vector<double*> rate_rows_;
  std::vector<const double*> now_rows_;
  std::vector<StageRow> rows_;
  std::vector<bool> part_moves_;           // by stretch of a step in stages: a volume has changed
  std::vector<double> next_, next_volume_; // at the end of the step, [system][segment] and [segment]
  bool volumes_change_ = false;            // in this step
  bool exceeds_ = false;                   // a concentration its largest, at the end of this step
};

} // namespace reference_engine

#endif
