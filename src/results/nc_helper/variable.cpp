#include "results/nc_helper/variable.h"

#include "results/nc_helper/attributes.h"
#include "results/nc_helper/refusal.h"

#include <netcdf.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace vesk::nc {

namespace {

constexpr double nothing = std::numeric_limits<double>::quiet_NaN();

int get(int file, int id, const std::size_t* start, const std::size_t* count, float* values) {
  return nc_get_vara_float(file, id, start, count, values);
}
int get(int file, int id, const std::size_t* start, const std::size_t* count, double* values) {
  return nc_get_vara_double(file, id, start, count, values);
}

} // namespace

void check(int status) {
  if (status == NC_NOERR) return;
  if (status == NC_ENOTNC) refuse("is not a NetCDF file");
  if (status == NC_ENOMEM) refuse("takes more than 1 GB of memory to read");
  if (status == NC_EHDFERR) refuse("is damaged: the HDF5 library fails on it");
  refuse(std::string("cannot be read: ") + nc_strerror(status));
}

variable::variable(int file, int id, bool segments_first, std::uint64_t times, std::uint64_t segments)
    : file_(file), id_(id), segments_first_(segments_first), times_(times), segments_(segments) {
  constexpr std::uint64_t values_at_once = 1 << 20; // 4 MB: about the size of a processor's caches
  times_at_once_ = std::clamp<std::uint64_t>(values_at_once / segments, 1, times);
  check(nc_inq_vartype(file, id, &type_));
  read_meaning();
  use_chunks();
}

void variable::read_meaning() {
  for (const char* name : {"_FillValue", "missing_value"})
    for (const double value : number_attribute(file_, id_, name)) fills_.push_back(value);
  if (fills_.empty() && !std::isnan(default_fill())) fills_.push_back(default_fill());
  const auto first = [&](const char* name, double otherwise) {
    const auto found = number_attribute(file_, id_, name);
    return found.size() == 1 ? found[0] : otherwise;
  };
  scale_ = first("scale_factor", 1), offset_ = first("add_offset", 0);
  least_ = first("valid_min", least_), greatest_ = first("valid_max", greatest_);
  if (const auto range = number_attribute(file_, id_, "valid_range"); range.size() == 2)
    least_ = range[0], greatest_ = range[1];
}

// Bytes may use all their values, so they have no default fill value.
double variable::default_fill() const {
  switch (type_) {
  case NC_SHORT: return NC_FILL_SHORT;
  case NC_USHORT: return NC_FILL_USHORT;
  case NC_INT: return NC_FILL_INT;
  case NC_UINT: return NC_FILL_UINT;
  case NC_INT64: return static_cast<double>(NC_FILL_INT64);
  case NC_UINT64: return static_cast<double>(NC_FILL_UINT64);
  case NC_FLOAT: return double{NC_FILL_FLOAT};
  case NC_DOUBLE: return NC_FILL_DOUBLE;
  default: return nothing;
  }
}

// The library decompresses whole chunks. Its cache must hold all chunks of one time or of one segment, whichever are
// more; otherwise each is decompressed again for the next time or segment.
void variable::use_chunks() {
  int storage = NC_CONTIGUOUS;
  std::size_t sizes[2] = {0, 0}, size_of_type = 0;
  if (nc_inq_var_chunking(file_, id_, &storage, sizes) != NC_NOERR || storage != NC_CHUNKED) return;
  check(nc_inq_type(file_, type_, nullptr, &size_of_type));
  const std::uint64_t chunk_times = std::max<std::size_t>(sizes[segments_first_ ? 1 : 0], 1);
  const std::uint64_t chunk_segments = std::max<std::size_t>(sizes[segments_first_ ? 0 : 1], 1);
  constexpr double largest_cache = 64 << 20, largest_read = 16 << 20; // bytes, values
  const auto chunks_of = [](std::uint64_t all, std::uint64_t chunk) { return (all + chunk - 1) / chunk; };
  const std::uint64_t chunks = std::max(chunks_of(times_, chunk_times), chunks_of(segments_, chunk_segments));
  const double chunk = static_cast<double>(chunk_times) * static_cast<double>(chunk_segments);
  const double bytes = std::min(chunk * static_cast<double>(size_of_type) * static_cast<double>(chunks), largest_cache);
  constexpr std::size_t slots = 10007; // a prime, well above the number of chunks in the cache
  constexpr float drop_read_first = 0.75F;
  check(nc_set_var_chunk_cache(file_, id_, static_cast<std::size_t>(bytes), slots, drop_read_first));
  if (static_cast<double>(chunk_times) * static_cast<double>(segments_) <= largest_read)
    times_at_once_ = std::clamp<std::uint64_t>(chunk_times, times_at_once_, times_);
}

template <class Number>
void variable::read_stored(std::uint64_t first_time, std::uint64_t times, std::uint64_t first_segment,
                           std::uint64_t segments, std::vector<Number>& values) const {
  values.resize(times * segments);
  if (values.empty()) return;
  std::size_t start[] = {first_time, first_segment}, count[] = {times, segments};
  if (segments_first_) std::swap(start[0], start[1]), std::swap(count[0], count[1]);
  check(get(file_, id_, start, count, values.data()));
  if (segments_first_ && times > 1 && segments > 1) {
    std::vector<Number> turned(values.size());
    for (std::uint64_t s = 0; s < segments; ++s)
      for (std::uint64_t t = 0; t < times; ++t) turned[t * segments + s] = values[s * times + t];
    values.swap(turned);
  }
}

template <class Number>
std::vector<Number> variable::read(std::uint64_t first_time, std::uint64_t times, std::uint64_t first_segment,
                                   std::uint64_t segments) const {
  std::vector<Number> values;
  read_stored(first_time, times, first_segment, segments, values);
  mask<Number>(values);
  return values;
}

template <class Number>
void variable::mask(std::span<Number> values) const {
  constexpr Number none = std::numeric_limits<Number>::quiet_NaN();
  for (const double fill : fills_) // in the stored type
    for (Number& value : values) value = value == static_cast<Number>(fill) ? none : value;
  if (std::isfinite(least_) || std::isfinite(greatest_))
    for (Number& value : values) value = value < least_ || value > greatest_ ? none : value;
  for (Number& value : values) value = std::abs(value) <= std::numeric_limits<Number>::max() ? value : none;
}

std::vector<double> variable::values(std::uint64_t first_time, std::uint64_t times, std::uint64_t first_segment,
                                     std::uint64_t segments) const {
  std::vector<double> result;
  if (type_ == NC_FLOAT) {
    const auto values = read<float>(first_time, times, first_segment, segments);
    result.assign(values.begin(), values.end());
  } else {
    result = read<double>(first_time, times, first_segment, segments);
  }
  if (scale_ != 1 || offset_ != 0)
    for (double& value : result) value = value * scale_ + offset_;
  return result;
}

template <class Number>
std::vector<double> variable::bands_of(std::uint64_t first_time, std::uint64_t times) const {
  constexpr Number infinite = std::numeric_limits<Number>::infinity();
  std::vector<Number> least(segments_, infinite), greatest(segments_, -infinite);
  std::vector<double> sum(segments_), result(4 * segments_);
  std::vector<std::uint32_t> count(segments_);
  std::vector<Number> values;
  // What is kept for that many segments stays in the cache next to the processor during all times of one reading.
  constexpr std::uint64_t segments_at_once = 1024;
  for (std::uint64_t done = 0; done < times;) {
    const std::uint64_t now = std::min(times_at_once_, times - done);
    read_stored(first_time + done, now, 0, segments_, values);
    for (std::uint64_t first = 0; first < segments_; first += segments_at_once) {
      const std::uint64_t some = std::min(segments_at_once, segments_ - first);
      // Plain pointers: checked indices would keep the loop below from being vectorized.
      Number *const low = least.data() + first, *const high = greatest.data() + first;
      double* const sums = sum.data() + first;
      std::uint32_t* const counts = count.data() + first;
      for (std::uint64_t t = 0; t < now; ++t) {
        Number* const row = values.data() + t * segments_ + first;
        mask<Number>({row, some});
        for (std::uint64_t s = 0; s < some; ++s) {
          const bool is_there = row[s] == row[s];
          const Number known = is_there ? row[s] : Number{0};
          low[s] = row[s] < low[s] ? row[s] : low[s];
          high[s] = row[s] > high[s] ? row[s] : high[s];
          sums[s] += double{known};
          counts[s] += is_there;
        }
      }
    }
    done += now;
  }
  for (std::uint64_t s = 0; s < segments_; ++s) {
    const bool some = count[s] > 0;
    const double one = double{least[s]} * scale_ + offset_, other = double{greatest[s]} * scale_ + offset_;
    result[s] = some ? std::min(one, other) : nothing; // a negative scale swaps them
    result[segments_ + s] = some ? sum[s] / count[s] * scale_ + offset_ : nothing;
    result[2 * segments_ + s] = some ? std::max(one, other) : nothing;
    result[3 * segments_ + s] = count[s];
  }
  return result;
}

std::vector<double> variable::bands(std::uint64_t first_time, std::uint64_t times) const {
  return type_ == NC_FLOAT ? bands_of<float>(first_time, times) : bands_of<double>(first_time, times);
}

} // namespace vesk::nc
