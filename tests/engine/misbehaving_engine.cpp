// An engine whose behaviour is chosen by the model's library text.
#include "vesk_engine.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

vesk_data_callback call;

void put(const char* name, std::int32_t value) {
  call(name, &value, nullptr, nullptr, nullptr, nullptr);
}
void put(const char* name, std::string text) {
  call(name, text.data(), nullptr, nullptr, nullptr, nullptr);
}
std::int32_t get(const char* name) {
  std::int32_t value = -1;
  call(name, &value, nullptr, nullptr, nullptr, nullptr);
  return value;
}

std::string file_name() {
  char file[4096] = "";
  call("GFILENAME", file, nullptr, nullptr, nullptr, nullptr);
  return file;
}

void grid(const std::vector<std::string>& labels, std::int32_t rows) {
  std::int32_t width = 8, columns = static_cast<std::int32_t>(labels.size());
  std::string block;
  for (const std::string& label : labels) block += (label + std::string(8, '\0')).substr(0, 8);
  call("PGRIDINIT", block.data(), &width, &columns, &rows, nullptr);
}

// Fewer rows and other columns than announced for the grid.
void show_short_grid(std::int32_t invert) {
  float values[] = {1, 2, 3, 4, 5, 6};
  std::int32_t columns = 3, rows = 2;
  grid({"one", "two"}, 4);
  call("PGRIDDATA", values, &columns, &rows, &invert, nullptr);
  put("PINFO", "shown");
  while (get("GCANCEL") == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  call("PDONE", nullptr, nullptr, nullptr, nullptr, nullptr);
}

int* volatile nowhere = reinterpret_cast<int*>(8);

int deeper(int depth) {
  volatile char frame[4096];
  frame[0] = static_cast<char>(depth);
  if (!nowhere) return 0; // never
  return depth + deeper(depth + 1) + frame[0];
}

std::string base() {
  const std::string name = file_name();
  return name.substr(0, name.rfind('.'));
}

// A file whose content is the name of the first segment, complete before it has its name.
void publish(const char* ending) {
  std::int32_t segment = 1;
  char content[256] = "";
  call("GSEGNAME", &segment, content, nullptr, nullptr, nullptr);
  const std::string part = base() + ".part";
  std::ofstream(part) << content;
  std::rename(part.c_str(), (base() + ending).c_str());
}

// Intentionally still registered after the engine has returned.
float grid_values[4] = {1, 2, 3, 4};

const std::map<std::string, void (*)()> behaviours{
    {"returns", [] {}},
    {"throws", [] { throw std::runtime_error("division by zero in segment 3"); }},
    {"throws an int", [] { throw 7; }},
    {"reports",
     [] {
       std::int32_t icon = 2, status = 5;
       std::string text = "a failure", description = "halfway";
       put("PINFO", "a line");
       call("PICONINFO", &icon, text.data(), nullptr, nullptr, nullptr);
       call("PSTATUS", description.data(), &status, nullptr, nullptr, nullptr);
       for (std::int32_t percent = 1; percent <= 10; ++percent) put("PPROGRESS", percent);
       float days = 1.5F;
       call("PDAYS", &days, nullptr, nullptr, nullptr, nullptr);
       put("PRETURNCODE", 3);
       put("PRETURNCODE", 4);
       put("PFILENAME", "other.vki");
     }},
    {"grid without DONE",
     [] {
       grid({"one", "two", "three"}, 2);
       grid({"only"}, 2);
       std::int32_t columns = 2, rows = 2, invert = 0;
       call("PGRIDDATA", grid_values, &columns, &rows, &invert, nullptr);
       call("PGRIDUPDATE", nullptr, nullptr, nullptr, nullptr, nullptr);
     }},
    {"shows a grid",
     [] {
       grid({"one", "two"}, 2);
       std::int32_t columns = 2, rows = 2, invert = 0;
       call("PGRIDDATA", grid_values, &columns, &rows, &invert, nullptr);
       put("PPROGRESS", 50);
       call("PGRIDUPDATE", nullptr, nullptr, nullptr, nullptr, nullptr);
       put("PINFO", "shown");
       while (get("GCANCEL") == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
       call("PDONE", nullptr, nullptr, nullptr, nullptr, nullptr);
     }},
    {"writes results", // a copy of another file
     [] {
       if (const char* file = std::getenv("RESULTS_TO_COPY"))
         std::filesystem::copy_file(file, std::filesystem::path(file_name()).replace_extension(".nc"));
     }},
    {"crashes", [] { *nowhere = 1; }},
    {"overflows its stack", [] { put("PINFO", std::to_string(deeper(1))); }},
    {"aborts", [] { std::abort(); }},
    {"calls exit", [] { std::exit(0); }},
    {"ends its thread", [] { pthread_exit(nullptr); }},
    {"throws on its own thread", [] { std::thread([] { throw std::runtime_error("no convergence"); }).join(); }},
    {"shows a short grid", [] { show_short_grid(0); }},
    {"shows a short grid inverted", [] { show_short_grid(1); }},
    {"throws with a grid of its own",
     [] {
       // On the heap, as in any engine: destroyed when the exception leaves.
       std::vector<float> values(1 << 16, 1.0F);
       grid({"one", "two"}, 4); // more rows than the array has
       std::int32_t columns = 2, rows = 2, invert = 0;
       call("PGRIDDATA", values.data(), &columns, &rows, &invert, nullptr);
       put("PINFO", "shown");
       throw std::runtime_error("too deep");
     }},
    {"waits for cancel",
     [] {
       put("PINFO", "waiting");
       while (get("GCANCEL") == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
       put("PRETURNCODE", 9);
     }},
    {"calls from its own thread", [] { std::thread([] { put("PINFO", "from another thread"); }).join(); }},
    {"says run", [] { put("PINFO", "run"); }},
    {"publishes results", [] { publish(".nc"); }},
    {"writes into its results", [] { std::ofstream(base() + ".nc") << "written over"; }},
    {"writes cancelled results",
     [] {
       put("PINFO", "waiting");
       while (get("GCANCEL") == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
       publish(".cancelled.nc");
     }},
    {"throws after a cancel",
     [] {
       put("PINFO", "waiting");
       while (get("GCANCEL") == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
       throw std::runtime_error("too late");
     }},
};

// A job with the file "code-3.inp" puts return code 3, one with "renames.vkn" another file name, one with "endless.inp"
// an end outside the calendar; one with "waits.inp" waits for a cancel, and one with "held.vkn" until that file is
// removed. One with "one-segment" leaves only that, and one with "fails" throws.
void obey_file_name() {
  const std::string file = file_name();
  const auto has = [&file](const char* word) { return file.find(word) != file.npos; };
  if (const auto code = file.find("code-"); code != file.npos) put("PRETURNCODE", std::atoi(file.c_str() + code + 5));
  if (has("renames")) put("PFILENAME", "engine.vki");
  float days = 1e20F;
  if (has("endless")) call("PENDJULIAN", &days, nullptr, nullptr, nullptr, nullptr);
  const auto wait_while = [](const std::function<bool()>& goes_on) {
    while (get("GCANCEL") == 0 && goes_on()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  };
  if (has("waits")) put("PINFO", "waiting"), wait_while([] { return true; });
  if (has("held")) wait_while([&file] { return std::filesystem::exists(file); });
  if (has("one-segment")) put("PNUMSEG", 1);
  if (has("fails")) throw std::runtime_error("no network in the file");
}

void behave(const std::string& name, vesk_data_callback data_callback) {
  call = data_callback;
  const auto found = behaviours.find(name);
  if (found != behaviours.end()) found->second();
}

// Reports its name, with the current name of the first segment, if there is one, and renames that segment to it.
void rename_first_segment(const std::string& name, vesk_data_callback data_callback) {
  call = data_callback;
  std::int32_t segment = 1;
  char before[256] = "";
  std::string after = name;
  call("GSEGNAME", &segment, before, nullptr, nullptr, nullptr);
  call("PSEGNAME", &segment, after.data(), nullptr, nullptr, nullptr);
  put("PINFO", name + " after " + before);
}

} // namespace

extern "C" {
void execute_model(const char* library, vesk_data_callback data_callback) {
  behave(library, data_callback);
}
void get_maximum_parameters(const char* library, vesk_data_callback data_callback) {
  behave(library, data_callback);
  put("PMAXSEG", 1);
}
void import_export(vesk_data_callback data_callback, int flag) {
  call = data_callback;
  obey_file_name();
  if (file_name().find("hydro") != std::string::npos) put("PHYDROFILE", "flows.hyd");
  if (file_name().find("abort") != std::string::npos) std::abort();
  put("PINFO", flag == 1 ? "import " + std::to_string(get("GIMPORT")) : "export " + std::to_string(get("GIMPORT")));
}
void import_network(vesk_data_callback data_callback) {
  call = data_callback;
  obey_file_name();
  rename_first_segment("network", data_callback);
}
void load_restart_file(vesk_data_callback data_callback) {
  call = data_callback;
  obey_file_name();
  rename_first_segment("restart", data_callback);
}
void read_hyd_file(vesk_data_callback data_callback) {
  rename_first_segment("hyd", data_callback);
}
}
