#include "dataset/binary_reader.h"

#include "platform/counted.h"
#include "platform/file_io.h"

#include <algorithm>

namespace vesk {

namespace {
constexpr std::size_t buffer_size = std::size_t{256} << 10;
constexpr std::size_t least_ahead = std::size_t{4} << 10; // after an array, usually the head of the next record
constexpr std::size_t head_ahead = 256;                   // the same if another thread reads the array
constexpr std::size_t long_array = std::size_t{16} << 10; // above this a system call is cheaper than a second copy
constexpr std::size_t large_file = std::size_t{16} << 20; // above this a second thread saves time
static_assert(binary_reader::longest_piece <= buffer_size);
} // namespace

data_file_exception::data_file_exception(std::string_view file, file_section section, std::uint64_t offset,
                                         std::string cause)
    : std::runtime_error(std::string(file) + ", section " + std::to_string(section.number) + " (" +
                         std::string(section.name) + "), byte " + std::to_string(offset) + ": " + cause),
      section_(section), offset_(offset), cause_(std::move(cause)) {}

binary_reader::binary_reader(int descriptor, std::string name)
    : name_(std::move(name)), descriptor_(descriptor), size_(size_of_regular_file(descriptor)), beyond_(size_),
      buffer_(new char[buffer_size]), next_(buffer_.get()), end_(buffer_.get()), ahead_(least_ahead) {
  if (size_ >= large_file) long_arrays_.emplace(descriptor, name_);
}

binary_reader::binary_reader(std::string_view bytes, std::string name)
    : name_(std::move(name)), size_(bytes.size()), next_(bytes.data()), end_(bytes.data() + bytes.size()), ahead_(0) {}

void binary_reader::fail(std::uint64_t offset, std::string cause) const {
  throw data_file_exception(name_, section_, offset, std::move(cause));
}

void binary_reader::fail_short(std::uint64_t offset, const std::string& wanted) const {
  const bool counts_bytes = wanted.find(" byte") != wanted.npos;
  fail(offset, wanted + ", but only " + (counts_bytes ? std::to_string(left()) : counted(left(), "byte")) +
                   (left() == 1 ? " is left." : " are left."));
}

// One read at the current end of the bytes in memory; bytes after the first `size` go into the buffer. Returns how many
// of the first `size` bytes were read.
std::size_t binary_reader::read(void* to, std::size_t size, std::size_t ahead) {
  const std::size_t got = read_at(descriptor_, size_ - beyond_, to, size, buffer_.get(), ahead, name_);
  if (got == 0) throw file_exception("Cannot read " + name_ + ": it became shorter while it was read.");
  const std::size_t wanted = std::min(got, size);
  next_ = buffer_.get();
  end_ = buffer_.get() + std::min<std::uint64_t>(got - wanted, beyond_ - wanted); // ignores growth of the file
  beyond_ -= wanted + static_cast<std::size_t>(end_ - next_);
  return wanted;
}

void binary_reader::fetch(std::size_t size, const char* what) {
  if (left() < size) fail_short(position(), counted(size, "byte") + " of " + what);
  std::size_t kept = at_hand();
  std::memmove(buffer_.get(), next_, kept);
  ahead_ = std::clamp(ahead_ * 2, size, buffer_size);
  while (kept < size) {
    const std::size_t room = std::min<std::uint64_t>(ahead_ - kept, beyond_);
    kept += read(buffer_.get() + kept, room, 0);
  }
  next_ = buffer_.get();
  end_ = buffer_.get() + kept;
}

void binary_reader::copy(void* to, std::size_t size) {
  char* place = static_cast<char*>(to);
  while (size > 0) {
    const std::size_t ready = std::min(size, at_hand());
    if (ready > 0) std::memcpy(place, next_, ready);
    next_ += ready;
    place += ready;
    size -= ready;
    if (size >= long_array) {
      ahead_ = least_ahead;
      const std::size_t got = read(place, size, least_ahead);
      place += got;
      size -= got;
    } else if (size > 0) {
      fetch(1, "content");
    }
  }
}

void binary_reader::copy_array(void* to, std::size_t size) {
  const std::size_t ready = at_hand();
  if (!long_arrays_ || size < ready + long_array) return copy(to, size);
  copy(to, ready);
  long_arrays_->read(static_cast<char*>(to) + ready, size - ready, size_ - beyond_);
  beyond_ -= size - ready;
  ahead_ = head_ahead;
}

void binary_reader::finish() {
  if (long_arrays_) long_arrays_->finish();
}

void binary_reader::drop() {
  if (long_arrays_) long_arrays_->drop();
}

void binary_reader::skip(std::uint64_t size) {
  const std::uint64_t ready = std::min<std::uint64_t>(size, at_hand());
  next_ += ready;
  beyond_ -= size - ready;
  if (ready < size) end_ = next_;
}

} // namespace vesk
