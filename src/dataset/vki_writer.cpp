// Writes a data set as a data file with the current layout.
#include "dataset/vki_writer.h"

namespace vesk {

namespace {

// Counted in advance, so that the file can be written strictly forward, if necessary into a pipe.
std::uint64_t project_files_offset(const prevesk_dataset_data_type& data) {
  byte_counter counter;
  vki_writer writer(counter, 0);
  layout<prevesk_dataset_data_type>::fields(writer, data);
  return writer.project_files_offset();
}

} // namespace

void prevesk_dataset_data_type::write(binary_writer& file) const {
  vki_writer writer(file, project_files_offset(*this));
  layout<prevesk_dataset_data_type>::fields(writer, *this);
  file.finish();
}

} // namespace vesk
