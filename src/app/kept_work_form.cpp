#include "app/kept_work_form.h"

#include "app/file_names.h"

namespace vesk {

std::array<std::string, TKeptWorkForm::columns.size()> TKeptWorkForm::row(std::size_t file) const {
  const kept_file& one = files[file];
  const bool is_unsaved = one.kind == kept_kind::unsaved_work;
  return {one.original.empty() ? "(unnamed)" : leaf_of(one.original),
          is_unsaved ? "Unsaved changes" : "Earlier version", time_in_words(one.time),
          split_file_name(one.original).folder};
}

} // namespace vesk
