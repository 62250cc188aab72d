#include "tools/data_file_check.h"

#include "dataset/file_version_text.h"
#include "dataset/vki_reader.h"
#include "platform/counted.h"

namespace vesk {

namespace {

constexpr std::uint32_t current = prevesk_dataset_data_type::current_file_version();
constexpr std::uint32_t first_with_offset = 0x00070005;
constexpr file_section header{};

void check_header(const vki_facts& facts, binary_reader& file) {
  if (facts.version < first_with_offset) return;
  file.enter(header);
  // The field has 32 bits; for an offset beyond 4 GiB it contains the lower ones.
  if (facts.project_files_offset != static_cast<std::uint32_t>(facts.last_section_offset))
    file.fail(4, "the offset of project_files is " + std::to_string(facts.project_files_offset) +
                     ", but the section begins at " + std::to_string(facts.last_section_offset) + ".");
  if (facts.header_zero != 0) file.fail(8, "expected 0, found " + std::to_string(facts.header_zero) + ".");
}

} // namespace

void refuse_newer_version(binary_reader& file, std::uint32_t version) {
  if (version <= current) return;
  file.enter(header);
  file.fail(0, "version " + file_version_text(version) + " is newer than " + file_version_text(current) +
                   ", the newest known version.");
}

void check_data_file(binary_reader& file) {
  prevesk_dataset_data_type data;
  const vki_facts facts = read_vki(file, data);
  refuse_newer_version(file, facts.version);
  if (file.left() > 0)
    file.fail(file.position(), "the data set ends here, but " + counted(file.left(), "byte") +
                                   (file.left() == 1 ? " follows." : " follow."));
  check_header(facts, file);
}

} // namespace vesk
