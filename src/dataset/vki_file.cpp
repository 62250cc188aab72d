#include "dataset/vki_file.h"

#include "dataset/binary_writer.h"
#include "dataset/vki_reader.h"
#include "platform/safe_file.h"

#include <new>

namespace vesk {

data_file::data_file(const std::filesystem::path& file)
    : opened_(open_for_reading(file)), identity_(identity_of(opened_.get())) {
  if (size_of_regular_file(opened_.get()) > 0)
    reader_.emplace(opened_.get(), file.native());
  else
    read_from(opened_.get(), file.native());
}

data_file::data_file(int descriptor, std::string name) {
  read_from(descriptor, std::move(name));
}

void data_file::read_from(int descriptor, std::string name) {
  bytes_ = read_to_end(descriptor, name, may_be_data_file); // the reader refuses other files
  reader_.emplace(std::string_view(bytes_), std::move(name));
}

reading_losses read_data_file(const std::filesystem::path& file, prevesk_dataset_data_type& data) {
  try {
    data_file opened(file);
    reading_losses losses = data.read(opened.reader());
    data.origin = losses.any() ? file_origin() : origin_of(file, opened.identity());
    return losses;
  } catch (const std::bad_alloc&) {
    throw file_exception(memory_failure(file.native()));
  }
}

file_origin save_data_file(const std::filesystem::path& file, const prevesk_dataset_data_type& data) {
  safe_file target(file);
  binary_writer writer(target.descriptor(), file.native());
  data.write(writer);
  target.commit();
  return origin_of(file, identity_of(file)); // by name: some file systems set the time when the file is closed
}

} // namespace vesk
