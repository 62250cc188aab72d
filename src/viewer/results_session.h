// The state of the results window: the open results, side by side as scenarios, the chosen variables and segments, and
// one time cursor for all views.
#pragma once

#include "results/results_file.h"
#include "viewer/reading_thread.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vesk {

// One open file.
struct scenario {
  std::uint64_t number = 0; // unique to this opening; never reused
  std::string name = {};    // the file's stem until the user renames it
  std::filesystem::path path = {};
  // Its values are read on the reading thread only. The rest of it is constant.
  std::shared_ptr<const results_file> file = {};
  std::unordered_map<std::string, std::size_t> segment_of_name = {}; // the first one with this name
};

// A name in one of the two selection lists.
struct named_choice {
  std::string name;
  std::string units = {};                   // of a variable
  std::string long_name = {};               // of a variable
  std::optional<std::size_t> position = {}; // in the baseline; nothing: only in other scenarios
};

// All members and callbacks run on the window's thread.
class results_session {
public:
  explicit results_session(reading_thread::poster post) : reader_(std::move(post)) {}
  results_session(const results_session&) = delete;
  results_session& operator=(const results_session&) = delete;

  // The events for views. Each is empty until set; several views use `listen`.
  struct listener {
    std::function<void()> results_changed;   // scenarios, names or baseline
    std::function<void()> selection_changed; // variables or segments
    std::function<void()> cursor_moved;
  };
  void listen(listener ears) { listeners_.push_back(std::move(ears)); }
  std::function<void(const std::string&)> OnMessage; // one sentence; empty: the last one no longer applies

  // Opens the file in the background, or reloads it if it is open; the scenario then keeps its name.
  void open(const std::filesystem::path& file);
  void reload_changed(); // reloads the files replaced since they were opened
  // Clears the message about a file that could not be opened once that file has changed or was deleted.
  void forget_outdated_message();
  void close(std::size_t scenario);
  void rename(std::size_t scenario, const std::string& name); // an empty name: the file's stem
  void set_baseline(std::size_t scenario);

  const std::vector<scenario>& scenarios() const { return scenarios_; }
  std::size_t baseline() const { return baseline_; } // also 0 without scenarios
  const results_file* baseline_file() const { return scenarios_.empty() ? nullptr : scenarios_[baseline_].file.get(); }

  // The names to choose from: those of the baseline in its order, then those only in other scenarios. `chosen` has the
  // same length and is written by the lists; call selection_was_changed afterwards.
  struct choices {
    std::vector<named_choice> names;
    std::vector<bool> chosen;
    std::vector<std::size_t> positions() const; // of the chosen ones
  };
  choices variables, segments;
  void selection_was_changed();
  // Selects by name; false: no scenario has the name.
  bool choose(const std::string& variable, const std::string& segment);

  // The position in a scenario of a variable or segment of the list; nothing: the name is missing.
  std::optional<std::size_t> variable_in(const scenario& within, std::size_t variable) const;
  std::optional<std::size_t> segment_in(const scenario& within, std::size_t segment) const;

  // The cursor, as a date-time number; 0 without scenarios.
  double cursor() const { return cursor_; }
  void set_cursor(double date_time);              // moves to the nearest time of the baseline
  std::size_t cursor_position() const;            // index into the times of the baseline
  void set_cursor_position(std::size_t position); // clamped

  reading_thread& reader() { return reader_; }

private:
  void take(const std::filesystem::path& path, std::shared_ptr<const results_file> file,
            std::unordered_map<std::string, std::size_t> names);
  std::string usual_name(const std::filesystem::path& path) const;
  void make_choices();
  void choose_something();
  void tell(std::function<void()> listener::*what);
  void say(const std::string& message) const;

  struct refused_file {
    std::filesystem::path path;
    std::optional<file_identity> identity; // nothing: it did not exist
  };

  std::vector<listener> listeners_;
  std::vector<scenario> scenarios_;
  std::size_t baseline_ = 0;
  std::uint64_t last_number_ = 0;
  double cursor_ = 0;
  std::optional<refused_file> refused_; // what the last message is about
  reading_thread reader_;               // last member: its remaining work uses the others
};

// The position of the time nearest to `date_time`; `times` ascending, not empty.
std::size_t nearest_time(const std::vector<double>& times, double date_time);

} // namespace vesk
