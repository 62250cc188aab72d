#include "query/sources/zip_archive.h"

#include "query/sources/table_source.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <minizip/unzip.h>

namespace vesk {

// The archive's bytes as the file that minizip asks for.
struct zip_archive::memory {
  std::span<const std::byte> bytes;
  std::size_t position = 0;

  static memory& of(void* stream) { return *static_cast<memory*>(stream); }

  static void* open(void* opaque, const void*, int) {
    of(opaque).position = 0;
    return opaque;
  }
  static uLong read(void*, void* stream, void* to, uLong size) {
    memory& m = of(stream);
    const std::size_t taken = std::min<std::size_t>(size, m.bytes.size() - m.position);
    if (taken > 0) std::memcpy(to, m.bytes.data() + m.position, taken);
    m.position += taken;
    return taken;
  }
  static uLong write(void*, void*, const void*, uLong) { return 0; }
  static ZPOS64_T tell(void*, void* stream) { return of(stream).position; }
  static long seek(void*, void* stream, ZPOS64_T offset, int origin) {
    memory& m = of(stream);
    const std::size_t base = origin == ZLIB_FILEFUNC_SEEK_CUR   ? m.position
                             : origin == ZLIB_FILEFUNC_SEEK_END ? m.bytes.size()
                                                                : 0;
    if (offset > m.bytes.size() - base) return -1;
    m.position = base + offset;
    return 0;
  }
  static int close(void*, void*) { return 0; }
  static int error(void*, void*) { return 0; }
};

zip_archive::zip_archive(std::span<const std::byte> bytes, std::string name)
    : name_(std::move(name)), memory_(std::make_unique<memory>(memory{bytes})) {
  zlib_filefunc64_def functions{};
  functions.zopen64_file = memory::open;
  functions.zread_file = memory::read;
  functions.zwrite_file = memory::write;
  functions.ztell64_file = memory::tell;
  functions.zseek64_file = memory::seek;
  functions.zclose_file = memory::close;
  functions.zerror_file = memory::error;
  functions.opaque = memory_.get();
  archive_ = unzOpen2_64(name_.c_str(), &functions);
  if (!archive_) fail("the zip archive is damaged: its list of contents is missing.");
}

zip_archive::~zip_archive() {
  if (archive_) unzClose(archive_);
}

void zip_archive::fail(std::string cause) const {
  throw table_source_exception(name_, "", "", std::move(cause));
}

bool zip_archive::has(const std::string& part) const {
  constexpr int as_written = 1;
  return unzLocateFile(archive_, part.c_str(), as_written) == UNZ_OK;
}

void zip_archive::read(const std::string& part, const std::function<bool(std::string_view)>& take) const {
  if (!has(part)) fail("part " + part + " of it is missing.");
  if (unzOpenCurrentFile(archive_) != UNZ_OK) fail("part " + part + " of it is damaged or has a password.");
  struct closing {
    void* archive;
    ~closing() { unzCloseCurrentFile(archive); }
  } close{archive_};
  std::array<char, std::size_t{64} << 10> piece;
  std::size_t size = 0;
  while (true) {
    const int got = unzReadCurrentFile(archive_, piece.data(), static_cast<unsigned>(piece.size()));
    if (got < 0) fail("part " + part + " of it is damaged.");
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
    if (size > largest_part)
      fail("part " + part + " of it unpacks to more than " + std::to_string(largest_part) + " bytes.");
    if (!take({piece.data(), static_cast<std::size_t>(got)})) return;
  }
  // The checksum is compared when the part is closed.
  close.archive = nullptr;
  if (unzCloseCurrentFile(archive_) == UNZ_CRCERROR) fail("part " + part + " of it is damaged: its checksum is wrong.");
}

} // namespace vesk
