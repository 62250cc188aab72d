// Reads a data set from the bytes of a data file of any known version.
#pragma once

#include "dataset/binary_reader.h"
#include "dataset/dataset.h"

#include <cstdint>

namespace vesk {

// What a data file says beside its data set.
struct vki_facts {
  std::uint32_t version = 0;
  std::uint32_t project_files_offset = 0; // in the header from 0x00070005 on, otherwise 0
  std::uint32_t header_zero = 0;          // after it
  file_section last_section; // the last one of which something was read; whole unless a newer file ended in it
  std::uint64_t last_section_offset = 0;
};

// The versions that begin a data file. What lies between the current version and `highest` is a newer file; a text
// or a file of some other kind begins with a number beyond.
inline constexpr std::uint32_t lowest_file_version = 0x00010000;
inline constexpr std::uint32_t highest_file_version = 0x00ffffff;

// False once the first bytes of a file show by their version that it is not a data file.
bool may_be_data_file(std::string_view first_bytes);

// Reads the file over the freshly constructed `data`, `file_version` as it is in the file. The catalogue is not asked.
//
// Throws data_file_exception when the file is not a data file, and when a file of a known version ends before its time
// or holds a count that the rest of it has no room for; memory is never taken for such a count. A newer file is read
// with the current layout until its bytes run out, and a count too large for it means what the rest can hold; the
// record that it ends in keeps its defaults for what has not come.
vki_facts read_vki(binary_reader& file, prevesk_dataset_data_type& data);

} // namespace vesk
