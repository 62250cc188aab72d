// The values of one variable in all segments at the cursor's time, and their range over a period, read in the
// background.
#pragma once

#include "viewer/results_session.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vesk {

struct scenario_profile {
  std::size_t scenario = 0; // position in the session
  std::string scenario_name = {};
  double time = 0;                 // a date-time number: the one nearest to the cursor
  std::vector<double> values = {}; // by segment; not-a-number if there is none
};

// Owner's thread only.
class profile_store {
public:
  explicit profile_store(results_session& session) : session_(session) {} // must outlive this
  ~profile_store();
  profile_store(const profile_store&) = delete;
  profile_store& operator=(const profile_store&) = delete;

  std::function<void()> OnChange; // the values below have changed

  // Reads the variable at the cursor, in all scenarios that have it; `variable`: position in the session's list. Call
  // it again when the results or the cursor have changed. Requests that arrive faster than the disk can serve are
  // skipped.
  void read(std::optional<std::size_t> variable);
  // Reads the range over these times of the baseline; nothing: no range. Free if it is already known.
  void read_bands(std::optional<position_range> times);

  const std::vector<scenario_profile>& profiles() const { return profiles_; }
  const scenario_profile* baseline_profile() const; // null while there is none
  // The range of one variable; the previous one while a new one is being read.
  const results_bands* bands() const { return bands_ ? &*bands_ : nullptr; }
  bool is_reading_bands() const { return reads_bands_; }
  const std::string& note() const { return note_; } // one sentence; empty: everything was read

private:
  struct band_key {
    std::uint64_t scenario = 0;
    std::size_t variable = 0, first = 0, count = 0;
    friend bool operator==(const band_key&, const band_key&) = default;
  };
  void take(std::vector<scenario_profile> profiles);
  void change();

  results_session& session_;
  std::optional<std::size_t> variable_;
  std::vector<scenario_profile> profiles_;
  std::optional<results_bands> bands_;
  std::optional<band_key> band_key_;
  std::string note_;
  bool reads_ = false, reads_again_ = false, reads_bands_ = false;
};

} // namespace vesk
