// How time and memory of the whole program grow with the model: river basins of 1e3, 1e4, 1e5 and 1e6 segments, with
// one hourly series over a year per hundred segments, are written, opened, copied, checked, saved and run for a day.
//
// Each size has two processes, one that writes the file and one that works on it as the programs do, through the
// application object; `vesk-run` then runs it once more from the command line. The peak of a stage is the most memory
// held by the process from the stage's start to its end, including everything allocated before. Each size is measured
// three times; the fastest time and the highest peak count. The figures are kept in scale.csv, for scale_plot.py.
#include "app/main_form.h"
#include "dataset/vki_file.h"
#include "engine/stack_thread.h"
#include "noting_interface.h"
#include "river_basins.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk::bench {
namespace {

using std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr double days = 1; // of simulation

fs::path folder;
fs::path figures() {
  return folder / "scale.csv";
}
fs::path model_file() {
  return folder / "scale_model.vki";
}
fs::path saved_file() {
  return folder / "scale_saved.vki";
}

double seconds(steady_clock::duration time) {
  return std::chrono::duration<double>(time).count();
}

double processor_seconds(const rusage& used) {
  const auto in_seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
  };
  return in_seconds(used.ru_utime) + in_seconds(used.ru_stime);
}

double processor_seconds() {
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  return processor_seconds(used);
}

// Of this process, in MB: "VmHWM" is its peak, "VmRSS" its current memory.
double memory(const std::string& what) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(what + ":")) return std::stod(line.substr(what.size() + 1)) * 1024e-6;
  throw std::runtime_error("no " + what + " in /proc/self/status");
}

// Appends a line to the figures: wall and processor seconds, MB.
void note(std::size_t segments, const std::string& stage, double wall, double processor, double peak) {
  std::FILE* file = std::fopen(figures().c_str(), "a");
  if (!file) throw std::runtime_error(figures().string() + ": cannot be written");
  std::fprintf(file, "%zu,%s,%.4g,%.4g,%.4g\n", segments, stage.c_str(), wall, processor, peak);
  std::fclose(file);
  std::printf("%8zu  %-28s %10.4g s %10.4g s of processor %8.0f MB\n", segments, stage.c_str(), wall, processor, peak);
  std::fflush(stdout);
}

// One stage: resets the memory peak at its start.
class stage {
public:
  explicit stage(std::size_t segments) : segments_(segments) { begin(); }
  void end(const std::string& name, double times = 1) {
    const double wall = seconds(steady_clock::now() - wall_) / times;
    note(segments_, name, wall, (processor_seconds() - processor_) / times, memory("VmHWM"));
    begin();
  }

private:
  void begin() {
    std::ofstream("/proc/self/clear_refs") << "5";
    processor_ = processor_seconds();
    wall_ = steady_clock::now();
  }

  std::size_t segments_;
  steady_clock::time_point wall_;
  double processor_ = 0;
};

// A user who records when the engine's steps start and end.
class scale_interface final : public noting_interface {
public:
  stage* now = nullptr;
  std::string finished;

  box_answer message_box(const std::string& title, const std::string& text, box_buttons buttons) override {
    if (title != "Validity check passed") throw std::runtime_error(title + ": " + text);
    return noting_interface::message_box(title, text, buttons);
  }
  void add_info_line(const std::string& text, int icon) override {
    if (icon == icon_failure) throw std::runtime_error(text);
    if (now && text.starts_with("Running ")) now->end("run: start");
    if (now && text.starts_with("Finished ")) now->end("run: steps");
    if (text.starts_with("Finished ")) finished = text;
  }
};

void check(bool good, const char* what) {
  if (!good) throw std::runtime_error(what);
}

std::shared_ptr<const model_catalogue> read_tables() {
  return catalogue_source(CATALOGUE).get();
}

void write(std::size_t segments) {
  stage now(segments);
  const prevesk_dataset_data_type basins = make_river_basins(read_tables(), segments, days);
  now.end("make");
  save_data_file(model_file(), basins);
  now.end("write");
}

// Serves the running job until it has ended, as the programs do.
void serve(TPreveskMainForm& form) {
  constexpr auto tick = std::chrono::milliseconds(TPreveskMainForm::ui_update_interval);
  check(form.active_thread != nullptr, "no job was started");
  auto next_tick = steady_clock::now() + tick;
  while (form.active_thread) {
    wait_and_synchronize(std::chrono::milliseconds(50));
    if (steady_clock::now() < next_tick) continue;
    form.UpdateTimerTimer();
    next_tick += tick;
  }
  check(!form.last_job().failed() && !form.last_job().cancelled && form.return_code() == 0, "a job has failed");
}

void work(std::size_t segments) {
  scale_interface ui;
  TPreveskMainForm form(ui, folder / "no_settings.ini", configuration::access::read_only);
  form.engine_path = ENGINE;
  form.set_database_folder(CATALOGUE);

  stage now(segments);
  form.open_file(model_file().string());
  now.end("open");
  check(form.current_data_set && form.current_data_set->segments.size() == segments, "the file was not opened");

  constexpr int copies = 1000;
  for (int i = 0; i < copies; ++i) form.commit_snapshot();
  now.end("copy: snapshot", copies);
  for (int i = 0; i < copies; ++i) {
    const prevesk_dataset_data_type copy = *form.current_data_set;
    check(copy.segments.shares_with(form.current_data_set->segments), "a copy does not share memory");
  }
  now.end("copy: for a run", copies);
  form.current_data_set->segments.edit(segments / 2).volume *= 2;
  now.end("copy: first change");
  form.restore_snapshot();

  now = stage(segments);
  form.current_data_set->find_boundaries();
  now.end("boundary search");
  check(*form.current_data_set == *form.backup_data_set, "the boundary search has changed the model");

  now = stage(segments);
  form.start_validity_check();
  serve(form);
  now.end("validity check");
  check(form.last_job().checked, "the model is not valid");

  form.file_name = saved_file().string();
  now = stage(segments);
  form.SaveItemClick();
  now.end("save");

  ui.now = &now;
  form.RunModelButtonClick();
  serve(form);
  now.end("run: end");
  ui.now = nullptr;
  std::printf("          %s\n", ui.finished.c_str());

  // The run's copy has been freed, too.
  while (live_thread_count() > 0) wait_and_synchronize(std::chrono::milliseconds(1));
  now = stage(segments);
  form.backup_data_set.reset();
  form.current_data_set.reset();
  now.end("close");
}

// Runs a program to its end. Returns its wall time in seconds; `used` gets the system's figures.
double run(const std::vector<std::string>& arguments, rusage& used) {
  std::vector<char*> words;
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  std::fflush(nullptr);
  const auto start = steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    execv(words.front(), words.data());
    _exit(127);
  }
  int status = 0;
  check(wait4(child, &status, 0, &used) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0,
        (arguments.front() + " has failed").c_str());
  return seconds(steady_clock::now() - start);
}

bool same_bytes(const fs::path& one, const fs::path& other) {
  std::ifstream a(one, std::ios::binary), b(other, std::ios::binary);
  std::vector<char> left(std::size_t{1} << 20), right(left.size());
  while (a && b) {
    a.read(left.data(), static_cast<std::streamsize>(left.size()));
    b.read(right.data(), static_cast<std::streamsize>(right.size()));
    if (a.gcount() != b.gcount() || std::memcmp(left.data(), right.data(), static_cast<std::size_t>(a.gcount())) != 0)
      return false;
  }
  return a.eof() && b.eof();
}

void measure(const std::string& this_program, std::size_t segments) {
  const std::vector<std::string> common{this_program, "--folder=" + folder.string(),
                                        "--segments=" + std::to_string(segments)};
  const auto child = [&](const char* part) {
    std::vector<std::string> arguments = common;
    arguments.push_back(part);
    rusage used{};
    run(arguments, used);
  };
  child("--write");
  note(segments, "file", 0, 0, static_cast<double>(fs::file_size(model_file())) * 1e-6);
  child("--work");
  check(same_bytes(model_file(), saved_file()), "the file that was saved is not the one that was opened");
  rusage used{};
  const double wall =
      run({PROGRAM, "--engine", ENGINE, "--catalogue", CATALOGUE, "--quiet", saved_file(), "-RUN"}, used);
  note(segments, "vesk-run", wall, processor_seconds(used), static_cast<double>(used.ru_maxrss) * 1024e-6);
  for (const fs::path& file : {model_file(), saved_file(), fs::path(saved_file()).replace_extension(".nc")})
    fs::remove(file);
}

std::string with_unit(double number, const char* unit) {
  char text[32];
  std::snprintf(text, sizeof text, number < 99.5 ? "%.3g %s" : "%.0f %s", number, unit);
  return text;
}

std::string time_text(double time) {
  if (time >= 0.9995) return with_unit(time, "s");
  if (time >= 0.9995e-3) return with_unit(time * 1e3, "ms");
  return time >= 0.9995e-6 ? with_unit(time * 1e6, "us") : with_unit(time * 1e9, "ns");
}

std::string memory_text(double megabytes) {
  return with_unit(megabytes, "MB");
}

// The figures as two Markdown tables: wall time, and peaks of memory.
void print_tables() {
  struct measured {
    double wall = std::numeric_limits<double>::infinity(), peak = 0;
  };
  std::vector<std::string> stages;
  std::map<std::size_t, std::map<std::string, measured>> sizes;
  std::ifstream file(figures());
  std::string line;
  for (std::getline(file, line); std::getline(file, line);) {
    std::istringstream fields(line);
    std::string size, name, wall, processor, peak;
    for (std::string* field : {&size, &name, &wall, &processor, &peak}) std::getline(fields, *field, ',');
    if (std::find(stages.begin(), stages.end(), name) == stages.end()) stages.push_back(name);
    measured& cell = sizes[std::stoul(size)][name];
    cell.wall = std::min(cell.wall, std::stod(wall));
    cell.peak = std::max(cell.peak, std::stod(peak));
  }
  const auto print = [&](const char* title, const std::vector<std::string>& rows, auto what, auto text) {
    std::printf("\n| %s |", title);
    for (const auto& [size, cells] : sizes) std::printf(" %zu segments |", size);
    std::printf("\n|---|");
    for (std::size_t i = 0; i < sizes.size(); ++i) std::printf("--:|");
    for (const std::string& name : rows) {
      std::printf("\n| %s |", name.c_str());
      for (auto& [size, cells] : sizes) std::printf(" %s |", text(cells[name].*what).c_str());
    }
    std::printf("\n");
  };
  std::erase(stages, "file"); // takes no time
  print("Time", stages, &measured::wall, time_text);
  print("Memory at most", {"file", "open", "copy: for a run", "save", "run: steps", "vesk-run"}, &measured::peak,
        memory_text);
}

} // namespace
} // namespace vesk::bench

int main(int argc, char** argv) {
  using namespace vesk::bench;
  const std::string this_program = std::filesystem::read_symlink("/proc/self/exe").string();
  folder = std::filesystem::path(this_program).parent_path();
  std::size_t largest = 100'000, segments = 0;
  constexpr int repetitions = 3;
  std::string part;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument.starts_with("--largest="))
      largest = std::stoul(argument.substr(10));
    else if (argument.starts_with("--segments="))
      segments = std::stoul(argument.substr(11));
    else if (argument.starts_with("--folder="))
      folder = argument.substr(9);
    else if (argument == "--write" || argument == "--work")
      part = argument;
    else {
      std::fprintf(stderr, "usage: scale_bench [--folder=FOLDER] [--largest=N | --segments=N [--write | --work]]\n");
      return 2;
    }
  }
  try {
    if (part == "--write")
      write(segments);
    else if (part == "--work")
      work(segments);
    else {
      std::ofstream(figures()) << "segments,stage,wall_s,processor_s,peak_MB\n";
      const std::size_t first = segments != 0 ? segments : segments_of_basin, last = segments != 0 ? segments : largest;
      for (int i = 0; i < repetitions; ++i)
        for (std::size_t size = first; size <= last; size *= 10) measure(this_program, size);
      print_tables();
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "scale_bench: %s\n", error.what());
    std::fflush(nullptr);
    std::_Exit(1); // a job may still be running
  }
}
