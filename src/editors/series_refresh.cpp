#include "editors/series_refresh.h"

#include "dataset/series.h"

#include <algorithm>
#include <utility>

namespace vesk {

filling refreshed(import_query_descriptor query, const std::filesystem::path& folder,
                  const prevesk_dataset_data_type& data, const point_list& present) {
  const bool keeps_others = !std::exchange(query.replace_existing, true);
  filling made;
  made.report = import_query(std::move(query), folder).execute(data, made.points);
  sort_by_moment(made.points);
  if (!keeps_others) return made;
  const point_list found = made.points;
  for (const auto& point : present)
    if (!std::binary_search(found.begin(), found.end(), point)) made.points.push_back(point);
  sort_by_moment(made.points);
  return made;
}

} // namespace vesk
