#include "host/hydro_file.h"

#include "core/errors.h"
#include "core/problem.h"
#include "core/text.h"
#include "core/timeline.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace reference_engine {

namespace {

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

struct TimeUnit {
  const char* name;
  double per_day;
};
constexpr std::array<TimeUnit, 4> time_units = {{{"days", 1}, {"hours", 24}, {"minutes", 1440}, {"seconds", 86400}}};

// "hours since 2007-10-01 06:30:00"; the time of day and the plural s are optional. False for anything else.
bool parse_units(const std::string& units, double& per_day, Moment& epoch) {
  std::array<char, 16> unit{};
  epoch = {};
  const int found = std::sscanf(units.c_str(), "%15s since %d-%d-%d%*[T ]%d:%d:%d", unit.data(), &epoch.year,
                                &epoch.month, &epoch.day, &epoch.hour, &epoch.minute, &epoch.second);
  if (found != 4 && found < 6) return false;
  std::string plural = unit.data();
  if (!plural.ends_with('s')) plural += 's';
  for (const TimeUnit& it : time_units) {
    if (plural != it.name) continue;
    per_day = it.per_day;
    return epoch.is_valid();
  }
  return false;
}

// Prepares a text from the file, of any length and in any encoding, for use in a sentence.
std::string shown(std::string text) {
  constexpr std::size_t longest = 40;
  if (text.size() > longest) text.replace(longest, std::string::npos, "...");
  std::ranges::replace_if(
      text, [](char letter) { return letter < ' ' || letter > '~'; }, '?');
  return text;
}

} // namespace

HydroFile::HydroFile(std::string name, HydroReader::Waiting waiting)
    : name_(std::move(name)), reader_(name_, std::move(waiting)), interval_(none) {
  HydroReader::Content content = reader_.content();
  take_segments(content);
  take_links(content);
  take_times(content);
}

std::string HydroFile::name_of_segment(std::size_t segment) const {
  return text(segment + 1, " (", shown(segments_[segment].name), ")");
}

std::string HydroFile::name_of_link(std::size_t link) const {
  const auto end = [this](int segment) {
    return segment == outside ? std::string("outside") : shown(segments_[static_cast<std::size_t>(segment)].name);
  };
  return text(link + 1, " (", end(links_[link].from), " to ", end(links_[link].to), ")");
}

void HydroFile::take_segments(HydroReader::Content& content) {
  if (content.names.empty()) reader_.refuse("has no segments");
  const auto known = [](double value) { return std::isfinite(value) ? value : 0.0; };
  for (std::size_t i = 0; i < content.names.size(); ++i)
    segments_.push_back({std::move(content.names[i]), known(content.lengths[i]), known(content.widths[i])});
}

void HydroFile::take_links(const HydroReader::Content& content) {
  const auto end_of = [this](std::size_t link, double number) {
    if (number >= 0 && number <= static_cast<double>(segments_.size()) && number == std::floor(number))
      return static_cast<int>(number) - 1;
    reader_.refuse(
        text("link ", link + 1, " names segment ", number, ", but the file has ", segments_.size(), " segments"));
  };
  for (std::size_t k = 0; k < content.from.size(); ++k)
    links_.push_back({end_of(k, content.from[k]), end_of(k, content.to[k])});
}

void HydroFile::take_times(HydroReader::Content& content) {
  double per_day = 1;
  if (!parse_units(content.time_units, per_day, epoch_))
    reader_.refuse(text("the units of \"time\" are \"", shown(content.time_units),
                        "\", not like \"days since 2007-10-01 00:00:00\""));
  times_ = std::move(content.times);
  if (times_.empty()) reader_.refuse("has no times");
  for (double& time : times_) time /= per_day;
  for (std::size_t k = 0; k < times_.size(); ++k)
    if (!std::isfinite(times_[k]) || (k > 0 && !(times_[k] > times_[k - 1] + same_moment)))
      reader_.refuse(text("time ", k + 1, " is not later than the time before it"));
}

void HydroFile::take_up(const Moment& at, double days) {
  offset_ = at.days_since(epoch_);
  const auto day = [this](double time) { return epoch_.after(time).iso(' '); };
  if (times_.front() > offset_ + same_moment || times_.back() < offset_ + days - same_moment)
    reader_.refuse(text("covers ", day(times_.front()), " to ", day(times_.back()), ", but the run needs ",
                        day(offset_), " to ", day(offset_ + days)));
}

void HydroFile::take_up_nearest(const Moment& at) {
  offset_ = std::clamp(at.days_since(epoch_), times_.front(), times_.back());
}

std::size_t HydroFile::interval_at(double day) const {
  const auto next = std::upper_bound(times_.begin(), times_.end(), offset_ + day + same_moment);
  const auto behind = static_cast<std::size_t>(next - times_.begin());
  return std::min(behind > 0 ? behind - 1 : 0, times_.size() > 1 ? times_.size() - 2 : 0);
}

double HydroFile::next_change(double day) const {
  const auto next = std::upper_bound(times_.begin(), times_.end(), offset_ + day + same_moment);
  return next == times_.end() ? std::numeric_limits<double>::infinity() : *next - offset_;
}

void HydroFile::read_row(HydroReader::Quantity quantity, std::size_t time, Row& row) {
  reader_.read_row(quantity, time, row);
  const auto missing = std::ranges::find_if_not(row, [](double value) { return std::isfinite(value); });
  if (missing == row.end()) return;
  const auto at = static_cast<std::size_t>(missing - row.begin());
  reader_.refuse(text(quantity == HydroReader::Quantity::flow ? "the flow of link " + name_of_link(at)
                                                              : "the volume of segment " + name_of_segment(at),
                      " at ", epoch_.after(times_[time]).iso(' '), " is missing"));
}

void HydroFile::load(std::size_t interval) {
  if (interval == interval_) return;
  flows_.resize(links_.size());
  volumes_.resize(segments_.size());
  next_volumes_.resize(segments_.size());
  const std::size_t next = std::min(interval + 1, times_.size() - 1);
  read_row(HydroReader::Quantity::flow, interval, flows_);
  if (interval_ != none && interval == interval_ + 1)
    volumes_.swap(next_volumes_);
  else
    read_row(HydroReader::Quantity::volume, interval, volumes_);
  read_row(HydroReader::Quantity::volume, next, next_volumes_);
  for (const Row* row : {&volumes_, &next_volumes_})
    if (const auto empty = std::ranges::find_if(*row, [](double volume) { return !(volume > 0); }); empty != row->end())
      reader_.refuse(text("segment ", name_of_segment(static_cast<std::size_t>(empty - row->begin())),
                          " has no volume at ", epoch_.after(times_[row == &volumes_ ? interval : next]).iso(' ')));
  interval_ = interval;
}

void HydroFile::hold(double day, std::vector<double>& flows, std::vector<double>& volume_change) {
  const std::size_t before = interval_, interval = interval_at(day);
  load(interval);
  if (interval == before && !volume_change.empty()) return;
  flows = flows_;
  volume_change.assign(segments_.size(), 0.0);
  if (interval + 1 == times_.size()) return;
  const double length = times_[interval + 1] - times_[interval];
  for (std::size_t i = 0; i < volume_change.size(); ++i) volume_change[i] = (next_volumes_[i] - volumes_[i]) / length;
}

std::optional<HydroFile::Mismatch> HydroFile::mismatch() const {
  constexpr double tolerance = 0.01; // of the volume
  if (interval_ == none || interval_ + 1 >= times_.size()) return std::nullopt;
  const double seconds = (times_[interval_ + 1] - times_[interval_]) * seconds_per_day;
  Row flown = volumes_;
  for (std::size_t k = 0; k < links_.size(); ++k) {
    if (links_[k].from != outside) flown[static_cast<std::size_t>(links_[k].from)] -= flows_[k] * seconds;
    if (links_[k].to != outside) flown[static_cast<std::size_t>(links_[k].to)] += flows_[k] * seconds;
  }
  std::optional<Mismatch> worst;
  double largest = tolerance;
  for (std::size_t i = 0; i < flown.size(); ++i) {
    const double share = std::abs(next_volumes_[i] - flown[i]) / next_volumes_[i];
    if (share <= largest) continue;
    largest = share;
    worst = {
        i,       epoch_.after(times_[interval_]), epoch_.after(times_[interval_ + 1]), volumes_[i], next_volumes_[i],
        flown[i]};
  }
  return worst;
}

std::vector<double> HydroFile::volumes(double day) {
  const std::size_t interval = interval_at(day);
  load(interval);
  if (interval + 1 == times_.size()) return volumes_;
  const double length = times_[interval + 1] - times_[interval];
  const double share = std::clamp((offset_ + day - times_[interval]) / length, 0.0, 1.0);
  std::vector<double> values(volumes_.size()); // positive, however far apart the two volumes are
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = std::lerp(volumes_[i], next_volumes_[i], share);
  return values;
}

} // namespace reference_engine
