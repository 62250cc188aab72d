// Comma-separated results: one file per variable, with the time in the first column, then one column per segment.
#include "core/errors.h"
#include "core/text.h"
#include "output/csv_name.h"
#include "output/output_file.h"
#include "output/results.h"

#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <map>

namespace reference_engine {

namespace {

// A spreadsheet would evaluate a name that looks like a formula, and formulas can start programs. A leading apostrophe
// makes it a text; quotes alone do not. Vesk's own table reader drops the apostrophe.
std::string as_text(const std::string& name) {
  return name.empty() || std::string_view("=+-@\t\r").find(name.front()) == std::string_view::npos ? name : "'" + name;
}

// RFC 4180: a field with a separator is put in quotes, and quotes in it are doubled.
std::string quoted(const std::string& field) {
  if (field.find_first_of(",\"\r\n") == std::string::npos) return field;
  std::string out = "\"";
  for (const char c : field) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + '"';
}

// A name shared by several segments gets the segment's number.
std::string header(const std::vector<std::string>& segments) {
  std::map<std::string, int> uses;
  for (const std::string& name : segments) ++uses[name];
  std::string line = "time";
  for (std::size_t i = 0; i < segments.size(); ++i) {
    const bool alone = uses[segments[i]] == 1 && !segments[i].empty();
    line += ',' + quoted(as_text(alone ? segments[i] : text(segments[i], " [", i + 1, "]")));
  }
  return line + '\n';
}

class CsvWriter : public ResultWriter {
public:
  CsvWriter(const std::filesystem::path& base, const RunDescription& run, const std::vector<OutputVariable>& variables)
      : start_(run.start) {
    for (const OutputVariable& variable : variables) {
      files_.push_back(std::make_unique<File>(base, csv_result_name(base, variable)));
      files_.back()->stream << header(run.segments);
      check(*files_.back());
    }
  }

  void begin_time(double days) override { time_ = start_.after(days).iso(); }

  void write(std::size_t variable, std::span<const double> values) override {
    line_ = time_;
    for (const double value : values) {
      line_ += ',';
      if (std::isnan(value)) continue;
      std::array<char, 32> digits;
      const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<float>(value)).ptr;
      line_.append(digits.data(), end);
    }
    line_ += '\n';
    files_[variable]->stream << line_;
    check(*files_[variable]);
  }

  void publish() override {
    for (const auto& file : files_) {
      file->stream.close();
      check(*file);
    }
    for (const auto& file : files_) file->file.publish();
  }

private:
  struct File {
    File(const std::filesystem::path& base, std::filesystem::path name)
        : file(base, std::move(name)), stream(file.temporary(), std::ios::binary) {}
    OutputFile file;
    std::ofstream stream;
  };

  static void check(const File& file) {
    if (!file.stream) throw WriteError(file.file.final_name().string(), errno); // the errno of the write that failed
  }

  Moment start_;
  std::vector<std::unique_ptr<File>> files_;
  std::string time_, line_;
};

} // namespace

std::unique_ptr<ResultWriter> make_csv_writer(const std::filesystem::path& base, const RunDescription& run,
                                              const std::vector<OutputVariable>& variables) {
  return std::make_unique<CsvWriter>(base, run, variables);
}

} // namespace reference_engine
