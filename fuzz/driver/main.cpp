// Runs a target on inputs: replays files and folders, and with --seconds goes on with changed ones. Where the build has
// coverage, changed inputs that reach something new are kept to be changed again.
//
// The input at work is written to the folder of crashes when the target fails on it or takes too long.
#include "coverage.h"
#include "limits.h"
#include "mutator.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <pthread.h>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

extern "C" {
int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);
[[gnu::weak]] void __sanitizer_set_death_callback(void (*callback)());
}

namespace vesk::fuzz {
namespace {

namespace fs = std::filesystem;
using clock = std::chrono::steady_clock;

constexpr const char* usage = "usage: %s [--seconds N] [--seed N] [--limit SECONDS] [--largest BYTES] "
                              "[--crashes FOLDER] [FILE or FOLDER ...]\n";

struct options {
  unsigned seconds = 0; // of changing inputs, after the replay
  std::uint64_t seed = 1;
  unsigned limit = 20;           // seconds for one input
  std::size_t largest = 1 << 17; // longer inputs are replayed, but not changed
  fs::path crashes = ".";
  std::vector<fs::path> paths;
};

struct input {
  std::string name, bytes;
};

// The input at work, for what ends the program.
struct {
  const std::string* bytes = nullptr;
  const char* reason = "crash";
  char file[512] = {};
  std::atomic<std::int64_t> started{0}; // milliseconds of the clock; 0: no input is at work
} at_work;

std::int64_t milliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(clock::now().time_since_epoch()).count();
}

// Calls only what may be called in a signal handler.
void keep_input() {
  const std::string* const bytes = std::exchange(at_work.bytes, nullptr);
  if (!bytes) return;
  const int file = open(at_work.file, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (file >= 0 && write(file, bytes->data(), bytes->size()) >= 0) {
    for (const char* text :
         std::initializer_list<const char*>{"\n", at_work.reason, ": the input is kept as ", at_work.file, "\n"})
      if (write(STDERR_FILENO, text, std::strlen(text)) < 0) break;
    close(file);
  }
}

void end_by_signal(int number) {
  keep_input();
  std::signal(number, SIG_DFL);
  std::raise(number);
}

void catch_crashes() {
  if (__sanitizer_set_death_callback) return __sanitizer_set_death_callback(keep_input);
  static std::array<char, 65536> stack; // the program's own may be used up
  stack_t other{};
  other.ss_sp = stack.data();
  other.ss_size = stack.size();
  sigaltstack(&other, nullptr);
  struct sigaction action {};
  action.sa_handler = end_by_signal;
  action.sa_flags = SA_ONSTACK;
  for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) sigaction(number, &action, nullptr);
}

// Ends the program when an input takes too long, with the stack of where it is.
void watch_time(unsigned limit) {
  std::thread([limit, worker = pthread_self()] {
    while (true) {
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
      const std::int64_t started = at_work.started;
      if (started == 0 || milliseconds() - started < std::int64_t{1000} * limit) continue;
      at_work.reason = "timeout";
      pthread_kill(worker, SIGABRT);
      return;
    }
  }).detach();
}

class session {
public:
  explicit session(options asked) : asked_(std::move(asked)), random_(asked_.seed) {}

  void replay() {
    for (const fs::path& path : asked_.paths) {
      std::vector<fs::path> files;
      if (fs::is_directory(path))
        std::copy_if(fs::recursive_directory_iterator(path), {}, std::back_inserter(files),
                     [](const fs::path& file) { return fs::is_regular_file(file); });
      else
        files.push_back(path);
      std::sort(files.begin(), files.end());
      for (const fs::path& file : files) replay(file);
    }
    seeds_ = runs_;
  }

  void fuzz() {
    const auto end = clock::now() + std::chrono::seconds(asked_.seconds);
    if (corpus_.empty()) corpus_.push_back(std::make_unique<input>(input{"nothing", ""}));
    while (clock::now() < end) {
      // Half of them the newest, which nobody has looked around yet.
      const std::size_t newest = std::min<std::size_t>(corpus_.size(), 16);
      const input& base = random_.below(2) ? *corpus_[corpus_.size() - 1 - random_.below(newest)]
                                           : *corpus_[random_.below(corpus_.size())];
      input changed{"changed " + base.name.substr(0, 60), base.bytes};
      random_.change(changed.bytes, corpus_[random_.below(corpus_.size())]->bytes, asked_.largest);
      if (run(changed)) corpus_.push_back(std::make_unique<input>(std::move(changed)));
    }
  }

  void print() const {
    std::printf("%llu runs (%llu files), slowest %lld ms (%s), %zu inputs kept, coverage %zu\n",
                static_cast<unsigned long long>(runs_), static_cast<unsigned long long>(seeds_),
                static_cast<long long>(slowest_), slowest_name_.c_str(), corpus_.size(), coverage_so_far());
  }

private:
  void replay(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    input one{file.filename().string(), {std::istreambuf_iterator<char>(stream), {}}};
    if (!stream) {
      std::fprintf(stderr, "%s cannot be read.\n", file.c_str());
      std::exit(2);
    }
    run(one);
    if (one.bytes.size() <= asked_.largest) corpus_.push_back(std::make_unique<input>(std::move(one)));
  }

  // True when it has reached something new.
  bool run(const input& one) {
    const std::string name = asked_.crashes / ("crash-" + std::to_string(std::hash<std::string>()(one.bytes)));
    std::snprintf(at_work.file, sizeof at_work.file, "%s", name.c_str());
    at_work.bytes = &one.bytes;
    start_coverage();
    const std::int64_t start = milliseconds();
    at_work.started = start;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(one.bytes.data()), one.bytes.size());
    at_work.started = 0;
    at_work.bytes = nullptr;
    const std::int64_t took = milliseconds() - start;
    if (took > slowest_ || runs_ == 0) {
      slowest_ = took;
      slowest_name_ = one.name;
    }
    ++runs_;
    return is_new_coverage();
  }

  const options asked_;
  mutator random_;
  std::vector<std::unique_ptr<input>> corpus_;
  std::uint64_t runs_ = 0, seeds_ = 0;
  std::int64_t slowest_ = 0;
  std::string slowest_name_;
};

bool take_number(std::string_view text, auto& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

bool parse(int count, char** arguments, options& asked) {
  for (int i = 1; i < count; ++i) {
    const std::string_view word = arguments[i];
    if (!word.starts_with("--")) {
      asked.paths.emplace_back(word);
      continue;
    }
    if (++i == count) return false;
    const std::string_view value = arguments[i];
    if (word == "--crashes")
      asked.crashes = value;
    else if (!(word == "--seconds"   ? take_number(value, asked.seconds)
               : word == "--seed"    ? take_number(value, asked.seed)
               : word == "--limit"   ? take_number(value, asked.limit)
               : word == "--largest" ? take_number(value, asked.largest)
                                     : false))
      return false;
  }
  return true;
}

} // namespace
} // namespace vesk::fuzz

int main(int count, char** arguments) {
  using namespace vesk::fuzz;
  options asked;
  if (!parse(count, arguments, asked)) {
    std::fprintf(stderr, usage, arguments[0]);
    return 2;
  }
  limit_memory();
  catch_crashes();
  watch_time(asked.limit);
  const bool changes = asked.seconds > 0;
  session work(std::move(asked));
  work.replay();
  if (changes) work.fuzz();
  work.print();
}
