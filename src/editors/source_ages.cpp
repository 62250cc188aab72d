#include "editors/source_ages.h"

#include "dataset/text_encoding.h"
#include "platform/file_identity.h"
#include "query/source_file.h"

#include <algorithm>

namespace vesk {

namespace {

constexpr std::int64_t second = 1'000'000'000; // nanoseconds

// Greatest difference between a data file and its tables when unpacked or copied together.
constexpr std::int64_t together = 2 * second;

std::int64_t time_of(const file_identity& identity) {
  return identity.changed_seconds * second + identity.changed_nanoseconds;
}

// SQLite may write changes to a log, NAME-wal, and to the database only much later. An empty log comes with reading.
std::optional<std::int64_t> last_written(std::filesystem::path file) {
  const auto database = identity_of(file);
  if (!database) return std::nullopt;
  const auto log = identity_of(file += "-wal");
  return log && log->size > 0 ? std::max(time_of(*database), time_of(*log)) : time_of(*database);
}

} // namespace

std::optional<std::int64_t> source_ages::written(const std::string& file, const std::filesystem::path& folder) {
  const auto [place, is_new] = written_.try_emplace(file);
  if (is_new)
    if (const auto found = find_source_file(file, folder); !found.empty()) place->second = last_written(found);
  return place->second;
}

std::string source_ages::sentence(const stored_series& series, const file_origin& origin) {
  const std::string& file = series.query->file_name;
  if (file.empty() || series.query->deferred) return {};
  std::int64_t filled = series.filled.nanoseconds;
  if (filled == 0) {
    if (!origin.is_set()) return {};
    filled = time_of(origin.identity) + together;
  }
  const auto source = written(file, origin.file.parent_path());
  return source && *source > filled ? shown_text(file) + " has changed since this series was filled from it."
                                    : std::string();
}

} // namespace vesk
