// Lines of assignments, as --set takes them, and numbers of rows. Each is refused in one sentence and changes nothing;
// or the path with numbers that it is recorded by leads to the same value.
#include "runs/run_table.h"
#include "sample_data_set.h"
#include "support/scratch.h"

namespace {

using namespace vesk;

void assign(const std::string& line) {
  static const prevesk_dataset_data_type before = sample_data_set();
  prevesk_dataset_data_type data = before;
  try {
    const value_assignment it = parse_assignment(data, line);
    const value_ref again = find_value(data, it.ref.path);
    fuzz::demand(again.row == it.ref.row && again.path == it.ref.path, "the recorded path leads elsewhere");
    apply(data, it, {line.size() % 2 == 0, [](const std::string&) { return point_list{{{year_2000, 0}, 1}}; }});
  } catch (const value_error& refusal) {
    fuzz::demand_sentence(refusal.what(), "");
    fuzz::demand(data == before, "a refused assignment has changed the data set");
  }
}

void read_row_numbers(const std::string& line) {
  try {
    fuzz::demand(!parse_row_numbers(line).empty(), "no rows");
  } catch (const value_error& refusal) {
    fuzz::demand_sentence(refusal.what(), "");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::string_view rest = fuzz::as_text(bytes, size);
  for (int lines = 0; lines < 20 && !rest.empty(); ++lines) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string line = std::string(rest.substr(0, end)).c_str(); // an argument has no null character
    assign(line);
    read_row_numbers(line);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return 0;
}
