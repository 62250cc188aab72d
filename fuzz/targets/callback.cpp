// An engine that calls what it likes in any order, with whatever values the header permits: nothing is thrown in the
// callback, nothing is written beyond what engines must have, the segments' lists fit the model, and the data set can
// be saved and read back. Input: a byte of options (1: a log, 2: the catalogue's other model), then calls: the
// keyword's place in the table, the mode, the arguments. A place behind the table's end is a name that follows.
#include "shell/callback.h"
#include "dataset/binary_writer.h"
#include "dataset/vki_reader.h"
#include "idle_job.h"
#include "memory_catalogue_store.h"
#include "shell/keywords/keyword_table.h"
#include "shell/shell_interface.h"
#include "support/demand.h"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace vesk;
using fuzz::demand;

constexpr std::int32_t longest_list = 40; // that an engine asks for; more only takes longer
// The buffers of an engine, with the terminator.
constexpr std::size_t name_buffer = 256, file_name_buffer = 4096;
constexpr std::size_t formatted_buffer = 64 << 10; // more than any formatted text of an input

class input {
public:
  input(const std::uint8_t* bytes, std::size_t size) : at_(bytes), end_(bytes + size) {}
  bool empty() const { return at_ == end_; }
  std::uint8_t byte() { return empty() ? std::uint8_t{0} : *at_++; }

  // Mostly a small number, else any.
  std::int32_t integer() {
    const int first = byte();
    return first < 224 ? first % 16 - 2 : static_cast<std::int32_t>(word());
  }
  float real() {
    const int first = byte();
    return first < 192 ? static_cast<float>(first % 64 - 8) / 4 : std::bit_cast<float>(word());
  }
  // Up to 478 bytes of the input, or one letter of it up to 15,360 times.
  std::string text() {
    const std::size_t first = byte();
    if (first >= 240) return std::string((first - 240 + 1) * 960, static_cast<char>(std::max<int>(byte(), 1)));
    std::string result;
    for (std::size_t left = 2 * first; left > 0 && !empty(); --left)
      if (const std::uint8_t letter = byte(); letter != 0) result += static_cast<char>(letter);
    return result;
  }

private:
  std::uint32_t word() {
    std::uint32_t result = 0;
    for (int i = 0; i < 4; ++i) result = result << 8 | byte();
    return result;
  }

  const std::uint8_t *at_, *end_;
};

class callback_job final : public idle_job {
public:
  callback_job(bool logs, bool other_model) : logs_(logs), shell_(*this) {
    static const auto catalogue = [] {
      auto store = small_catalogue();
      return read_catalogue(store);
    }();
    data = prevesk_dataset_data_type(catalogue);
    data.seed_date = data.skip_date = 36526; // 1 January 2000
    data.end_date = 36556;
    data.seed_time = data.end_time = data.skip_time = 0;
    if (other_model) data.model_type = 3;
    data.refresh_from_catalogue(false);
    data.apply_thread_defaults();
  }

  shell_interface& shell() override { return shell_; }
  bool logging_enabled() const override { return logs_; }
  bool has_log() const override { return logs_; }
  std::string input_file_name() const override { return file_name_; }
  void set_file_name(std::string_view name) override { file_name_ = name; }
  void fail(std::string_view cause) override {
    if (!cause.ends_with("bytes long, but an engine has room for 4095; shorten it."))
      fuzz::fail("thrown in the callback: " + std::string(cause));
  }

private:
  const bool logs_;
  std::string file_name_;
  shell_interface shell_;
};

bool is_one_of(std::string_view keyword, std::initializer_list<std::string_view> keywords) {
  return std::find(keywords.begin(), keywords.end(), keyword) != keywords.end();
}
bool sets_a_length(std::string_view keyword) {
  return is_one_of(keyword, {"NUMSEG", "NUMDT", "NPRINT", "NTEX", "NORS", "NOBRKS", "NINQ", "NOQS", "NBRKQ", "NBRKTF",
                             "NOBC", "NBFP", "NOWK", "NBWK"});
}
std::size_t buffer_for(std::string_view keyword) {
  if (keyword.starts_with("SPRINTF")) return formatted_buffer;
  const bool is_file = is_one_of(keyword, {"FILENAME", "HYDROFILE", "NPSFILE", "PROJECTFILE", "CSVOPFILENAME"});
  return is_file ? file_name_buffer : name_buffer;
}

// Its memory has just the sizes that the header tells.
class engine {
public:
  engine(input& bytes, const prevesk_dataset_data_type& data) : bytes_(bytes), data_(data) {}

  void call_something() {
    const std::size_t place = bytes_.byte();
    const char mode = "GPgX"[bytes_.byte() % 4];
    if (place >= keyword_count) return call_by_any_name(mode);
    const keyword_row& row = keyword_table[place];
    integers_.fill(0);
    for (std::size_t i = 0; i < max_variables; ++i) words_[i] = &integers_[i]; // what is ignored
    for (std::size_t i = 0; i < row.variables.size(); ++i) set_argument(row, i, mode == 'G' || mode == 'g');
    if (row.keyword == "GRIDINIT") set_labels();
    for (array& each : arrays_)
      if (row.keyword == each.keyword) words_[0] = renewed(each);
    if (row.keyword == "DAYS") // the data set may have grown since they were told
      for (array& each : arrays_)
        if (each.values) call(std::string("P") + each.keyword, {renewed(each)});
    call(mode + std::string(row.keyword), words_);
  }

private:
  using words = std::array<void*, max_variables>;
  struct array { // that the engine registers
    const char* keyword;
    std::size_t (*size)(const prevesk_dataset_data_type&);
    std::unique_ptr<float[]> values{};
  };

  void call(const std::string& name, const words& a) { data_callback(name.c_str(), a[0], a[1], a[2], a[3], a[4]); }

  void call_by_any_name(char mode) {
    const std::string keyword = bytes_.text();
    for (const keyword_row& row : keyword_table)
      if (row.keyword == keyword) return;
    call(mode + keyword, {});
  }

  void set_argument(const keyword_row& row, std::size_t i, bool is_get) {
    switch (row.variables[i].type) {
    case INTEGER:
      integers_[i] = bytes_.integer();
      if (i + 1 == row.variables.size() && sets_a_length(row.keyword) && integers_[i] > longest_list)
        integers_[i] %= longest_list + 1;
      break;
    case REAL:
      reals_[i].assign(row.keyword.starts_with("ALL") ? longest_list : 1, bytes_.real());
      words_[i] = reals_[i].data();
      break;
    default: {
      const bool is_output = row.keyword.starts_with("SPRINTF") ? i == 0 : is_get;
      const std::string text = is_output ? "" : bytes_.text();
      texts_[i].assign(!is_output ? text.size() + 1 : buffer_for(row.keyword), '\0');
      texts_[i].shrink_to_fit();
      std::copy(text.begin(), text.end(), texts_[i].begin());
      words_[i] = texts_[i].data();
    }
    }
  }

  // Without terminators. Numbers that are refused need no labels.
  void set_labels() {
    for (const std::size_t i : {1U, 2U})
      if (integers_[i] > longest_list && integers_[i] < 1'000'000) integers_[i] %= longest_list + 1;
    const auto size = [this](std::size_t i) {
      return integers_[i] > longest_list ? 0 : static_cast<std::size_t>(std::max(integers_[i], 0));
    };
    texts_[0].assign(size(1) * size(2), 'x');
    texts_[0].shrink_to_fit();
    words_[0] = texts_[0].data();
  }

  float* renewed(array& one) {
    const std::size_t size = std::max<std::size_t>(one.size(data_), 1); // the trace shows the first
    one.values.reset(new float[size]());
    return one.values.get();
  }

  static std::size_t cells(const prevesk_dataset_data_type& data) { return data.segments.size() * data.systems.size(); }
  static std::size_t functions(const auto& fields) {
    std::size_t most = 0;
    for (const auto& field : fields) most = std::max(most, field.functions.size());
    return most * 6;
  }

  input& bytes_;
  const prevesk_dataset_data_type& data_;
  words words_{};
  std::array<std::int32_t, max_variables> integers_{};
  std::array<std::vector<float>, max_variables> reals_;
  std::array<std::vector<char>, max_variables> texts_;
  array arrays_[6] = {
      {"ALLTFDATA",
       [](const prevesk_dataset_data_type& data) {
         std::uint32_t last = 0;
         for (const auto& function : data.time_functions) last = std::max(last, function.isc);
         return std::size_t{last};
       }},
      {"ALLLOADDATA", cells},
      {"ALLBCDATA", cells},
      {"ALLFLOWDATA", [](const prevesk_dataset_data_type& data) { return functions(data.flow_fields); }},
      {"ALLEXCHANGEDATA", [](const prevesk_dataset_data_type& data) { return functions(data.exchange_fields); }},
      {"PRINTTIMEFUNC", [](const prevesk_dataset_data_type&) { return std::size_t{1}; }},
  };
};

std::string written(const prevesk_dataset_data_type& data) {
  std::string bytes;
  binary_writer writer(bytes);
  data.write(writer);
  return bytes;
}

void check(const prevesk_dataset_data_type& data) {
  for (const segment_data_type& segment : data.segments)
    demand(segment.parameters.size() == data.parameters.size() && segment.systems.size() == data.systems.size(),
           "a segment's lists do not fit the model");
  const std::string bytes = written(data);
  prevesk_dataset_data_type again;
  binary_reader reader(bytes, "written");
  read_vki(reader, again);
  demand(reader.left() == 0 && written(again) == bytes, "the data set is not read back equal");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  input calls(bytes, size);
  const std::uint8_t options = calls.byte();
  callback_job job((options & 1) != 0, (options & 2) != 0);
  engine caller(calls, job.data);
  {
    const engine_job_scope serving(job);
    while (!calls.empty()) caller.call_something();
  }
  check(job.data);
  return 0;
}
