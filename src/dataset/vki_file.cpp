#include "dataset/vki_file.h"

#include "dataset/binary_writer.h"
#include "platform/safe_file.h"

#include <new>

namespace vesk {

data_file::data_file(const std::filesystem::path& file) : opened_(open_for_reading(file)) {
  if (size_of_regular_file(opened_.get()) > 0)
    reader_.emplace(opened_.get(), file.native());
  else
    read_from(opened_.get(), file.native());
}

data_file::data_file(int descriptor, std::string name) {
  read_from(descriptor, std::move(name));
}

void data_file::read_from(int descriptor, std::string name) {
  bytes_ = read_to_end(descriptor, name);
  reader_.emplace(std::string_view(bytes_), std::move(name));
}

void read_data_file(const std::filesystem::path& file, prevesk_dataset_data_type& data) {
  try {
    data.read(data_file(file).reader());
  } catch (const std::bad_alloc&) {
    throw file_exception(memory_failure(file.native()));
  }
}

void save_data_file(const std::filesystem::path& file, const prevesk_dataset_data_type& data) {
  safe_file target(file);
  binary_writer writer(target.descriptor(), file.native());
  data.write(writer);
  target.commit();
}

} // namespace vesk
