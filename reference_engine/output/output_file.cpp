#include "output/output_file.h"

#include "core/errors.h"
#include "core/text.h"

#include <unistd.h>

namespace reference_engine {

OutputFile::OutputFile(std::filesystem::path final_name)
    : final_(std::move(final_name)), temporary_(text(final_.string(), ".part-", getpid())) {}

OutputFile::~OutputFile() {
  std::error_code ignored;
  if (!temporary_.empty()) std::filesystem::remove(temporary_, ignored);
}

void OutputFile::publish() {
  std::error_code error;
  std::filesystem::rename(temporary_, final_, error);
  if (error) throw RunError(text(final_.string(), ": can't be written: ", error.message(), "."));
  temporary_.clear();
}

} // namespace reference_engine
