#include "results/results_file.h"

#include "dataset/any_case.h"
#include "dataset/text_encoding.h"
#include "platform/helper_program.h"
#include "platform/nearest_name.h"
#include "query/cancellation.h"
#include "results/cf_time.h"
#include "results/nc_helper/protocol.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace vesk {

namespace {

static_assert(nc::the_file == handed_descriptor);

constexpr std::chrono::minutes longest_silence{10}; // a band of a large file on a slow disk can take minutes
constexpr const char* damaged = "is damaged: the NetCDF library fails on it";

// Reads numbers and texts from the front of an answer; false if none are left.
class unpacker {
public:
  explicit unpacker(std::string_view bytes) : left_(bytes) {}

  bool take(std::uint64_t& number) { return take_bytes(&number, sizeof number); }
  bool take(std::vector<double>& values) {
    std::uint64_t size = 0;
    if (!take(size) || left_.size() / sizeof(double) < size) return false;
    values.resize(size);
    return take_bytes(values.data(), size * sizeof(double));
  }
  bool take(std::string& text) {
    std::uint64_t size = 0;
    if (!take(size) || left_.size() < size) return false;
    text = shown_text(left_.substr(0, size));
    left_.remove_prefix(size);
    return true;
  }
  // The number of elements that follow, each of at least this many bytes.
  bool take_count(std::size_t& count, std::size_t least_size) {
    std::uint64_t size = 0;
    if (!take(size) || left_.size() / least_size < size) return false;
    count = size;
    return true;
  }
  bool is_empty() const { return left_.empty(); }

private:
  bool take_bytes(void* to, std::size_t size) {
    if (left_.size() < size) return false;
    if (size > 0) std::memcpy(to, left_.data(), size);
    left_.remove_prefix(size);
    return true;
  }

  std::string_view left_;
};

std::vector<double> numbers(std::string_view bytes) {
  std::vector<double> values(bytes.size() / sizeof(double));
  if (!values.empty()) std::memcpy(values.data(), bytes.data(), values.size() * sizeof(double));
  return values;
}

} // namespace

struct results_file::request : nc::question {};

results_file::results_file(std::filesystem::path file) : path_(std::move(file)) {
  if (path_.string().find("://") != std::string::npos)
    throw results_exception(path_.string() + ": is a URL; a results file must be on this machine.");
  file_ = open_for_reading(path_);
  identity_ = identity_of(file_.get());
  if (!identity_) fail("is not a regular file");
  read_content(start());
}

results_file::~results_file() = default;
results_file::results_file(results_file&&) noexcept = default;
results_file& results_file::operator=(results_file&&) noexcept = default;

void results_file::fail(const std::string& cause) const {
  throw results_exception(path_.string() + ": " + cause + ".");
}

std::string results_file::start() const {
  const auto program = helper_path("vesk-nc");
  try {
    helper_ = std::make_unique<helper_program>(program, file_, longest_silence, [] { stop_if_cancelled(); });
  } catch (const helper_program::failure& failure) {
    fail("the program that reads results cannot be started: " + program.string() + ": " + std::strerror(failure.error));
  }
  return receive(static_cast<std::uint64_t>(nc::kind::content));
}

std::string results_file::receive(std::uint64_t expected) const {
  try {
    nc::answer head{};
    helper_->receive(&head, sizeof head);
    std::string bytes = helper_->receive_text(head.size);
    if (head.what == nc::kind::refusal) fail(printable_text(bytes));
    if (static_cast<std::uint64_t>(head.what) != expected) throw helper_program::failure{};
    return bytes;
  } catch (const helper_program::failure& failure) {
    helper_.reset();
    fail(failure.how == helper_program::failure::way::silent ? "cannot be read: there was no answer in 10 minutes"
                                                             : damaged);
  } catch (const query_cancelled&) {
    helper_.reset(); // otherwise its answer would be taken for that of the next question
    throw;
  }
}

std::string results_file::ask(const request& asked) const {
  if (!helper_) start();
  const nc::question& question = asked;
  try {
    helper_->send(&question, sizeof question);
  } catch (const helper_program::failure&) {
    helper_.reset();
    fail(damaged);
  }
  std::string bytes = receive(static_cast<std::uint64_t>(asked.wanted));
  // The file was modified in place, for example by another run: old and new values would be mixed.
  if (!is_intact()) fail("has changed since it was opened; open it again");
  return bytes;
}

void results_file::read_content(std::string_view packed) {
  unpacker content(packed);
  std::string units, calendar;
  std::uint64_t segments = 0;
  std::size_t names = 0, variables = 0;
  constexpr std::size_t texts_of_variable = 5;
  bool is_whole = content.take(times_) && content.take(units) && content.take(calendar) && content.take(segments) &&
                  content.take_count(names, sizeof(std::uint64_t));
  if (!is_whole) fail(damaged);
  names_.resize(names);
  for (std::string& name : names_) is_whole = is_whole && content.take(name);
  is_whole = is_whole && content.take(lengths_) && content.take(title_) && content.take(source_) &&
             content.take_count(variables, texts_of_variable * sizeof(std::uint64_t));
  if (!is_whole) fail(damaged);
  variables_.resize(variables);
  for (results_variable& it : variables_)
    for (std::string* text : {&it.name, &it.long_name, &it.standard_name, &it.units, &it.cell_methods})
      is_whole = is_whole && content.take(*text);
  const auto fits = [&](std::size_t size) { return size == 0 || size == segments; };
  segments_ = segments;
  if (!is_whole || !content.is_empty() || times_.empty() || variables_.empty() || segments == 0 ||
      segments > nc::most_positions || !fits(names_.size()) || !fits(lengths_.size()))
    fail(damaged);
  try {
    times_ = date_times(std::move(times_), units, calendar);
  } catch (const cf_time_exception& error) {
    fail(error.what());
  }
}

std::string results_file::segment_name(std::size_t segment) const {
  const bool is_named = segment < names_.size() && !names_[segment].empty();
  return is_named ? names_[segment] : "Segment " + std::to_string(segment + 1);
}

std::size_t results_file::find_variable(std::string_view name) const {
  const auto find = [&](auto&& matches) {
    const auto found = std::ranges::find_if(variables_, matches);
    return static_cast<std::size_t>(found - variables_.begin());
  };
  std::size_t at = find([&](const results_variable& it) { return it.name == name; });
  if (at == variables_.size()) at = find([&](const results_variable& it) { return it.long_name == name; });
  if (at == variables_.size())
    at =
        find([&](const results_variable& it) { return equal_names(it.name, name) || equal_names(it.long_name, name); });
  if (at < variables_.size()) return at;
  std::vector<std::string_view> names;
  for (const results_variable& it : variables_) names.push_back(it.name);
  fail("has no variable \"" + std::string(name) + "\"; the nearest is \"" + std::string(nearest_name(name, names)) +
       '"');
}

std::size_t results_file::find_segment(std::string_view name) const {
  const auto found = std::ranges::find(names_, name);
  if (found != names_.end()) {
    if (std::find(found + 1, names_.end(), name) != names_.end())
      fail("has several segments with the name \"" + std::string(name) + "\"; give the segment's number instead");
    return static_cast<std::size_t>(found - names_.begin());
  }
  std::size_t number = 0;
  const auto read = std::from_chars(name.data(), name.data() + name.size(), number);
  if (read.ec == std::errc() && read.ptr == name.data() + name.size()) {
    if (number >= 1 && number <= segments_) return number - 1;
    fail("has the segments 1 to " + std::to_string(segments_) + ", and none with the number " + std::string(name));
  }
  const std::vector<std::string_view> names(names_.begin(), names_.end());
  const std::string nearest = names.empty() ? "" : "; the nearest is \"" + std::string(nearest_name(name, names)) + '"';
  fail("has no segment \"" + std::string(name) + '"' + nearest);
}

std::vector<double> results_file::slice(std::size_t variable, position_range times, position_range segments) const {
  const request asked{{nc::kind::values, variable, times.first, times.count, segments.first, segments.count}};
  std::vector<double> values = numbers(ask(asked));
  if (values.size() != times.count * segments.count) fail(damaged);
  return values;
}

std::vector<double> results_file::series(std::size_t variable, std::size_t segment) const {
  return slice(variable, {0, times_.size()}, {segment, 1});
}

std::vector<double> results_file::profile(std::size_t variable, std::size_t time) const {
  return slice(variable, {time, 1}, {0, segments_});
}

results_bands results_file::bands(std::size_t variable, position_range times) const {
  const auto values = numbers(ask({{nc::kind::bands, variable, times.first, times.count, 0, segments_}}));
  if (values.size() != 4 * segments_) fail(damaged);
  const auto part = [&](std::size_t k) {
    const auto begin = values.begin() + static_cast<std::ptrdiff_t>(k * segments_);
    return std::vector<double>(begin, begin + static_cast<std::ptrdiff_t>(segments_));
  };
  const auto counts = part(3);
  return {part(0), part(1), part(2), {counts.begin(), counts.end()}};
}

bool results_file::is_intact() const {
  return identity_of(file_.get()) == identity_;
}

bool results_file::is_current() const {
  return identity_of(path_) == identity_;
}

} // namespace vesk
