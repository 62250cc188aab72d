// A job on the river that records the calls of its keywords, and calls of the engine written as text.
#pragma once

#include "river.h"

#include "idle_job.h"
#include "shell/callback.h"
#include "shell/shell_interface.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <functional>
#include <sstream>
#include <stdexcept>

namespace vesk {

class noting_job : public idle_job {
public:
  explicit noting_job(bool with_log = true) : with_log_(with_log) { data = river(); }

  std::vector<std::string> log;   // without time stamps
  std::vector<std::string> notes; // everything else, in order
  bool traced = false;
  bool cancelled = false;
  std::function<void()> on_message;

  // The lines logged since the last call.
  std::vector<std::string> take_log() { return std::exchange(log, {}); }
  std::vector<std::string> take_notes() { return std::exchange(notes, {}); }

  shell_interface& shell() override { return shell_; }
  bool is_import() const override { return true; }
  bool cancel_requested() const override { return cancelled; }
  std::int32_t elapsed_seconds() const override { return 12; }
  std::string input_file_name() const override { return file_name_; }
  void set_file_name(std::string_view name) override { file_name_ = name; }
  void add_info_line(std::string_view text, std::int32_t icon) override {
    if (on_message) on_message();
    note("line", icon, text);
  }
  void clear_info_lines() override { note("clear"); }
  void set_progress(std::int32_t percent) override { note("progress", percent); }
  void set_simulation_time(double date_time) override { note("time", date_time); }
  void mark_grid_changed() override { note("grid changed"); }
  void set_status(std::string_view text, std::int32_t status) override { note("status", text, status); }
  void initialize_grid(std::vector<std::string> labels, std::int32_t rows) override {
    note("grid", rows);
    for (const std::string& label : labels) note("label", label);
  }
  void set_grid_data(const float* values, std::int32_t columns, std::int32_t rows, bool invert) override {
    note("grid data", values[0], columns, rows, invert);
  }
  void clear_grid_data() override { note("grid stop"); }
  std::int32_t diagnostic_level() const override { return level_; }
  void set_diagnostic_level(std::int32_t level) override { level_ = level; }
  std::int32_t window_handle() const override { return 77; }
  void set_return_code(std::int32_t code) override { note("return", code); }
  void request_read_hyd_file() override { note("read hyd file"); }
  bool logging_enabled() const override { return traced; }
  bool has_log() const override { return with_log_; }
  void log_line(std::string_view text) override {
    last_line = text;
    log.emplace_back(text.substr(std::min(text.size(), text.find(": ") + 2)));
  }
  void fail(std::string_view cause) override { note("fail", cause); }

  std::string last_line; // with its time stamp

private:
  template <class... Value>
  void note(const Value&... value) {
    std::ostringstream text;
    const char* gap = "";
    ((text << std::exchange(gap, " ") << value), ...);
    notes.push_back(text.str());
  }

  shell_interface shell_;
  std::string file_name_ = "river.vki";
  std::int32_t level_ = 0;
  const bool with_log_;
};

// Calls by text: a name, then its arguments. 7 is an integer, 7. or 7.5 a real, 'text' a text in a large buffer, with _
// for a blank. Returns the arguments after the call.
inline std::string call(const std::string& line) {
  union word {
    std::int32_t integer;
    float real;
    char text[512];
  };
  std::istringstream tokens(line);
  std::string name, token, kinds;
  tokens >> name;
  std::array<word, 5> words;
  for (; tokens >> token; kinds += token[0] == '\'' ? 's' : token.find_first_of(".n") == token.npos ? 'i' : 'r') {
    word& to = words.at(kinds.size());
    std::memset(&to, 0, sizeof to);
    for (char& c : token) c = c == '_' ? ' ' : c;
    if (token[0] == '\'')
      std::strcpy(to.text, token.substr(1, token.size() - 2).c_str());
    else if (token.find_first_of(".n") == token.npos)
      to.integer = std::stoi(token);
    else
      to.real = std::stof(token);
  }
  data_callback(name.c_str(), &words[0], &words[1], &words[2], &words[3], &words[4]);
  std::string answer;
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(words[i].real));
    answer += (i ? " " : "") + (kinds[i] == 's'   ? std::string(words[i].text)
                                : kinds[i] == 'r' ? text
                                                  : std::to_string(words[i].integer));
  }
  return answer;
}

// A call and its result.
struct exchange {
  const char* call;
  const char* answer;
};

} // namespace vesk
