#include "output/chosen_results.h"

#include "core/errors.h"
#include "core/text.h"
#include "output/output_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>

namespace reference_engine {

namespace {

[[noreturn]] void refuse(std::string_view item, const std::string& cause) {
  throw InputError(text("Results \"", item, "\": ", cause));
}

// The next item, up to a comma outside braces, which is taken away with it.
std::string_view take_item(std::string_view& rest) {
  std::size_t end = 0;
  for (bool in_braces = false; end < rest.size() && (in_braces || rest[end] != ','); ++end) {
    if (rest[end] == '{') in_braces = true;
    if (rest[end] == '}') in_braces = false;
  }
  const std::string_view item = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return item;
}

std::size_t find_variable(std::string_view item, std::string_view name, const std::vector<OutputVariable>& variables,
                          const std::vector<std::string>& names) {
  const bool is_description = name.size() > 2 && name.front() == '{' && name.back() == '}';
  const std::string_view wanted = is_description ? name.substr(1, name.size() - 2) : name;
  std::string known;
  for (std::size_t k = 0; k < variables.size(); ++k) {
    if (names[k] == wanted || (is_description && variables[k].description == wanted)) return k;
    known += (known.empty() ? "" : ", ") + names[k];
  }
  refuse(item, text("the model has no output ", name, " that is on; there are ", known.empty() ? "none" : known, "."));
}

std::size_t read_segment(std::string_view item, std::string_view number, std::size_t segments) {
  std::size_t segment = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), segment);
  if (error != std::errc() || end != number.data() + number.size() || segment >= segments)
    refuse(item, text("expected a segment from 0 to ", segments - 1, " after the @."));
  return segment;
}

class ChosenWriter : public ResultWriter {
public:
  ChosenWriter(const std::filesystem::path& base, const RunDescription& run, const ChosenResults& chosen)
      : start_(run.start), columns_(chosen.columns), row_(columns_.size()), file_(base, base.string() + ".results.csv"),
        stream_(file_.temporary(), std::ios::binary) {
    stream_ << "time";
    for (const ChosenResults::Column& column : columns_) stream_ << ',' << column.name;
    check();
  }

  void begin_time(double days) override {
    end_row();
    time_ = start_.after(days).iso();
  }

  void write(std::size_t variable, std::span<const double> values) override {
    for (std::size_t k = 0; k < columns_.size(); ++k)
      if (columns_[k].variable == variable) row_[k] = values[columns_[k].segment];
  }

  void publish() override {
    end_row();
    stream_ << '\n';
    stream_.close();
    check();
    file_.publish();
  }

private:
  // A row is complete when the next one begins.
  void end_row() {
    if (time_.empty()) return;
    stream_ << '\n' << time_;
    for (const double value : row_) {
      std::array<char, 32> digits;
      const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
      stream_ << ',';
      if (!std::isnan(value)) stream_.write(digits.data(), end - digits.data());
    }
    check();
    time_.clear();
  }

  void check() const {
    if (!stream_) throw WriteError(file_.final_name().string(), errno); // the errno of the write that failed
  }

  Moment start_;
  std::vector<ChosenResults::Column> columns_;
  std::vector<double> row_; // a value for each column
  OutputFile file_;
  std::ofstream stream_;
  std::string time_; // of the row; empty: none is begun
};

} // namespace

ChosenResults choose_results(std::string_view all, const std::vector<OutputVariable>& variables, std::size_t segments) {
  const std::vector<std::string> names = netcdf_names(variables);
  std::vector<std::size_t> taken; // positions of the variables that are in use
  ChosenResults chosen;
  while (!all.empty()) {
    const std::string_view item = take_item(all);
    const std::size_t at = item.rfind('@');
    if (at == std::string_view::npos) refuse(item, "expected VARIABLE@SEGMENT.");
    const std::size_t variable = find_variable(item, item.substr(0, at), variables, names);
    const std::size_t segment = read_segment(item, item.substr(at + 1), segments);
    const auto found = std::find(taken.begin(), taken.end(), variable);
    const auto position = static_cast<std::size_t>(found - taken.begin());
    if (found == taken.end()) {
      taken.push_back(variable);
      chosen.variables.push_back(variables[variable]);
    }
    chosen.columns.push_back({text(names[variable], "@", segment), position, segment});
  }
  return chosen;
}

std::unique_ptr<ResultWriter> make_chosen_writer(const std::filesystem::path& base, const RunDescription& run,
                                                 const ChosenResults& chosen) {
  return std::make_unique<ChosenWriter>(base, run, chosen);
}

} // namespace reference_engine
