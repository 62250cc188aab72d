#include "query/series_file.h"

#include "query/import_query.h"
#include "query/query_exceptions.h"

namespace vesk {

point_list points_of_file(const std::string& file) {
  import_query query;
  query.stored.restrict_to_run_period = false;
  query.set_file(file);
  if (query.tables.size() > 1)
    throw query_validation_exception(file + ": expected one table, found " + std::to_string(query.tables.size()) + ".");
  if (!query.tables.empty()) query.set_table(query.tables.front());
  if (query.field_names.size() != 2)
    throw query_validation_exception(file + ": expected two columns, date and time and value, found " +
                                     std::to_string(query.field_names.size()) + ".");
  query.stored.date_time_field = query.field_names[0];
  query.stored.value_field = query.field_names[1];
  point_list points;
  query.execute({}, points);
  if (points.empty()) throw query_validation_exception(file + ": no row has a date and a value.");
  return points;
}

} // namespace vesk
