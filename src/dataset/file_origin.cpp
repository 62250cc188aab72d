#include "dataset/file_origin.h"

namespace vesk {

file_origin origin_of(const std::filesystem::path& file, const std::optional<file_identity>& then) {
  if (!then) return {};
  std::error_code error; // set if the current folder no longer exists
  const std::filesystem::path whole = std::filesystem::absolute(file, error);
  return {error ? file : whole.lexically_normal(), *then};
}

} // namespace vesk
