#include "dataset/binary_writer.h"

#include <utility>

namespace vesk {

namespace {
constexpr std::size_t long_array = std::size_t{16} << 10;        // shorter pieces are collected in the buffer
constexpr std::uint64_t writeback_step = std::uint64_t{8} << 20; // so that the disk works while the rest is prepared
} // namespace

binary_writer::binary_writer(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {
  buffer_.reserve(buffer_size);
}

void binary_writer::overflow(std::string_view piece) {
  if (piece.size() >= long_array) return write_out(piece);
  write_out({});
  bytes_.append(piece);
}

// Writes the buffer, then the piece.
void binary_writer::write_out(std::string_view piece) {
  write_all(descriptor_, bytes_, piece, name_);
  written_ += bytes_.size() + piece.size();
  bytes_.clear();
  if (written_ - on_its_way_ < writeback_step) return;
  start_writeback(descriptor_, on_its_way_, written_ - on_its_way_);
  on_its_way_ = written_;
}

void binary_writer::finish() {
  if (descriptor_ >= 0) write_out({});
}

} // namespace vesk
