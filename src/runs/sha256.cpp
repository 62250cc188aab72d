#include "runs/sha256.h"

#include "platform/file_io.h"

#include <vector>

namespace vesk {

sha256::digest_bytes sha256::digest() {
  digest_bytes result;
  sha256_digest(&state_, result.size(), result.data());
  return result;
}

std::string hexadecimal(const sha256::digest_bytes& digest, std::size_t digits) {
  constexpr std::string_view values = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < digits; ++i) text += values[(digest[i / 2] >> (i % 2 == 0 ? 4 : 0)) & 15];
  return text;
}

std::string sha256_of_file(const std::filesystem::path& file) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(file, ignored)) return {}; // opening a pipe would block
  try {
    const file_descriptor opened = open_for_reading(file);
    std::vector<char> piece(std::size_t{256} << 10);
    sha256 hash;
    for (std::uint64_t offset = 0;;) {
      const std::size_t size = read_at(opened.get(), offset, piece.data(), piece.size(), nullptr, 0, file.native());
      if (size == 0) return hexadecimal(hash.digest());
      hash.bytes({piece.data(), size});
      offset += size;
    }
  } catch (const file_exception&) {
    return {};
  }
}

} // namespace vesk
