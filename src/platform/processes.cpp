#include "platform/processes.h"

#include "platform/program_paths.h"
#include "platform/program_start.h"
#include "platform/threads.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {

namespace fs = std::filesystem;

std::vector<std::string> split_command_line(std::string_view line) {
  std::vector<std::string> parts;
  bool in_part = false, quoted = false;
  for (const char c : line) {
    if (!quoted && (c == ' ' || c == '\t')) {
      in_part = false;
      continue;
    }
    if (!in_part) parts.emplace_back();
    in_part = true;
    if (c == '"')
      quoted = !quoted;
    else
      parts.back() += c;
  }
  return parts;
}

namespace {

bool is_program(const fs::path& file) {
  std::error_code ignored;
  return fs::is_regular_file(file, ignored) && access(file.c_str(), X_OK) == 0;
}

std::vector<fs::path> search_path() {
  std::vector<fs::path> folders;
  const char* path = std::getenv("PATH");
  std::string_view rest = path ? path : "/usr/local/bin:/usr/bin:/bin";
  while (!rest.empty()) {
    const std::string_view folder = rest.substr(0, rest.find(':'));
    folders.emplace_back(folder.empty() ? "." : folder);
    rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
  }
  return folders;
}

bool ends_in_exe(const std::string& name) {
  if (name.size() <= 4) return false;
  std::string end = name.substr(name.size() - 4);
  for (char& c : end)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return end == ".exe";
}

} // namespace

fs::path find_program(const std::string& name, const fs::path& beside) {
  if (name.empty()) return {};
  std::vector<std::string> spellings{name};
  if (ends_in_exe(name)) spellings.push_back(name.substr(0, name.size() - 4));
  std::vector<fs::path> folders{""};
  if (name.find('/') == std::string::npos) {
    folders = search_path();
    folders.insert(folders.begin(), beside);
  }
  for (const fs::path& folder : folders)
    for (const std::string& spelling : spellings)
      if (is_program(folder / spelling)) return fs::absolute(folder / spelling);
  return {};
}

namespace {

// Everything the new process needs, prepared in advance: between fork and exec no memory may be allocated.
struct start_order {
  const char* program;
  char* const* arguments;
  const char* folder; // null: the current one
  int report;         // the write end of a pipe that closes when the program has started
};

[[noreturn]] void become_program(const start_order& order) {
  setsid();
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  restore_signals();
  if (close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) != 0)
    for (int file = 3; file < 1024; ++file) fcntl(file, F_SETFD, FD_CLOEXEC);
  if (!order.folder || chdir(order.folder) == 0) execv(order.program, order.arguments);
  const int error = errno;
  [[maybe_unused]] const auto told = write(order.report, &error, sizeof error);
  _exit(127);
}

// The program's parent exits at once, so that the system's first process waits for the program.
[[noreturn]] void make_orphan(const start_order& order) {
  const pid_t grandchild = fork();
  if (grandchild == 0) become_program(order);
  const int error = errno;
  if (grandchild < 0) [[maybe_unused]]
    const auto told = write(order.report, &error, sizeof error);
  _exit(0);
}

} // namespace

bool start_program(const std::vector<std::string>& arguments, const fs::path& folder) {
  const fs::path program = arguments.empty() ? fs::path() : find_program(arguments.front(), program_directory());
  if (program.empty()) return false;
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
  pointers.push_back(nullptr);
  int report[2];
  if (pipe2(report, O_CLOEXEC) != 0) return false;
  const start_order order{program.c_str(), pointers.data(), folder.empty() ? nullptr : folder.c_str(), report[1]};
  const pid_t child = fork();
  if (child == 0) make_orphan(order);
  close(report[1]);
  bool started = child > 0;
  if (started) {
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    int error = 0;
    ssize_t size;
    while ((size = read(report[0], &error, sizeof error)) < 0 && errno == EINTR) {
    }
    started = size == 0;
  }
  close(report[0]);
  return started;
}

void open_with_desktop(const std::string& file_or_link, const fs::path& folder) {
  start_program({"xdg-open", file_or_link}, folder);
}

// A desktop knows its own browser; without one xdg-open takes $BROWSER or a program of a well-known name.
bool desktop_has_browser() {
  const auto is_set = [](const char* variable) {
    const char* const value = std::getenv(variable);
    return value && *value;
  };
  if (find_program("xdg-open", {}).empty()) return false;
  if (is_set("BROWSER") || is_set("XDG_CURRENT_DESKTOP")) return true;
  for (const char* name : {"x-www-browser", "firefox", "firefox-esr", "chromium", "chromium-browser", "google-chrome",
                           "epiphany", "konqueror", "falkon"})
    if (!find_program(name, {}).empty()) return true;
  return false;
}

int process_nice() {
  return getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
}

bool set_process_nice(int nice, int otherwise) {
  std::error_code error;
  std::vector<int> changed;
  for (fs::directory_iterator entry("/proc/self/task", error), end; !error && entry != end; entry.increment(error)) {
    const int number = std::atoi(entry->path().filename().c_str());
    if (set_thread_nice(number, nice)) {
      changed.push_back(number);
    } else if (errno != ESRCH) { // the thread has ended in between
      for (const int thread : changed) set_thread_nice(thread, otherwise);
      return false;
    }
  }
  return !error;
}

} // namespace vesk
