// SHA-256, to detect changes of inputs.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <nettle/sha2.h>
#include <string>
#include <string_view>

namespace vesk {

// Can also be written to as a data file.
class sha256 {
public:
  using digest_bytes = std::array<std::uint8_t, SHA256_DIGEST_SIZE>;

  sha256() { sha256_init(&state_); }
  void bytes(std::string_view piece) {
    sha256_update(&state_, piece.size(), reinterpret_cast<const std::uint8_t*>(piece.data()));
  }
  template <class T>
  void number(T value) {
    bytes({reinterpret_cast<const char*>(&value), sizeof value});
  }
  digest_bytes digest(); // also resets the state

private:
  sha256_ctx state_;
};

// In lower case; the first `digits` of them, 64 for all.
std::string hexadecimal(const sha256::digest_bytes& digest, std::size_t digits = 2 * SHA256_DIGEST_SIZE);

// Of a file's content, 64 hexadecimal digits; empty if it cannot be read or is not a regular file.
std::string sha256_of_file(const std::filesystem::path& file);

} // namespace vesk
