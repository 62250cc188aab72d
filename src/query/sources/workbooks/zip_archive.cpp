#include "query/sources/workbooks/zip_archive.h"

#include "query/sources/table_source.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <minizip/unzip.h>

namespace vesk {

// The archive's bytes, as a file for minizip.
struct zip_archive::reading {
  static constexpr std::size_t window_size = std::size_t{64} << 10;

  const byte_source& bytes;
  byte_window window{bytes, window_size};
  std::uint64_t position = 0;
  std::exception_ptr failure = {}; // no exception may pass through minizip

  static reading& of(void* stream) { return *static_cast<reading*>(stream); }

  static void* open(void* opaque, const void*, int) {
    of(opaque).position = 0;
    return opaque;
  }
  static uLong read(void*, void* stream, void* to, uLong size) {
    reading& r = of(stream);
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, r.bytes.size() - r.position));
    try {
      for (std::size_t taken = 0; taken < wanted;) {
        const std::string_view piece = r.window.at(r.position + taken, std::min(wanted - taken, window_size));
        std::memcpy(static_cast<char*>(to) + taken, piece.data(), piece.size());
        taken += piece.size();
      }
    } catch (...) {
      r.failure = std::current_exception();
      return 0;
    }
    r.position += wanted;
    return wanted;
  }
  static uLong write(void*, void*, const void*, uLong) { return 0; }
  static ZPOS64_T tell(void*, void* stream) { return of(stream).position; }
  static long seek(void*, void* stream, ZPOS64_T offset, int origin) {
    reading& r = of(stream);
    const std::uint64_t base = origin == ZLIB_FILEFUNC_SEEK_CUR   ? r.position
                               : origin == ZLIB_FILEFUNC_SEEK_END ? r.bytes.size()
                                                                  : 0;
    if (offset > r.bytes.size() - base) return -1;
    r.position = base + offset;
    return 0;
  }
  static int close(void*, void*) { return 0; }
  static int error(void*, void* stream) { return of(stream).failure != nullptr; }
};

zip_archive::zip_archive(const byte_source& bytes)
    : bytes_(bytes), reading_(std::make_unique<reading>(reading{bytes})) {
  zlib_filefunc64_def functions{};
  functions.zopen64_file = reading::open;
  functions.zread_file = reading::read;
  functions.zwrite_file = reading::write;
  functions.ztell64_file = reading::tell;
  functions.zseek64_file = reading::seek;
  functions.zclose_file = reading::close;
  functions.zerror_file = reading::error;
  functions.opaque = reading_.get();
  archive_ = unzOpen2_64(name().c_str(), &functions);
  if (!archive_) fail("the zip archive is damaged: its list of contents is missing.");
}

zip_archive::~zip_archive() {
  if (archive_) unzClose(archive_);
}

void zip_archive::fail(std::string cause) const {
  if (reading_->failure) std::rethrow_exception(reading_->failure);
  throw table_source_exception(name(), "", "", std::move(cause));
}

bool zip_archive::has(const std::string& part) const {
  constexpr int as_written = 1;
  const int found = unzLocateFile(archive_, part.c_str(), as_written);
  if (reading_->failure) std::rethrow_exception(reading_->failure);
  return found == UNZ_OK;
}

void zip_archive::read(const std::string& part, const std::function<void(std::string_view)>& take,
                       std::size_t most) const {
  if (!has(part)) fail("part " + part + " is missing.");
  if (unzOpenCurrentFile(archive_) != UNZ_OK) fail("part " + part + " is damaged or encrypted.");
  unz_file_info64 info{};
  unzGetCurrentFileInfo64(archive_, &info, nullptr, 0, nullptr, 0, nullptr, 0);
  const std::size_t packed = std::min<std::uint64_t>(info.compressed_size, bytes_.size());
  const std::size_t most_of_ratio = std::max(little, largest_ratio * packed);
  struct closing {
    void* archive;
    ~closing() { unzCloseCurrentFile(archive); }
  } close{archive_};
  std::array<char, std::size_t{64} << 10> piece;
  std::size_t size = 0;
  while (true) {
    const int got = unzReadCurrentFile(archive_, piece.data(), static_cast<unsigned>(piece.size()));
    if (got < 0) fail("part " + part + " is damaged.");
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
    unpacked_ += static_cast<std::size_t>(got);
    if (size > most_of_ratio)
      fail("part " + part + " unpacks to more than " + std::to_string(largest_ratio) + " times its size.");
    if (size > most) fail("part " + part + " unpacks to more than " + std::to_string(most) + " bytes.");
    if (unpacked_ > most_unpacked)
      fail("its parts unpack to more than " + std::to_string(most_unpacked) + " bytes together.");
    take({piece.data(), static_cast<std::size_t>(got)});
  }
  // The checksum is verified when the part is closed.
  close.archive = nullptr;
  if (unzCloseCurrentFile(archive_) == UNZ_CRCERROR) fail("part " + part + " is damaged: its checksum is wrong.");
}

} // namespace vesk
