// Cancel while SQLite works.
#pragma once

#include "query/cancellation.h"

#include <sqlite3.h>

namespace vesk {

// A statement of the database fails when the query is cancelled; whoever sees it fail calls stop_if_cancelled. A view
// can be made to run endlessly without a row.
inline void let_cancel(sqlite3* database) {
  constexpr int between_asking = 100'000; // instructions of SQLite: some milliseconds
  sqlite3_progress_handler(
      database, between_asking, [](void*) { return int{is_query_cancelled()}; }, nullptr);
}

} // namespace vesk
