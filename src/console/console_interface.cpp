#include "console/console_interface.h"

#include "console/interrupts.h"
#include "dataset/text_encoding.h"
#include "platform/file_io.h"
#include "query/import_query.h"

#include <algorithm>
#include <cerrno>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace vesk {

namespace {

// The text of a box on one line: line ends (CR and LF), with the blanks around them, become one blank. Other line ends,
// in texts from outside, are escaped when printed.
std::string on_one_line(const std::string& text) {
  std::string line;
  bool at_line_end = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (text.compare(i, 2, "\r\n") == 0) {
      at_line_end = true;
      ++i;
    } else if (!at_line_end || c != ' ') {
      if (at_line_end && !line.empty() && line.back() != ' ') line += ' ';
      at_line_end = false;
      line += c;
    }
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

int terminal_width(std::FILE* stream) {
  winsize size{};
  if (ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 1) return size.ws_col;
  return 80;
}

} // namespace

console_interface::console_interface(settings s, std::FILE* out, std::FILE* err) : settings_(s), out_(out), err_(err) {
  if (settings_.progress == progress_style::automatic)
    settings_.progress = isatty(fileno(err_)) ? progress_style::bar : progress_style::plain;
  if (settings_.quiet) settings_.progress = progress_style::none;
}

void console_interface::print(std::FILE* stream, const std::string& text) {
  wipe_bar();
  const std::string line = printable_text(text) + "\n";
  if (stream == out_) {
    write(line);
  } else {
    std::fputs(line.c_str(), stream);
    std::fflush(stream);
  }
  refresh_progress();
}

void console_interface::write(const std::string& text) {
  if (std::fputs(text.c_str(), out_) >= 0 && std::fflush(out_) == 0) return;
  if (std::exchange(lost_output_, true)) return; // reported only once
  say_failure(file_failure("write", "standard output", errno));
}

void console_interface::say_failure(const std::string& text) {
  const bool names_row = row_.empty() || text.find(row_) != std::string::npos;
  print(err_, "vesk-run: " + (names_row ? text : row_ + ": " + text));
}

void console_interface::say(const std::string& text) {
  if (!settings_.quiet) print(out_, text);
}

box_answer console_interface::message_box(const std::string& title, const std::string& text, box_buttons buttons) {
  const std::string line = on_one_line(text);
  const bool names_subject = subject_.empty() || line.find(subject_) != std::string::npos;
  say_failure((title == "Error" ? std::string() : title + ": ") + (names_subject ? line : subject_ + ": " + line));
  if (buttons == box_buttons::ok) return box_answer::ok;
  if (settings_.yes) return buttons == box_buttons::ok_cancel ? box_answer::ok : box_answer::yes;
  return buttons == box_buttons::yes_no ? box_answer::no : box_answer::cancel;
}

// Queries leave nothing half-written, so a signal need not wait for them.
bool console_interface::run_long_work(const std::string& what, const std::function<void(work_progress&)>& work) {
  const ends_at_once on_a_signal;
  return user_interface::run_long_work(what, work);
}

void console_interface::add_info_line(const std::string& text, int icon) {
  if (icon == icon_failure)
    say_failure(text);
  else
    say(text);
}

void console_interface::query_executed(const std::string& series, const import_query_descriptor& query,
                                       const query_report& report) {
  ++queries_executed_;
  if (report.points == 0)
    say_failure(in_words(series, query, report));
  else
    say(in_words(series, query, report));
}

bool console_interface::may_go_on_without_rows(int series) {
  if (settings_.yes) return true;
  say_failure((series == 1 ? "Stopped: a query" : "Stopped: " + std::to_string(series) + " queries") +
              " found no values. Use --yes to continue without them.");
  return false;
}

void console_interface::begin_progress() {
  progress_runs_ = true;
  percent_ = highest_ = last_tenth_ = 0;
  info_label_.clear();
  time_remaining_.clear();
}

void console_interface::end_progress(bool good) {
  if (good && highest_ > 0) set_progress(100); // the engine's last report is before its end
  wipe_bar();
  progress_runs_ = false;
}

void console_interface::set_progress(int percent) {
  percent_ = std::clamp(percent, 0, 100);
  highest_ = std::max(highest_, percent_);
  if (!progress_runs_ || settings_.progress != progress_style::plain || percent_ / 10 <= last_tenth_) return;
  last_tenth_ = percent_ / 10;
  std::fprintf(err_, "%d %%\n", last_tenth_ * 10);
}

void console_interface::refresh_progress() {
  if (!progress_runs_ || settings_.progress != progress_style::bar) return;
  const std::string words = printable_text(std::to_string(percent_) + " %" + time_remaining_ +
                                           (info_label_.empty() ? "" : "  ") + info_label_);
  const int width = terminal_width(err_) - 1;
  const int cells = std::clamp(width - static_cast<int>(words.size()) - 3, 8, 30); // the space left by the words
  std::string line = "[";
  for (int i = 0; i < cells; ++i) line += i * 100 < percent_ * cells ? '#' : '.';
  line += "] " + words;
  line.resize(std::min(line.size(), static_cast<std::size_t>(width)));
  std::fprintf(err_, "\r\033[K%s", line.c_str());
  std::fflush(err_);
  bar_is_drawn_ = true;
}

void console_interface::wipe_bar() {
  if (!bar_is_drawn_) return;
  std::fprintf(err_, "\r\033[K");
  std::fflush(err_);
  bar_is_drawn_ = false;
}

} // namespace vesk
