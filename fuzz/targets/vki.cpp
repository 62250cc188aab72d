// An accepted data file is written and read back equal, by bytes and as JSON, from memory and from a file; a damaged
// one is refused in one sentence. Then the data set goes through what opening it does.
#include "dataset/binary_writer.h"
#include "dataset/vki_file.h"
#include "dataset/vki_reader.h"
#include "memory_catalogue_store.h"
#include "support/scratch.h"
#include "tools/clockless_data_set.h"
#include "tools/data_file_check.h"
#include "tools/dataset_json.h"

namespace {

using namespace vesk;
using fuzz::demand;

std::string written(const prevesk_dataset_data_type& data) {
  std::string bytes;
  binary_writer writer(bytes);
  data.write(writer);
  return bytes;
}

prevesk_dataset_data_type read_back(const std::string& bytes) {
  prevesk_dataset_data_type data = clockless_data_set();
  binary_reader reader(bytes, "written");
  read_vki(reader, data);
  demand(reader.left() == 0, "bytes are left behind what was written");
  return data;
}

void check_copies(prevesk_dataset_data_type& data, const std::string& file, const vki_facts& facts) {
  std::string json;
  binary_writer output(json);
  write_json(output, data, facts.last_section.number);
  data.file_version = data.current_file_version();
  const std::string bytes = written(data);
  demand(written(read_back(bytes)) == bytes, "what is written is not read back equal");
  if (facts.version <= data.current_file_version())
    demand(written(read_json(json)) == bytes, "the JSON form is not read back equal");

  prevesk_dataset_data_type from_file = clockless_data_set();
  data_file opened(file);
  read_vki(opened.reader(), from_file);
  from_file.file_version = data.file_version;
  demand(written(from_file) == bytes, "the file reads differently from its bytes");

  binary_reader whole(bytes, "written");
  check_data_file(whole);
}

// As the program opens it.
void check_opening(std::string_view bytes) {
  static const auto catalogue = [] {
    auto store = small_catalogue();
    return read_catalogue(store);
  }();
  prevesk_dataset_data_type data(catalogue);
  binary_reader reader(bytes, "input");
  data.read(reader);
  if (catalogue->find_model(data.model_type))
    for (const segment_data_type& segment : data.segments)
      demand(segment.parameters.size() == data.parameters.size() && segment.systems.size() == data.systems.size(),
             "a segment's lists do not fit the model");
  data.find_boundaries();
  data.check_limits();
  written(data);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const fuzz::scratch_folder folder;
  const std::vector<char> place(bytes, bytes + size);
  const std::string_view text(place.data(), size);
  prevesk_dataset_data_type data = clockless_data_set();
  binary_reader reader(text, "input");
  try {
    const vki_facts facts = read_vki(reader, data);
    check_copies(data, folder.write("river.vki", text), facts);
    check_opening(text);
  } catch (const data_file_exception& refusal) {
    fuzz::demand_sentence(refusal.what(), "input, section ");
  }
  return 0;
}
