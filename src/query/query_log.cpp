#include "query/query_log.h"

#include "dataset/text_encoding.h"
#include "platform/side_file.h"

namespace vesk {

namespace {
std::filesystem::path trace_folder;
}

void set_query_trace_folder(const std::filesystem::path& folder) {
  trace_folder = folder;
}

void trace_query(const std::string& line) {
  append_to_side_file(trace_folder / "LOGINFO.TXT", printable_text(line) + '\n');
}

} // namespace vesk
