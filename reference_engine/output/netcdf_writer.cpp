// NetCDF results following the CF conventions 1.10: dimensions time and segment, one variable per output, segment names
// as labels (CF section 6.1). The 64-bit offset format appends each print time in one piece and is widely readable.
// docs/results-format.md describes the file for its readers.
#include "core/errors.h"
#include "core/text.h"
#include "output/output_file.h"
#include "output/results.h"
#include "output/utf8.h"

#include <netcdf.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <numeric>

namespace reference_engine {

namespace {

// A NetCDF name of letters, digits and underscores that begins with a letter and is not in use yet.
std::string variable_name(const OutputVariable& variable, const std::vector<std::string>& taken) {
  std::string name;
  for (const char c : variable.name) name += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
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
      : base_(base), file_(base, base.string() + ".nc"), values_(run.segments.size()) {
    check(nc_create(file_.temporary().c_str(), NC_CLOBBER | NC_64BIT_OFFSET, &id_));
    try {
      define(run, variables);
    } catch (...) {
      nc_abort(id_);
      throw;
    }
  }
  ~NetCdfWriter() override {
    if (open_) nc_abort(id_);
  }

  void begin_time(double days) override {
    const std::size_t at = record_++;
    check(nc_put_var1_double(id_, time_, &at, &days));
  }

  void write(std::size_t variable, std::span<const double> values) override {
    std::transform(values.begin(), values.end(), values_.begin(),
                   [](double value) { return std::isnan(value) ? NC_FILL_FLOAT : static_cast<float>(value); });
    const std::size_t start[] = {record_ - 1, 0}, count[] = {1, values_.size()};
    check(nc_put_vara_float(id_, variables_[variable], start, count, values_.data()));
  }

  void annotate(const std::string& name, const std::string& value) override {
    check(nc_redef(id_));
    attribute(NC_GLOBAL, name.c_str(), value);
    check(nc_enddef(id_));
  }

  void publish() override {
    open_ = false;
    check(nc_close(id_));
    file_.publish();
  }

  std::filesystem::path publish_cancelled() override {
    file_.rename_to(base_.string() + ".cancelled.nc");
    publish();
    return file_.final_name();
  }

private:
  void check(int status) const {
    if (status == NC_NOERR) return;
    if (status > 0) throw WriteError(file_.final_name().string(), status); // a system error number
    throw WriteError(file_.final_name().string(), std::string(nc_strerror(status)));
  }
  void attribute(int variable, const char* name, const std::string& value) {
    check(nc_put_att_text(id_, variable, name, value.size(), value.data()));
  }

  void define(const RunDescription& run, const std::vector<OutputVariable>& variables) {
    define_dimensions(run);
    define_coordinates(run);
    define_outputs(variables);
    attribute(NC_GLOBAL, "Conventions", "CF-1.10");
    attribute(NC_GLOBAL, "title", run.title);
    attribute(NC_GLOBAL, "source", run.source);
    attribute(NC_GLOBAL, "history", now() + " written by the bundled engine of Vesk");
    int old_fill = 0;
    check(nc_set_fill(id_, NC_NOFILL, &old_fill)); // every value is written
    // Reserves room in the header for attributes added at the end, so that no data has to be moved then.
    constexpr std::size_t alignment = 4;
    check(nc__enddef(id_, notes_size, alignment, 0, alignment));
    write_segments(run);
  }

  void define_dimensions(const RunDescription& run) {
    for (const std::string& name : run.segments) longest_name_ = std::max(longest_name_, name.size());
    check(nc_def_dim(id_, "time", NC_UNLIMITED, &time_dimension_));
    check(nc_def_dim(id_, "segment", run.segments.size(), &segment_dimension_));
    check(nc_def_dim(id_, "name_length", longest_name_, &letter_dimension_));
  }

  void define_coordinates(const RunDescription& run) {
    check(nc_def_var(id_, "time", NC_DOUBLE, 1, &time_dimension_, &time_));
    attribute(time_, "standard_name", "time");
    attribute(time_, "long_name", "time");
    attribute(time_, "units", "days since " + run.start.iso(' '));
    attribute(time_, "calendar", "standard");
    attribute(time_, "axis", "T");
    check(nc_def_var(id_, "segment", NC_INT, 1, &segment_dimension_, &positions_));
    attribute(positions_, "long_name", "position of the segment, counted from 0");
    const int label_dimensions[] = {segment_dimension_, letter_dimension_};
    check(nc_def_var(id_, "segment_name", NC_CHAR, 2, label_dimensions, &names_));
    attribute(names_, "long_name", "name of the segment");
    const bool all_utf8 = std::ranges::all_of(run.segments, is_utf8);
    attribute(names_, "_Encoding", all_utf8 ? "utf-8" : "windows-1252");
    check(nc_def_var(id_, "length", NC_DOUBLE, 1, &segment_dimension_, &lengths_));
    attribute(lengths_, "long_name", "length of the segment");
    attribute(lengths_, "units", "m");
    constexpr double fill = NC_FILL_DOUBLE;
    check(nc_put_att_double(id_, lengths_, "_FillValue", NC_DOUBLE, 1, &fill));
  }

  void define_outputs(const std::vector<OutputVariable>& variables) {
    const int dimensions[] = {time_dimension_, segment_dimension_};
    const std::vector<std::string> names = netcdf_names(variables);
    for (std::size_t k = 0; k < variables.size(); ++k) {
      const OutputVariable& variable = variables[k];
      int id = 0;
      check(nc_def_var(id_, names[k].c_str(), NC_FLOAT, 2, dimensions, &id));
      attribute(id, "long_name", variable.description.empty() ? variable.name : variable.description);
      attribute(id, "units", variable.units);
      attribute(id, "coordinates", "segment_name");
      attribute(id, "cell_methods", "time: point");
      constexpr float fill = NC_FILL_FLOAT;
      check(nc_put_att_float(id_, id, "_FillValue", NC_FLOAT, 1, &fill));
      variables_.push_back(id);
    }
  }

  void write_segments(const RunDescription& run) {
    std::vector<int> positions(run.segments.size());
    std::iota(positions.begin(), positions.end(), 0);
    check(nc_put_var_int(id_, positions_, positions.data()));
    std::vector<double> lengths = run.lengths;
    for (double& length : lengths) length = length > 0 ? length : NC_FILL_DOUBLE;
    check(nc_put_var_double(id_, lengths_, lengths.data()));
    std::string letters;
    for (std::string name : run.segments) {
      name.resize(longest_name_, '\0');
      letters += name;
    }
    check(nc_put_var_text(id_, names_, letters.data()));
  }

  std::filesystem::path base_;
  OutputFile file_;
  int id_ = 0;
  int time_dimension_ = 0, segment_dimension_ = 0, letter_dimension_ = 0;
  int time_ = 0, positions_ = 0, names_ = 0, lengths_ = 0; // variables
  std::size_t longest_name_ = 1;
  bool open_ = true;
  std::size_t record_ = 0;
  std::vector<int> variables_;
  std::vector<float> values_;
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
