#include "query/sources/bytes/byte_source.h"

#include "platform/counted.h"
#include "platform/file_io.h"
#include "query/sources/table_source.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace vesk {

namespace {

namespace fs = std::filesystem;

template <class Work>
auto with_its_name(const std::string& name, const Work& work) {
  try {
    return work();
  } catch (const file_exception& error) {
    throw table_source_exception(name, error.what());
  }
}

class file_bytes : public byte_source {
public:
  file_bytes(fs::path file, file_descriptor descriptor)
      : byte_source(file.string(), size_of_regular_file(descriptor.get())), path_(std::move(file)),
        descriptor_(std::move(descriptor)) {}

  void let_go() override { descriptor_ = file_descriptor(); }

private:
  void fetch(std::uint64_t offset, char* to, std::size_t size) const override {
    with_its_name(name(), [&] {
      if (!descriptor_.is_open()) descriptor_ = open_for_reading(path_);
      for (std::size_t filled = 0; filled < size;) {
        const std::size_t got =
            read_at(descriptor_.get(), offset + filled, to + filled, size - filled, nullptr, 0, name());
        if (got == 0)
          throw table_source_exception(name(), "", "",
                                       "it became shorter while it was read: from " + std::to_string(this->size()) +
                                           " to " + std::to_string(offset + filled) + " bytes.");
        filled += got;
      }
    });
  }

  const fs::path path_;
  mutable file_descriptor descriptor_;
};

class memory_bytes : public byte_source {
public:
  memory_bytes(std::span<const std::byte> bytes, std::string name, bool in_pieces)
      : byte_source(std::move(name), bytes.size(), in_pieces ? nullptr : reinterpret_cast<const char*>(bytes.data())),
        bytes_(bytes) {}

private:
  void fetch(std::uint64_t offset, char* to, std::size_t size) const override {
    if (size > 0) std::memcpy(to, bytes_.data() + offset, size);
  }

  const std::span<const std::byte> bytes_;
};

} // namespace

std::string byte_source::text(std::uint64_t offset, std::size_t size) const {
  stop_if_cancelled();
  check(offset, size); // before memory is allocated
  std::string result(size, '\0');
  fetch(offset, result.data(), size);
  return result;
}

std::string byte_source::memo(std::uint64_t offset, std::size_t size) const {
  check(offset, size);
  check_memo(size);
  return text(offset, size);
}

void byte_source::check_memo(std::size_t size) const {
  if (size > longest_memo)
    throw table_source_exception(name_, "", "", "the memo is longer than " + std::to_string(longest_memo) + " bytes.");
}

void byte_source::fail_short(std::uint64_t offset, std::size_t size) const {
  throw table_source_exception(name_, "", "",
                               counted(size, "byte is", "bytes are") + " missing at byte " + std::to_string(offset) +
                                   ": the file has only " + std::to_string(size_) + " bytes.");
}

std::unique_ptr<byte_source> open_bytes(const fs::path& file) {
  return with_its_name(file.string(), [&] { return std::make_unique<file_bytes>(file, open_for_reading(file)); });
}

std::unique_ptr<byte_source> bytes_in_memory(std::span<const std::byte> bytes, std::string name, bool in_pieces) {
  return std::make_unique<memory_bytes>(bytes, std::move(name), in_pieces);
}

std::unique_ptr<byte_source> open_beside(const fs::path& table, std::initializer_list<const char*> extensions) {
  const fs::path folder = table.has_parent_path() ? table.parent_path() : ".";
  std::error_code ignored;
  std::vector<fs::path> found;
  for (const char* extension : extensions) {
    const std::string name = fs::path(table.filename()).replace_extension(extension).string();
    fs::directory_iterator entry(folder, ignored), end;
    for (; !ignored && entry != end; entry.increment(ignored))
      if (equal_ignoring_case(entry->path().filename().string(), name) && entry->is_regular_file(ignored))
        found.push_back(entry->path());
    if (!found.empty()) break;
  }
  if (found.empty()) return nullptr;
  // If several names differ only in case, prefers the one spelt like the table's.
  const auto same_name =
      std::find_if(found.begin(), found.end(), [&](const fs::path& file) { return file.stem() == table.stem(); });
  return open_bytes(same_name != found.end() ? *same_name : *std::min_element(found.begin(), found.end()));
}

std::string_view byte_window::at(std::uint64_t offset, std::size_t size) {
  source_->check(offset, size);
  if (source_->in_memory()) return {source_->in_memory() + offset, size};
  const bool goes_on = offset >= begin_ && offset - begin_ <= filled_;
  const std::size_t skipped = goes_on ? static_cast<std::size_t>(offset - begin_) : 0;
  if (goes_on && size <= filled_ - skipped) return {place_.get() + skipped, size};
  // The part already in memory moves to the front; the rest is read after it.
  const std::size_t kept = goes_on ? filled_ - skipped : 0;
  const std::size_t wanted = goes_on ? std::max(size, ahead_) : size;
  if (wanted > room_) {
    auto larger = std::make_unique_for_overwrite<char[]>(wanted);
    if (kept > 0) std::memcpy(larger.get(), place_.get() + skipped, kept);
    place_ = std::move(larger);
    room_ = wanted;
  } else if (kept > 0) {
    std::memmove(place_.get(), place_.get() + skipped, kept);
  }
  begin_ = offset;
  filled_ = 0; // in case reading throws
  const auto more = static_cast<std::size_t>(std::min<std::uint64_t>(wanted, source_->size() - offset)) - kept;
  source_->read(offset + kept, place_.get() + kept, more);
  filled_ = kept + more;
  return {place_.get(), size};
}

} // namespace vesk
