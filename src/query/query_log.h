// The trace of stored queries, for those who look for a fault in one.
#pragma once

#include <string>

namespace vesk {

// Adds a line to "LOGINFO.TXT" in the current folder. A failure is silent.
void trace_query(const std::string& line);

} // namespace vesk
