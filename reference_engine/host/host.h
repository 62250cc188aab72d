// The callback with types: arguments instead of addresses, an exception for a cancel.
#ifndef REFERENCE_ENGINE_HOST_HOST_H
#define REFERENCE_ENGINE_HOST_HOST_H

#include "core/errors.h"
#include "core/text.h"
#include "vesk_engine.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace reference_engine {

// Thrown when CANCEL answers anything but 0.
struct Cancelled {
  std::string kept = {}; // the file with the results up to then; empty: none
};

// Read by scripts: never change. A run's code becomes the exit status of vesk-run, which itself uses 1 and 2.
enum class ReturnCode : std::int32_t {
  good = 0,
  bad_input = 3,
  failed = 4,
  cancelled = 5,
  not_written = 6, // a result, restart file or export could not be written
  disk_full = 7
};

class Host {
public:
  explicit Host(vesk_data_callback callback) : callback_(callback), text_(text_size) {}

  // Indices count from 1. A value that the front end cannot find reads as 0 or as an empty text.
  template <class... Index>
  std::int32_t integer(std::string_view keyword, Index... indices) {
    std::int32_t value = 0;
    get(keyword, &value, indices...);
    return value;
  }
  // Widened from the interface's single precision.
  template <class... Index>
  double real(std::string_view keyword, Index... indices) {
    float value = 0;
    get(keyword, &value, indices...);
    return static_cast<double>(value);
  }
  // The same, but throws InputError unless the number is finite. what() is the subject of that sentence: "The volume".
  template <class What, class... Index>
  double finite(std::string_view keyword, const What& what, Index... indices) {
    const double value = real(keyword, indices...);
    if (!std::isfinite(value)) throw InputError(text(what(), " is ", value, ", not a finite number."));
    return value;
  }
  template <class... Index>
  std::string string(std::string_view keyword, Index... indices) {
    text_.front() = '\0';
    get(keyword, text_.data(), indices...);
    return text_.data();
  }
  // Days since the start and values: one point of a series, or all of them.
  template <class... Index>
  void series(std::string_view keyword, float* days, float* values, Index... indices) {
    std::array<std::int32_t, sizeof...(Index)> copies{static_cast<std::int32_t>(indices)...};
    Arguments arguments{};
    for (std::size_t k = 0; k < sizeof...(Index); ++k) arguments[k] = &copies[k];
    arguments[sizeof...(Index)] = days;
    arguments[sizeof...(Index) + 1] = values;
    get(keyword, arguments);
  }
  // A count that is used as a size: never negative.
  template <class... Index>
  std::int32_t count(std::string_view keyword, Index... indices) {
    return std::max(integer(keyword, indices...), 0);
  }

  using Arguments = std::array<void*, 5>;
  void get(std::string_view keyword, const Arguments& arguments) { call('G', keyword, arguments); }
  void put(std::string_view keyword, const Arguments& arguments = {}) { call('P', keyword, arguments); }
  void put(std::string_view keyword, std::int32_t value) { put(keyword, Arguments{&value}); }
  void put(std::string_view keyword, std::string value) { put(keyword, Arguments{value.data()}); }

  void info(std::string line) { put("INFO", std::move(line)); }
  void warning(std::string line) { icon_line(warning_icon, std::move(line)); } // the run continues
  void failure(std::string line) { icon_line(failure_icon, std::move(line)); }
  void status(std::string description, std::int32_t code);
  void return_code(ReturnCode code) { put("RETURNCODE", static_cast<std::int32_t>(code)); }
  void stop_if_cancelled(); // throws Cancelled

  // Large enough for any text of the interface. File names have no limit, so this is generous.
  static constexpr std::size_t text_size = std::size_t{1} << 16;
  char* text_buffer() { return text_.data(); }

private:
  enum Icon : std::int32_t { warning_icon = 1, failure_icon = 2 };

  void icon_line(std::int32_t icon, std::string line);
  template <class... Index>
  void get(std::string_view keyword, void* value, Index... indices) {
    std::array<std::int32_t, sizeof...(Index) + 1> copies{static_cast<std::int32_t>(indices)...};
    Arguments arguments{};
    for (std::size_t k = 0; k < sizeof...(Index); ++k) arguments[k] = &copies[k];
    arguments[sizeof...(Index)] = value;
    get(keyword, arguments);
  }
  void call(char mode, std::string_view keyword, const Arguments& arguments);

  vesk_data_callback callback_;
  std::vector<char> text_;
};

} // namespace reference_engine

#endif
