#include "query/query_log.h"

#include "dataset/text_encoding.h"
#include "platform/side_file.h"

namespace vesk {

void trace_query(const std::string& line) {
  append_to_side_file("LOGINFO.TXT", printable_text(line) + '\n');
}

} // namespace vesk
