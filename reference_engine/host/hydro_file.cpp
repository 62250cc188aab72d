#include "host/hydro_file.h"

#include "core/errors.h"
#include "core/problem.h"
#include "core/step_control.h"
#include "core/text.h"
#include "host/trial.h"

#include <hdf5.h>
#include <netcdf.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>

namespace reference_engine {

namespace {

constexpr std::array<const char*, 3> dimension_names = {"time", "segment", "link"};
constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

struct TimeUnit {
  const char* name;
  double per_day;
};
constexpr std::array<TimeUnit, 4> time_units = {{{"days", 1}, {"hours", 24}, {"minutes", 1440}, {"seconds", 86400}}};

// "hours since 2007-10-01 06:30:00"; the time of day and the plural may be missing. False for anything else.
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

} // namespace

HydroFile::HydroFile(std::string name) : name_(std::move(name)), interval_(none) {
  if (!survives([this] { HydroFile(name_, Trial{}).read_through(); }))
    refuse("is damaged: the NetCDF library fails on it");
  open();
}

HydroFile::HydroFile(std::string name, Trial) : name_(std::move(name)), interval_(none) {
  open();
}

void HydroFile::open() {
  // What is missing is told in a sentence of its own. HDF5 keeps this setting for each thread, and NetCDF makes it only
  // in the thread that uses it first.
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
  const int status = nc_open(name_.c_str(), NC_NOWRITE, &id_);
  if (status == NC_ENOTNC) refuse("is no NetCDF file");
  check(status);
  try {
    for (std::size_t d = 0; d < dimensions; ++d) {
      if (nc_inq_dimid(id_, dimension_names[d], &dimension_[d]) != NC_NOERR)
        refuse(text("has no dimension \"", dimension_names[d], "\""));
      check(nc_inq_dimlen(id_, dimension_[d], &size_[d]));
    }
    if (size_[segment_dimension] == 0) refuse("has no segments");
    read_names();
    read_links();
    read_times();
    flow_ = find("flow", {time_dimension, link_dimension});
    volume_ = find("volume", {time_dimension, segment_dimension});
  } catch (...) {
    nc_close(id_);
    throw;
  }
}

// All that a run may ask for; of a long file what can be read in a moment, its end first.
void HydroFile::read_through() {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point enough = Clock::now() + std::chrono::seconds(1);
  for (std::size_t k = 0; k < times_.size() && Clock::now() < enough; ++k) {
    try {
      load(k == 0 ? times_.size() - 1 : k - 1);
    } catch (const InputError&) { // is told when it is asked for
    }
  }
}

HydroFile::~HydroFile() {
  nc_close(id_);
}

void HydroFile::refuse(const std::string& cause) const {
  throw InputError(text(name_, ": ", cause, "."));
}

void HydroFile::check(int status) const {
  if (status != NC_NOERR) refuse(text("can't be read: ", nc_strerror(status)));
}

std::string HydroFile::attribute(int variable, const char* name) const {
  std::size_t length = 0;
  nc_type type = NC_NAT;
  if (nc_inq_att(id_, variable, name, &type, &length) != NC_NOERR || type != NC_CHAR) return {};
  std::string value(length, '\0');
  check(nc_get_att_text(id_, variable, name, value.data()));
  return value;
}

HydroFile::Variable HydroFile::find(const char* name, std::vector<Dimension> shape) const {
  int id = 0, count = 0;
  if (nc_inq_varid(id_, name, &id) != NC_NOERR) refuse(text("has no variable \"", name, "\""));
  check(nc_inq_varndims(id_, id, &count));
  std::vector<int> found(static_cast<std::size_t>(count)), wanted;
  check(nc_inq_vardimid(id_, id, found.data()));
  std::string wanted_names;
  for (const Dimension d : shape) {
    wanted.push_back(dimension_[d]);
    wanted_names += (wanted_names.empty() ? "" : ", ") + std::string(dimension_names[d]);
  }
  if (found != wanted) refuse(text("the variable \"", name, "\" does not have the dimensions (", wanted_names, ")"));
  double fill = NC_FILL_DOUBLE; // as a number, that of single precision is the same
  if (nc_get_att_double(id_, id, "_FillValue", &fill) != NC_NOERR) fill = NC_FILL_DOUBLE;
  return {name, id, fill};
}

HydroFile::Row HydroFile::read(const Variable& variable) const {
  int dimension = 0;
  std::size_t size = 0;
  check(nc_inq_vardimid(id_, variable.id, &dimension));
  check(nc_inq_dimlen(id_, dimension, &size));
  Row values(size);
  if (size > 0) check(nc_get_var_double(id_, variable.id, values.data()));
  return values;
}

void HydroFile::read_names() {
  int id = 0, count = 0;
  std::array<int, NC_MAX_VAR_DIMS> shape{};
  std::size_t length = 0;
  nc_type type = NC_NAT;
  if (nc_inq_varid(id_, "segment_name", &id) != NC_NOERR) refuse("has no variable \"segment_name\"");
  check(nc_inq_var(id_, id, nullptr, &type, &count, shape.data(), nullptr));
  if (type != NC_CHAR || count != 2 || shape[0] != dimension_[segment_dimension])
    refuse("the variable \"segment_name\" does not hold letters by (segment, name_length)");
  check(nc_inq_dimlen(id_, shape[1], &length));
  std::string letters;
  if (length > letters.max_size() / size_[segment_dimension]) refuse("has segment names without end");
  letters.resize(size_[segment_dimension] * length);
  if (!letters.empty()) check(nc_get_var_text(id_, id, letters.data()));

  const Variable lengths = find("length", {segment_dimension}), widths = find("width", {segment_dimension});
  const Row length_row = read(lengths), width_row = read(widths);
  const auto known = [](double value, double fill) { return std::isfinite(value) && value != fill ? value : 0.0; };
  for (std::size_t i = 0; i < size_[segment_dimension]; ++i) {
    std::string name = letters.substr(i * length, length);
    name.resize(std::min(name.find('\0'), name.size()));
    name.resize(name.find_last_not_of(' ') + 1);
    segments_.push_back({name, known(length_row[i], lengths.fill), known(width_row[i], widths.fill)});
  }
}

void HydroFile::read_links() {
  const Row from = read(find("link_from", {link_dimension})), to = read(find("link_to", {link_dimension}));
  const auto end_of = [this](std::size_t link, double number) {
    if (number >= 0 && number <= static_cast<double>(segments_.size()) && number == std::floor(number))
      return static_cast<int>(number) - 1;
    refuse(text("link ", link + 1, " names segment ", number, ", but the file has ", segments_.size(), " segments"));
  };
  for (std::size_t k = 0; k < from.size(); ++k) links_.push_back({end_of(k, from[k]), end_of(k, to[k])});
}

void HydroFile::read_times() {
  const Variable variable = find("time", {time_dimension});
  double per_day = 1;
  const std::string units = attribute(variable.id, "units");
  if (!parse_units(units, per_day, epoch_))
    refuse(text("the units of \"time\" are \"", units, "\", not like \"days since 2007-10-01 00:00:00\""));
  times_ = read(variable);
  if (times_.empty()) refuse("has no times");
  for (double& time : times_) time /= per_day;
  for (std::size_t k = 0; k < times_.size(); ++k)
    if (!std::isfinite(times_[k]) || (k > 0 && !(times_[k] > times_[k - 1] + same_moment)))
      refuse(text("time ", k + 1, " is not after the one before it"));
}

void HydroFile::take_up(const Moment& at, double days) {
  offset_ = at.days_since(epoch_);
  const auto day = [this](double time) { return epoch_.after(time).iso(' '); };
  if (times_.front() > offset_ + same_moment || times_.back() < offset_ + days - same_moment)
    refuse(text("reaches from ", day(times_.front()), " to ", day(times_.back()), ", but the run takes it from ",
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

void HydroFile::read_row(const Variable& variable, std::size_t time, Row& row) const {
  const std::size_t start[] = {time, 0}, count[] = {1, row.size()};
  if (!row.empty()) check(nc_get_vara_double(id_, variable.id, start, count, row.data()));
  const auto is_missing = [&](double value) { return !std::isfinite(value) || value == variable.fill; };
  if (const auto missing = std::ranges::find_if(row, is_missing); missing != row.end())
    refuse(text("the value ", missing - row.begin() + 1, " of \"", variable.name, "\" at ",
                epoch_.after(times_[time]).iso(' '), " is missing"));
}

void HydroFile::load(std::size_t interval) {
  if (interval == interval_) return;
  flows_.resize(links_.size());
  volumes_.resize(segments_.size());
  next_volumes_.resize(segments_.size());
  const std::size_t next = std::min(interval + 1, times_.size() - 1);
  read_row(flow_, interval, flows_);
  if (interval_ != none && interval == interval_ + 1)
    volumes_.swap(next_volumes_);
  else
    read_row(volume_, interval, volumes_);
  read_row(volume_, next, next_volumes_);
  for (const Row* row : {&volumes_, &next_volumes_})
    if (const auto empty = std::ranges::find_if(*row, [](double volume) { return !(volume > 0); }); empty != row->end())
      refuse(text("segment ", empty - row->begin() + 1, " has no volume at ",
                  epoch_.after(times_[row == &volumes_ ? interval : next]).iso(' ')));
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

std::vector<double> HydroFile::volumes(double day) {
  const std::size_t interval = interval_at(day);
  load(interval);
  if (interval + 1 == times_.size()) return volumes_;
  const double length = times_[interval + 1] - times_[interval];
  const double share = std::clamp((offset_ + day - times_[interval]) / length, 0.0, 1.0);
  std::vector<double> values(volumes_.size()); // above 0, however far apart the two are
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = std::lerp(volumes_[i], next_volumes_[i], share);
  return values;
}

} // namespace reference_engine
