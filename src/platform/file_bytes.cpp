#include "platform/file_bytes.h"

#include "platform/file_io.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/mman.h>

namespace vesk {

file_bytes::file_bytes(const std::filesystem::path& file) {
  const file_descriptor descriptor = open_for_reading(file);
  size_ = size_of_regular_file(descriptor.get());
  if (size_ > copied_size) {
    void* const place = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, descriptor.get(), 0);
    if (place == MAP_FAILED) throw file_exception(file_failure("read", file.native(), errno));
    data_ = static_cast<const std::byte*>(place);
    return;
  }
  if (size_ == 0) { // empty, or a pipe
    const std::string content = read_to_end(descriptor.get(), file.native());
    copy_ = std::make_unique_for_overwrite<std::byte[]>(content.size());
    std::copy_n(reinterpret_cast<const std::byte*>(content.data()), content.size(), copy_.get());
    size_ = content.size();
  } else {
    copy_ = std::make_unique_for_overwrite<std::byte[]>(size_);
    std::size_t filled = 0, got = 1;
    for (; filled < size_ && got > 0; filled += got)
      got = read_at(descriptor.get(), filled, copy_.get() + filled, size_ - filled, nullptr, 0, file.native());
    size_ = filled;
  }
  data_ = copy_.get();
}

file_bytes::~file_bytes() {
  if (!copy_ && data_) munmap(const_cast<std::byte*>(data_), size_);
}

} // namespace vesk
