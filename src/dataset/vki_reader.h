// Reads a data set from the bytes of a data file of any known version.
#pragma once

#include "dataset/binary_reader.h"
#include "dataset/dataset.h"

#include <cstdint>

namespace vesk {

// Facts about a data file besides its data set.
struct vki_facts {
  std::uint32_t version = 0;
  std::uint32_t project_files_offset = 0; // in the header from 0x00070005 on, otherwise 0
  std::uint32_t header_zero = 0;          // after it
  file_section last_section;              // the last one read at least in part; only a newer file may end within it
  std::uint64_t last_section_offset = 0;
};

// The range of versions at the start of a data file. Those between the current version and `highest` are newer files; a
// text or another kind of file starts with a larger number.
inline constexpr std::uint32_t lowest_file_version = 0x00010000;
inline constexpr std::uint32_t highest_file_version = 0x00ffffff;

// False if the first bytes of a file contain no version of a data file.
bool may_be_data_file(std::string_view first_bytes);

// Reads the file into the newly constructed `data`; `file_version` is set as in the file. The catalogue is not used.
//
// Throws data_file_exception if the file is not a data file, or if a file of a known version ends too early or has a
// count too large for the rest of the file; memory is never allocated for such a count. A newer file is read with the
// current layout until its bytes run out. A count too large for it is reduced to what fits, and the record in which it
// ends keeps its defaults for missing fields.
vki_facts read_vki(binary_reader& file, prevesk_dataset_data_type& data);

} // namespace vesk
