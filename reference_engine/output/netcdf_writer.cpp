// NetCDF results following the CF conventions 1.10: dimensions time and segment, one variable per output, segment names
// as labels (CF section 6.1). The 64-bit offset format appends each print time in one piece and is widely readable.
// docs/results-format.md describes the file for its readers.
#include "core/errors.h"
#include "core/text.h"
#include "output/netcdf_header.h"
#include "output/output_file.h"
#include "output/results.h"
#include "output/utf8.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>

namespace reference_engine {

namespace {

// A NetCDF name of letters, digits and underscores that begins with a letter and is not in use yet.
std::string variable_name(const OutputVariable& variable, const std::vector<std::string>& taken) {
  std::string name;
  for (const char c : variable.name) name += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  constexpr std::size_t longest = 200; // bytes; NetCDF allows 256, and more is added below
  name.resize(std::min(name.size(), longest));
  if (name.empty() || std::isalpha(static_cast<unsigned char>(name.front())) == 0) name = "output_" + name;
  if (std::find(taken.begin(), taken.end(), name) != taken.end()) name += text("_", variable.isc);
  return name;
}

std::string now() {
  const auto today = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()).time_since_epoch();
  return Moment{}.after(static_cast<double>(today.count()) / 86400.0).iso() + "Z";
}

class NetCdfWriter : public ResultWriter {
public:
  NetCdfWriter(const std::filesystem::path& base, const RunDescription& run,
               const std::vector<OutputVariable>& variables)
      : base_(base), file_(base, base.string() + ".nc") {
    define(run, variables);
    if (!header_.lay_out(notes_size))
      throw WriteError(file_.final_name().string(), "a variable would take more than 4 GB at one time");
    file_.write_at(0, header_.bytes(0));
    end_ = header_.data_begin();
    append_segments(run);
    flush();
  }

  void begin_time(double days) override {
    if (pending_.size() >= enough_to_write) flush();
    append_number(pending_, days);
    ++records_;
  }

  void write(std::size_t /*variable*/, std::span<const double> values) override {
    for (const double value : values)
      append_number(pending_, std::isnan(value) ? netcdf_missing_float : static_cast<float>(value));
  }

  // One that does not fit any more is left out; it is among the messages of the run as well.
  void annotate(const std::string& name, const std::string& value) override {
    NetCdfHeader with_it = header_;
    with_it.add_text(name, value);
    if (with_it.fits()) header_ = std::move(with_it);
  }

  void publish() override {
    flush();
    file_.write_at(0, header_.bytes(records_));
    file_.publish();
  }

  std::filesystem::path publish_cancelled() override {
    file_.rename_to(base_.string() + ".cancelled.nc");
    publish();
    return file_.final_name();
  }

private:
  using Type = NetCdfHeader::Type;
  using Index = NetCdfHeader::Index;

  void flush() {
    file_.write_at(end_, pending_);
    end_ += pending_.size();
    pending_.clear();
  }

  void define(const RunDescription& run, const std::vector<OutputVariable>& variables) {
    for (const std::string& name : run.segments) longest_name_ = std::max(longest_name_, name.size());
    const Index times = header_.add_growing_dimension("time");
    const Index segments = header_.add_dimension("segment", run.segments.size());
    const Index letters = header_.add_dimension("name_length", longest_name_);
    define_time(run, times);
    define_segments(run, segments, letters);
    define_outputs(variables, {times, segments});
    header_.add_text("Conventions", "CF-1.10");
    header_.add_text("title", run.title);
    header_.add_text("source", run.source);
    header_.add_text("history", now() + " written by the bundled engine of Vesk");
  }

  void define_time(const RunDescription& run, Index times) {
    const Index time = header_.add_variable("time", Type::real, {times});
    header_.add_text(time, "standard_name", "time");
    header_.add_text(time, "long_name", "time");
    header_.add_text(time, "units", "days since " + run.start.iso(' '));
    header_.add_text(time, "calendar", "standard");
    header_.add_text(time, "axis", "T");
  }

  void define_segments(const RunDescription& run, Index segments, Index letters) {
    const Index positions = header_.add_variable("segment", Type::integer, {segments});
    header_.add_text(positions, "long_name", "position of the segment, counted from 0");
    const Index names = header_.add_variable("segment_name", Type::text, {segments, letters});
    header_.add_text(names, "long_name", "name of the segment");
    header_.add_text(names, "_Encoding", std::ranges::all_of(run.segments, is_utf8) ? "utf-8" : "windows-1252");
    const Index lengths = header_.add_variable("length", Type::real, {segments});
    header_.add_text(lengths, "long_name", "length of the segment");
    header_.add_text(lengths, "units", "m");
    header_.add_fill_value(lengths, netcdf_missing_double);
  }

  void define_outputs(const std::vector<OutputVariable>& variables, const std::vector<Index>& dimensions) {
    const std::vector<std::string> names = netcdf_names(variables);
    for (std::size_t k = 0; k < variables.size(); ++k) {
      const OutputVariable& variable = variables[k];
      const Index id = header_.add_variable(names[k], Type::single, dimensions);
      header_.add_text(id, "long_name", variable.description.empty() ? variable.name : variable.description);
      header_.add_text(id, "units", variable.units);
      header_.add_text(id, "coordinates", "segment_name");
      header_.add_text(id, "cell_methods", "time: point");
      header_.add_fill_value(id, netcdf_missing_float);
    }
  }

  // In the order of their definition.
  void append_segments(const RunDescription& run) {
    for (std::size_t i = 0; i < run.segments.size(); ++i) append_number(pending_, static_cast<std::int32_t>(i));
    for (std::string name : run.segments) {
      name.resize(longest_name_, '\0');
      pending_ += name;
    }
    align(pending_);
    for (const double length : run.lengths) append_number(pending_, length > 0 ? length : netcdf_missing_double);
  }

  static constexpr std::size_t enough_to_write = std::size_t{1} << 18; // bytes

  std::filesystem::path base_;
  OutputFile file_;
  NetCdfHeader header_;
  std::size_t longest_name_ = 1;
  std::uint32_t records_ = 0;
  std::uint64_t end_ = 0; // of what has been written
  std::string pending_;   // follows it
};

} // namespace

std::vector<std::string> netcdf_names(const std::vector<OutputVariable>& variables) {
  std::vector<std::string> taken = {"time", "segment", "segment_name", "length", "name_length"};
  const auto others = static_cast<std::ptrdiff_t>(taken.size());
  for (const OutputVariable& variable : variables) taken.push_back(variable_name(variable, taken));
  return {taken.begin() + others, taken.end()};
}

std::unique_ptr<ResultWriter> make_netcdf_writer(const std::filesystem::path& base, const RunDescription& run,
                                                 const std::vector<OutputVariable>& variables) {
  return std::make_unique<NetCdfWriter>(base, run, variables);
}

} // namespace reference_engine
