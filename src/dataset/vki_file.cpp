#include "dataset/vki_file.h"

#include "dataset/binary_writer.h"
#include "platform/safe_file.h"

namespace vesk {

void read_data_file(const std::filesystem::path& file, prevesk_dataset_data_type& data) {
  const file_descriptor opened = open_for_reading(file);
  if (size_of_regular_file(opened.get()) > 0) {
    binary_reader reader(opened.get(), file.native());
    return data.read(reader);
  }
  const std::string bytes = read_to_end(opened.get(), file.native());
  binary_reader reader(bytes, file.native());
  data.read(reader);
}

void save_data_file(const std::filesystem::path& file, const prevesk_dataset_data_type& data) {
  safe_file target(file);
  binary_writer writer(target.descriptor(), file.native());
  data.write(writer);
  target.commit();
}

} // namespace vesk
