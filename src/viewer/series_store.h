// The values of the chosen series of all scenarios, read in the background and kept while they are chosen.
#pragma once

#include "viewer/kept_colours.h"
#include "viewer/results_session.h"

#include <compare>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vesk {

// A variable in a segment of one scenario, with its values.
struct shown_series {
  std::size_t scenario = 0; // position in the session
  std::string scenario_name = {};
  std::string variable = {}, segment = {}, units = {};
  std::shared_ptr<const std::vector<double>> times = {};  // date-time numbers
  std::shared_ptr<const std::vector<double>> values = {}; // same length; not-a-number if there is none
  std::size_t colour = 0;                                 // by variable and segment, see kept_colours

  // "DO, Oak City", with the scenario if there are several.
  std::string label(bool with_scenario) const;
};

// Most values held at once; a longer choice is refused with a sentence.
inline constexpr std::size_t most_chosen_values = 10'000'000;

// Owner's thread only.
class series_store {
public:
  // The session must outlive this. Listens to the session. `settings`: the file that keeps the colours; empty: none.
  explicit series_store(results_session& session, std::filesystem::path settings = {});
  ~series_store() { session_.reader().forget(this); }
  series_store(const series_store&) = delete;
  series_store& operator=(const series_store&) = delete;

  // Sorted by variable, segment and scenario. Without series that are still being read.
  const std::vector<shown_series>& series() const { return series_; }
  bool is_reading() const { return is_reading_; }
  // Why part of the choice is not shown: one sentence; empty: all is shown.
  const std::string& note() const { return note_; }

  void save_colours() { colours_.save(); }

  // Any of the above has changed.
  void listen(std::function<void()> changed) { listeners_.push_back(std::move(changed)); }

private:
  struct key {
    std::uint64_t scenario = 0; // its number
    std::size_t variable = 0, segment = 0;
    friend auto operator<=>(const key&, const key&) = default;
  };
  using values = std::shared_ptr<const std::vector<double>>;
  struct wanted_series {
    key at;
    std::shared_ptr<const results_file> file;
    shown_series shown;
  };
  void update();
  std::vector<wanted_series> list_wanted();
  void read(std::vector<wanted_series> missing);
  void show();
  void give_colours(std::vector<wanted_series>& wanted);

  results_session& session_;
  std::vector<wanted_series> wanted_;
  std::map<key, values> read_;
  std::vector<shown_series> series_;
  kept_colours colours_;
  std::string note_;
  bool is_reading_ = false;
  std::vector<std::function<void()>> listeners_;
};

} // namespace vesk
