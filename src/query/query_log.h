// The trace of stored queries, for those who look for a fault in one.
#pragma once

#include <filesystem>
#include <string>

namespace vesk {

// Adds a line to "LOGINFO.TXT" in the trace's folder. A failure is silent.
void trace_query(const std::string& line);

// The folder of the trace: the current one at first. Main thread.
void set_query_trace_folder(const std::filesystem::path& folder);

} // namespace vesk
