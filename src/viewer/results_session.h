// What the results window shows: the results that are open, side by side as scenarios, the chosen variables and
// segments, and one cursor in time for all views.
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
  std::uint64_t number = 0; // of this opening; never used again
  std::string name = {};    // the file's stem until the user gives another one
  std::filesystem::path path = {};
  // Its values are read on the reading thread only. Everything else in it never changes.
  std::shared_ptr<const results_file> file = {};
  std::unordered_map<std::string, std::size_t> segment_of_name = {}; // the first one
};

// A name in one of the two lists that the user chooses from.
struct named_choice {
  std::string name;
  std::string units = {};                   // of a variable
  std::string long_name = {};               // of a variable
  std::optional<std::size_t> position = {}; // in the baseline; nothing: only others have it
};

// All members are called on the window's thread, and so are all callbacks.
class results_session {
public:
  explicit results_session(reading_thread::poster post) : reader_(std::move(post)) {}
  results_session(const results_session&) = delete;
  results_session& operator=(const results_session&) = delete;

  // What a view hears of. Each is empty until it is set; several views use `listen`.
  struct listener {
    std::function<void()> results_changed;   // scenarios, names or baseline
    std::function<void()> selection_changed; // variables or segments
    std::function<void()> cursor_moved;
  };
  void listen(listener ears) { listeners_.push_back(std::move(ears)); }
  std::function<void(const std::string&)> OnMessage; // one sentence; empty: the last one no longer holds

  // Opens the file in the background, or reads it anew where it is open already; the scenario then keeps its name.
  void open(const std::filesystem::path& file);
  void reload_changed(); // those whose file was replaced by another one since they were opened
  void close(std::size_t scenario);
  void rename(std::size_t scenario, const std::string& name); // an empty name: the file's stem
  void set_baseline(std::size_t scenario);

  const std::vector<scenario>& scenarios() const { return scenarios_; }
  std::size_t baseline() const { return baseline_; } // 0 also without scenarios
  const results_file* baseline_file() const { return scenarios_.empty() ? nullptr : scenarios_[baseline_].file.get(); }

  // The names to choose from: those of the baseline in its order, then what only others have. `chosen` is as long, and
  // is written by the lists; call selection_was_changed after that.
  struct choices {
    std::vector<named_choice> names;
    std::vector<bool> chosen;
    std::vector<std::size_t> positions() const; // of those that are chosen
  };
  choices variables, segments;
  void selection_was_changed();
  // Chooses by name what a scenario has; false: none of them has it.
  bool choose(const std::string& variable, const std::string& segment);

  // Where a scenario has the variable or the segment of a list; nothing: it has none of that name.
  std::optional<std::size_t> variable_in(const scenario& within, std::size_t variable) const;
  std::optional<std::size_t> segment_in(const scenario& within, std::size_t segment) const;

  // The cursor, as a date-time number; without scenarios 0.
  double cursor() const { return cursor_; }
  void set_cursor(double date_time);              // moved to the nearest time of the baseline
  std::size_t cursor_position() const;            // in the times of the baseline
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

  std::vector<listener> listeners_;
  std::vector<scenario> scenarios_;
  std::size_t baseline_ = 0;
  std::uint64_t last_number_ = 0;
  double cursor_ = 0;
  reading_thread reader_; // the last member: what it still does uses the others
};

// The position of the time nearest to `date_time`; `times` ascending, not empty.
std::size_t nearest_time(const std::vector<double>& times, double date_time);

} // namespace vesk
