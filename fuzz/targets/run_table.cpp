// A table of runs is refused in one sentence; or its fields are the same after writing and reading it, and each row
// names a folder and gives values, or is refused.
#include "runs/run_table.h"
#include "sample_data_set.h"
#include "support/scratch.h"

#include <algorithm>

namespace {

using namespace vesk;

const fuzz::scratch_folder& folder() {
  static const fuzz::scratch_folder one;
  return one;
}

std::string text_of(const csv_table& table) {
  std::string text = "\xef\xbb\xbf"; // else the first field could begin with such a mark
  const auto add = [&](const std::vector<std::string>& fields) {
    for (std::size_t i = 0; i < fields.size(); ++i) text += (i == 0 ? "" : ",") + csv_field(fields[i]);
    text += "\n";
  };
  add(table.header);
  std::ranges::for_each(table.rows, add);
  return text;
}

void read_back(const csv_table& table) {
  const csv_table again = read_csv_table(folder().write("again.csv", text_of(table)));
  fuzz::demand(again.header == table.header && again.rows == table.rows, "what is written is not read back equal");
}

void use_rows(const run_table& table, const prevesk_dataset_data_type& data) {
  constexpr std::size_t most = 50;
  for (std::size_t row = 0; row < std::min(table.size(), most); ++row) {
    fuzz::demand(table.folder(row).find_first_of("/\\") == std::string::npos, "a folder leads elsewhere");
    try {
      table.assignments(data, row);
    } catch (const value_error& refusal) {
      fuzz::demand_sentence(refusal.what(), (folder().path / "rows.csv").native());
    }
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const prevesk_dataset_data_type data = sample_data_set();
  const std::string file = folder().write("rows.csv", fuzz::as_text(bytes, size));
  try {
    csv_table table = read_csv_table(file);
    for (const auto& row : table.rows) fuzz::demand(row.size() == table.header.size(), "a row of another length");
    read_back(table);
    use_rows(run_table(std::move(table), nullptr, data), data);
  } catch (const value_error& refusal) {
    fuzz::demand_sentence(refusal.what(), file);
  }
  return 0;
}
