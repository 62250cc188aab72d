#include "query/sources/workbooks/xlsx_source.h"

#include "query/sources/bytes/byte_source.h"
#include "query/sources/text/date_text.h"
#include "query/sources/text/number_text.h"
#include "query/sources/workbooks/sheet_source.h"
#include "query/sources/workbooks/xml_reader.h"

#include <charconv>
#include <map>

namespace vesk {

namespace {

// The parts kept in memory as a whole, in bytes: lists of sheets and relations, and the styles.
constexpr std::size_t longest_list = std::size_t{4} << 20, longest_styles = std::size_t{64} << 20;

// A reference from a part of the archive.
struct relation {
  std::string kind; // the last word of its type: "worksheet"
  std::string part;
};

// The part that `target` refers to, in the part `from`.
std::string resolved(const std::string& from, std::string_view target) {
  if (target.starts_with('/')) return std::string(target.substr(1));
  std::string folder = from.substr(0, from.rfind('/') + 1); // npos + 1 is 0
  while (target.starts_with("../")) {
    target.remove_prefix(3);
    folder.resize(folder.empty() ? 0 : folder.rfind('/', folder.size() - 2) + 1);
  }
  if (target.starts_with("./")) target.remove_prefix(2);
  return folder + std::string(target);
}

class relations_reader : public xml_reader {
public:
  // The relations of a part by their ids; those of the whole archive if the name is empty.
  static std::map<std::string, relation, std::less<>> of(const zip_archive& archive, const std::string& part) {
    const std::size_t name = part.rfind('/') + 1;
    const std::string list = part.substr(0, name) + "_rels/" + part.substr(name) + ".rels";
    relations_reader reader(part);
    if (archive.has(list)) reader.read(archive, list, longest_list);
    return std::move(reader.relations_);
  }

protected:
  void start(std::string_view name, const xml_attributes& attributes) override {
    if (name != "Relationship") return;
    const std::string_view type = attributes["Type"];
    relations_[std::string(attributes["Id"])] = {std::string(type.substr(type.rfind('/') + 1)),
                                                 resolved(part_, attributes["Target"])};
  }

private:
  explicit relations_reader(const std::string& part) : part_(part) {}
  const std::string& part_;
  std::map<std::string, relation, std::less<>> relations_;
};

class workbook_reader : public xml_reader {
public:
  struct sheet {
    std::string name, relation;
  };
  std::vector<sheet> sheets;
  bool from_1904 = false;

protected:
  void start(std::string_view name, const xml_attributes& attributes) override {
    if (name == "workbookPr")
      from_1904 = attributes["date1904"] == "1" || attributes["date1904"] == "true";
    else if (name == "sheet")
      sheets.push_back({std::string(attributes["name"]), std::string(attributes["id"])});
  }
};

class styles_reader : public xml_reader {
public:
  std::vector<bool> styles; // by number: true for dates

protected:
  void start(std::string_view name, const xml_attributes& attributes) override {
    if (name == "numFmt") {
      formats_[attributes.number("numFmtId", 0)] = is_date_format(attributes["formatCode"]);
    } else if (name == "cellXfs") {
      in_cell_styles_ = true;
    } else if (name == "xf" && in_cell_styles_) {
      const std::uint32_t format = attributes.number("numFmtId", 0);
      const auto told = formats_.find(format);
      styles.push_back(told == formats_.end() ? is_date_format(unsigned{format}) : told->second);
    }
  }
  void end(std::string_view name) override {
    if (name == "cellXfs") in_cell_styles_ = false;
  }

private:
  std::map<std::uint32_t, bool> formats_;
  bool in_cell_styles_ = false;
};

class xlsx_source : public sheet_source {
public:
  explicit xlsx_source(std::unique_ptr<byte_source> bytes)
      : sheet_source(bytes->name()), bytes_(std::move(bytes)), archive_(*bytes_) {
    std::string workbook = "xl/workbook.xml";
    for (const auto& [id, to] : relations_reader::of(archive_, ""))
      if (to.kind == "officeDocument") workbook = to.part;
    workbook_reader content;
    content.read(archive_, workbook, longest_list);
    dates_.from_1904 = content.from_1904;

    const auto relations = relations_reader::of(archive_, workbook);
    for (const auto& sheet : content.sheets) {
      const auto to = relations.find(sheet.relation);
      if (to == relations.end() || to->second.kind != "worksheet") continue;
      add_sheet(sheet.name);
      parts_.push_back(to->second.part);
    }
    refuse_without_sheets();
    for (const auto& [id, to] : relations) {
      if (to.kind == "styles") styles_part_ = to.part;
      if (to.kind == "sharedStrings") shared_texts_part_ = to.part;
    }
  }

  void let_go() override { bytes_->let_go(); }

protected:
  void read_sheet(std::size_t table, cell_table& cells) override;

private:
  friend class xlsx_texts_reader;
  friend class xlsx_sheet_reader;

  const std::unique_ptr<byte_source> bytes_;
  zip_archive archive_;
  workbook_dates dates_;
  std::vector<std::string> parts_; // of the tables
  std::string styles_part_, shared_texts_part_;
  bool has_common_parts_ = false; // styles and shared texts have been read
  std::vector<bool> styles_;
};

// The shared texts.
class xlsx_texts_reader : public xml_reader {
public:
  explicit xlsx_texts_reader(xlsx_source& source) : source_(source) {}

protected:
  void start(std::string_view name, const xml_attributes&) override {
    if (name == "si") text_.clear();
    if (name == "rPh") in_reading_aid_ = true;
    in_text_ = name == "t" && !in_reading_aid_;
  }
  void end(std::string_view name) override {
    if (name == "si") source_.add_shared_text(text_);
    if (name == "rPh") in_reading_aid_ = false;
    in_text_ = false;
  }
  void text(std::string_view piece) override {
    if (in_text_) source_.append(text_, piece);
  }

private:
  xlsx_source& source_;
  std::string text_;
  bool in_text_ = false, in_reading_aid_ = false;
};

class xlsx_sheet_reader : public xml_reader {
public:
  xlsx_sheet_reader(xlsx_source& source, std::size_t table, cell_table& cells)
      : source_(source), table_(table), cells_(cells) {}

protected:
  void start(std::string_view name, const xml_attributes& attributes) override {
    if (name == "c") {
      start_cell(attributes);
    } else if (name == "row") {
      row_ = attributes.number("r", row_ + 2) - 1;
      next_column_ = 0;
    } else if (name == "rPh") {
      in_reading_aid_ = true;
    }
    in_value_ = name == "v" || (name == "t" && !in_reading_aid_);
  }
  void end(std::string_view name) override {
    in_value_ = false;
    if (name == "c") end_cell();
    if (name == "rPh") in_reading_aid_ = false;
  }
  void text(std::string_view piece) override {
    if (in_value_) source_.append(value_, piece);
  }

private:
  void start_cell(const xml_attributes& attributes) {
    const std::string_view place = attributes["r"];
    std::uint32_t column = 0; // counted from 1
    for (std::size_t i = 0; i < place.size() && i < 4 && (place[i] | 0x20) >= 'a' && (place[i] | 0x20) <= 'z'; ++i)
      column = column * 26 + static_cast<std::uint32_t>((place[i] | 0x20) - 'a' + 1);
    column_ = column > 0 ? column - 1 : next_column_;
    next_column_ = column_ + 1;
    type_ = attributes["t"];
    style_ = attributes.number("s", 0);
    value_.clear();
  }

  void end_cell() {
    if (value_.empty()) return;
    if (type_ == "b") {
      if (!cells_.add_boolean(row_, column_, value_ == "1" || value_ == "true")) source_.fail_too_large(table_);
    } else if (type_ == "s") {
      std::uint32_t index = 0;
      std::from_chars(value_.data(), value_.data() + value_.size(), index);
      if (index >= source_.shared_texts_.size())
        source_.fail(source_.tables_[table_], "text " + value_ + " of a cell is missing.");
      add(table_value::of_text(source_.shared_texts_[index]));
    } else if (type_ == "d") {
      const auto date = read_date(value_, date_form::iso);
      if (date) add(table_value::of_date_time(date->serial));
    } else if (type_.empty() || type_ == "n") {
      const auto number = plain_number(value_);
      if (!number) return;
      const bool is_date = style_ < source_.styles_.size() && source_.styles_[style_];
      add(is_date ? table_value::of_date_time(source_.dates_.number(*number)) : table_value::of_number(*number));
    } else { // str, inlineStr, e
      add(table_value::of_text(source_.keep_text_of_cell(value_)));
    }
  }

  void add(const table_value& value) {
    if (!cells_.add(row_, column_, value)) source_.fail_too_large(table_);
  }

  xlsx_source& source_;
  const std::size_t table_;
  cell_table& cells_;
  std::uint32_t row_ = static_cast<std::uint32_t>(-1), column_ = 0, next_column_ = 0, style_ = 0;
  std::string type_, value_;
  bool in_value_ = false, in_reading_aid_ = false;
};

void xlsx_source::read_sheet(std::size_t table, cell_table& cells) {
  if (!has_common_parts_) {
    if (!styles_part_.empty() && archive_.has(styles_part_)) {
      styles_reader reader;
      reader.read(archive_, styles_part_, longest_styles);
      styles_ = std::move(reader.styles);
    }
    if (!shared_texts_part_.empty() && archive_.has(shared_texts_part_))
      xlsx_texts_reader(*this).read(archive_, shared_texts_part_);
    has_common_parts_ = true;
  }
  xlsx_sheet_reader(*this, table, cells).read(archive_, parts_[table]);
  cells.become_sheet();
}

} // namespace

std::unique_ptr<table_source> open_xlsx(const std::filesystem::path& file) {
  return std::make_unique<xlsx_source>(open_bytes(file));
}

std::unique_ptr<table_source> open_xlsx(std::span<const std::byte> bytes, std::string name) {
  return std::make_unique<xlsx_source>(bytes_in_memory(bytes, std::move(name)));
}

} // namespace vesk
