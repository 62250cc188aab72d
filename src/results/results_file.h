// Results over times and segments: any NetCDF file by the CF conventions with these two dimensions.
//
// Values stay on the disk and are read when they are looked at, by vesk-nc, a separate process: a file may come from
// anyone, and the libraries for NetCDF and HDF5 trust what they read. A file that is deleted or replaced by a renamed
// one stays readable.
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

// A file that cannot be shown: one sentence that names it.
class results_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct results_variable {
  std::string name;          // in the file
  std::string long_name;     // for people; empty where the file has none
  std::string standard_name; // of the CF conventions; may be empty
  std::string units;         // may be empty
  std::string cell_methods;  // may be empty
};

// For each segment what a variable does over some times. Not-a-number where it has no value.
struct results_bands {
  std::vector<double> least, mean, greatest;
  std::vector<std::uint64_t> counts; // of values
};

// Some neighbouring positions, counted from 0.
struct position_range {
  std::size_t first = 0, count = 0;
};

// Used by one thread at a time; the thread that opened it must not end before. All functions that read throw
// results_exception, and query_cancelled within a cancellation_scope. After either the object serves on.
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
  // Of segments, m; not-a-number where one is not known; empty where the file has none.
  const std::vector<double>& lengths() const { return lengths_; }
  const std::vector<results_variable>& variables() const { return variables_; } // at least one

  // UTF-8; "Segment 3" for the third one where the file has no names.
  std::string segment_name(std::size_t segment) const;

  // By name, by long name, or by either regardless of case. Throws results_exception with the nearest name.
  std::size_t find_variable(std::string_view name) const;
  // By name; a number that is not a name counts segments from 1. Throws results_exception, also where several segments
  // have the name.
  std::size_t find_segment(std::string_view name) const;

  // Over all times.
  std::vector<double> series(std::size_t variable, std::size_t segment) const;
  // Of all segments.
  std::vector<double> profile(std::size_t variable, std::size_t time) const;
  // Row after row of times.
  std::vector<double> slice(std::size_t variable, position_range times, position_range segments) const;

  results_bands bands(std::size_t variable, position_range times) const;

  // False when the name leads to another file by now, to none, or to a file that was written to.
  bool is_current() const;

private:
  struct request;
  std::string ask(const request& asked) const;
  void read_content(std::string_view packed);
  std::string start() const; // the helper; returns its first answer
  std::string receive(std::uint64_t expected) const;
  [[noreturn]] void fail(const std::string& cause) const;

  std::filesystem::path path_;
  file_descriptor file_;
  std::optional<file_identity> identity_;
  mutable std::unique_ptr<helper_program> helper_; // null after a failure; started again by the next question
  std::string title_, source_;
  std::vector<double> times_, lengths_;
  std::size_t segments_ = 0;
  std::vector<std::string> names_; // empty where the file has none
  std::vector<results_variable> variables_;
};

} // namespace vesk
