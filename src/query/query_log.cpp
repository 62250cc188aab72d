#include "query/query_log.h"

#include <fstream>

namespace vesk {

void trace_query(const std::string& line) {
  std::ofstream("LOGINFO.TXT", std::ios::app) << line << '\n';
}

} // namespace vesk
