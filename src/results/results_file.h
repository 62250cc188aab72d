// Results over times and segments: any NetCDF file that follows the CF conventions and has these two dimensions.
//
// Values stay on disk and are read on demand by vesk-nc, a separate process: a file may come from anyone, and the
// NetCDF and HDF5 libraries trust their input. A file stays readable after it was deleted or replaced by renaming.
#pragma once

#include "platform/file_identity.h"
#include "platform/file_io.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

class helper_program;

// A file that cannot be shown: one sentence with its name.
class results_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct results_variable {
  std::string name;          // in the file
  std::string long_name;     // for display; may be empty
  std::string standard_name; // of the CF conventions; may be empty
  std::string units;         // may be empty
  std::string cell_methods;  // may be empty
};

// A variable's range for each segment over some times. Not-a-number where there is no value.
struct results_bands {
  std::vector<double> least, mean, greatest;
  std::vector<std::uint64_t> counts; // of values
};

// Consecutive positions, counted from 0.
struct position_range {
  std::size_t first = 0, count = 0;
};

// Used by one thread at a time; the thread that opened it must outlive it. All functions that read throw
// results_exception, and query_cancelled within a cancellation_scope. The object remains usable afterwards.
class results_file {
public:
  explicit results_file(std::filesystem::path file);
  ~results_file();
  results_file(results_file&&) noexcept;
  results_file& operator=(results_file&&) noexcept;

  const std::filesystem::path& path() const { return path_; }
  const std::string& title() const { return title_; }
  const std::string& source() const { return source_; }

  const std::vector<double>& times() const { return times_; } // date-time numbers, ascending; at least one
  std::size_t segments() const { return segments_; }          // at least 1
  // Of segments, m; not-a-number if one is unknown; empty if the file has none.
  const std::vector<double>& lengths() const { return lengths_; }
  const std::vector<results_variable>& variables() const { return variables_; } // at least one

  // UTF-8; "Segment 3" for the third one if the file has no names.
  std::string segment_name(std::size_t segment) const;

  // By name or long name, first exactly, then regardless of case. Throws results_exception with the nearest name.
  std::size_t find_variable(std::string_view name) const;
  // By name; a number that is not a name counts segments from 1. Throws results_exception, also if several segments
  // have the name.
  std::size_t find_segment(std::string_view name) const;

  // Over all times.
  std::vector<double> series(std::size_t variable, std::size_t segment) const;
  // Of all segments.
  std::vector<double> profile(std::size_t variable, std::size_t time) const;
  // Time by time.
  std::vector<double> slice(std::size_t variable, position_range times, position_range segments) const;

  results_bands bands(std::size_t variable, position_range times) const;

  // Whether values can still be read: the file that was opened, which may be deleted, was not modified.
  bool is_intact() const;

  // False if the name now refers to another file or none, or if the file was modified.
  bool is_current() const;

private:
  struct request;
  std::string ask(const request& asked) const;
  void read_content(std::string_view packed);
  std::string start() const; // starts the helper and returns its first answer
  std::string receive(std::uint64_t expected) const;
  [[noreturn]] void fail(const std::string& cause) const;

  std::filesystem::path path_;
  file_descriptor file_;
  std::optional<file_identity> identity_;
  mutable std::unique_ptr<helper_program> helper_; // null after a failure; the next question restarts it
  std::string title_, source_;
  std::vector<double> times_, lengths_;
  std::size_t segments_ = 0;
  std::vector<std::string> names_; // empty if the file has none
  std::vector<results_variable> variables_;
};

} // namespace vesk
