// An accepted data set is the same after writing and reading it, as a data file and as JSON.
#include "dataset/vki_reader.h"
#include "support/scratch.h"
#include "tools/clockless_data_set.h"
#include "tools/dataset_json.h"

namespace {

using namespace vesk;

std::string data_file_of(const prevesk_dataset_data_type& data) {
  std::string bytes;
  binary_writer writer(bytes);
  data.write(writer);
  return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  prevesk_dataset_data_type data;
  try {
    data = read_json(fuzz::as_text(bytes, size));
  } catch (const json_exception& refusal) {
    fuzz::demand_sentence(refusal.what(), "");
    return 0;
  }
  const std::string file = data_file_of(data);
  prevesk_dataset_data_type again = clockless_data_set();
  binary_reader reader(file, "written");
  read_vki(reader, again);
  fuzz::demand(data_file_of(again) == file, "what is written is not read back equal");
  std::string json;
  binary_writer output(json);
  write_json(output, again);
  fuzz::demand(data_file_of(read_json(json)) == file, "the JSON form is not read back equal");
  return 0;
}
