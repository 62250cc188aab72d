// NetCDF results following the CF conventions 1.10: dimensions time and segment, one variable per output, segment names
// as labels (CF section 6.1). The 64-bit offset format appends each print time in one piece and is widely readable.
#include "core/errors.h"
#include "core/text.h"
#include "output/output_file.h"
#include "output/results.h"

#include <netcdf.h>

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
      : file_(base, base.string() + ".nc"), values_(run.segments.size()) {
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
    std::size_t longest = 1;
    for (const std::string& name : run.segments) longest = std::max(longest, name.size());
    int time_dimension = 0, segment_dimension = 0, letter_dimension = 0, names = 0;
    check(nc_def_dim(id_, "time", NC_UNLIMITED, &time_dimension));
    check(nc_def_dim(id_, "segment", run.segments.size(), &segment_dimension));
    check(nc_def_dim(id_, "name_length", longest, &letter_dimension));

    check(nc_def_var(id_, "time", NC_DOUBLE, 1, &time_dimension, &time_));
    attribute(time_, "standard_name", "time");
    attribute(time_, "long_name", "time");
    attribute(time_, "units", "days since " + run.start.iso(' '));
    attribute(time_, "calendar", "standard");
    attribute(time_, "axis", "T");
    const int label_dimensions[] = {segment_dimension, letter_dimension};
    check(nc_def_var(id_, "segment_name", NC_CHAR, 2, label_dimensions, &names));
    attribute(names, "long_name", "name of the segment");

    const int dimensions[] = {time_dimension, segment_dimension};
    std::vector<std::string> taken = {"time", "segment", "segment_name", "name_length"};
    for (const OutputVariable& variable : variables) {
      taken.push_back(variable_name(variable, taken));
      int id = 0;
      check(nc_def_var(id_, taken.back().c_str(), NC_FLOAT, 2, dimensions, &id));
      attribute(id, "long_name", variable.description);
      attribute(id, "units", variable.units);
      attribute(id, "coordinates", "segment_name");
      const float fill = NC_FILL_FLOAT;
      check(nc_put_att_float(id_, id, "_FillValue", NC_FLOAT, 1, &fill));
      variables_.push_back(id);
    }

    attribute(NC_GLOBAL, "Conventions", "CF-1.10");
    attribute(NC_GLOBAL, "title", run.title);
    attribute(NC_GLOBAL, "source", run.source);
    attribute(NC_GLOBAL, "history", now() + " written by the bundled engine of Vesk");
    int old_fill = 0;
    check(nc_set_fill(id_, NC_NOFILL, &old_fill)); // every value is written
    // Reserves room in the header for attributes added at the end, so that no data has to be moved then.
    constexpr std::size_t alignment = 4;
    check(nc__enddef(id_, notes_size, alignment, 0, alignment));
    std::string letters;
    for (std::string name : run.segments) {
      name.resize(longest, '\0');
      letters += name;
    }
    check(nc_put_var_text(id_, names, letters.data()));
  }

  OutputFile file_;
  int id_ = 0, time_ = 0;
  bool open_ = true;
  std::size_t record_ = 0;
  std::vector<int> variables_;
  std::vector<float> values_;
};

} // namespace

std::unique_ptr<ResultWriter> make_netcdf_writer(const std::filesystem::path& base, const RunDescription& run,
                                                 const std::vector<OutputVariable>& variables) {
  return std::make_unique<NetCdfWriter>(base, run, variables);
}

} // namespace reference_engine
