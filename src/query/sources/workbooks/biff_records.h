// The records of an Excel workbook before 2007 (BIFF), and the texts in them.
#pragma once

#include "query/sources/bytes/byte_source.h"
#include "query/sources/bytes/byte_view.h"

#include <string>
#include <string_view>

namespace vesk {

class code_page;

enum biff_id : std::uint16_t {
  biff_formula = 0x0006,
  biff_eof = 0x000a,
  biff_datemode = 0x0022,
  biff_filepass = 0x002f,
  biff_continue = 0x003c,
  biff_codepage = 0x0042,
  biff_boundsheet = 0x0085,
  biff_mulrk = 0x00bd,
  biff_rstring = 0x00d6,
  biff_xf = 0x00e0,
  biff_sst = 0x00fc,
  biff_labelsst = 0x00fd,
  biff_number = 0x0203,
  biff_label = 0x0204,
  biff_boolerr = 0x0205,
  biff_string = 0x0207,
  biff_rk = 0x027e,
  biff_format = 0x041e,
  biff_bof = 0x0809
};

// Reads one record after the other. A record that is cut off by the end of the stream throws table_source_exception.
class biff_records {
public:
  // `stream` must outlive this object.
  explicit biff_records(const byte_source& stream, std::uint64_t offset = 0) : window_(stream), next_(offset) {}

  // False at the end of the stream.
  bool next();

  // Of the current record; the data are valid until `next`.
  std::uint16_t id() const { return id_; }
  const byte_view& data() const { return data_; }

  // Whether the next record is a CONTINUE record.
  bool is_continued() const { return is_continued_; }

private:
  byte_window window_;
  std::uint64_t next_;
  std::uint16_t id_ = 0;
  bool is_continued_ = false;
  byte_view data_;
};

// Reads texts from a record and, when necessary, its CONTINUE records. In BIFF8 a text has flags: 1 for two bytes per
// character, 4 for far-eastern and 8 for rich text; in a CONTINUE record the flags are repeated. Reading beyond the end
// gives zeros and empty texts, and from then on `ended` is true.
class biff_texts {
public:
  // Starts at byte `skipped` of the current record. `record`, which this moves, must outlive this object.
  biff_texts(biff_records& record, std::size_t skipped, bool is_biff8, const code_page& texts);

  std::uint32_t number(std::size_t bytes); // of 1, 2 or 4 bytes
  void skip(std::size_t bytes);

  // The next text; its length comes first, in `length_bytes` bytes.
  std::string text(std::size_t length_bytes);

  bool ended() const { return ended_; }

private:
  std::string_view take(std::size_t most);

  biff_records& record_;
  std::string_view left_; // of the current record
  bool is_biff8_, ended_ = false;
  const code_page* code_page_;
};

} // namespace vesk
