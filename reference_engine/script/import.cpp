#include "core/errors.h"
#include "core/text.h"
#include "host/read_period.h"
#include "output/csv_name.h"
#include "script/arguments.h"
#include "script/restart_file.h"
#include "script/script.h"
#include "script/words.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace reference_engine {

namespace {

struct Statement {
  std::size_t line;
  const Keyword* row;
  Indices indices{};
  Value value;
};

// Skips the byte order mark that some editors put before UTF-8.
std::string read_file(const std::string& name) {
  std::ifstream in(name, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  if (!in) throw InputError(text(name, ": can't be read."));
  std::string bytes = std::move(content).str();
  if (bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff"))
    throw InputError(text(name, ": is text in UTF-16. Save it as UTF-8."));
  if (bytes.starts_with("\xef\xbb\xbf")) bytes.erase(0, 3);
  return bytes;
}

const char* description(Form form) {
  switch (form) {
  case network_form: return "a network file (.vkn)";
  case restart_form: return "a restart file (.rst)";
  default: return "an input file (.inp)";
  }
}

[[noreturn]] void refuse_keyword(const std::string& name, Form form) {
  if (find_keyword(name, input_form) != nullptr)
    throw InputError(text("the keyword ", name, " does not belong in ", description(form)));
  const std::string_view nearest = nearest_keyword(name, form);
  throw InputError(text("the keyword \"", name, "\" is unknown",
                        nearest.empty() ? std::string() : text("; the nearest one is ", nearest)));
}

[[noreturn]] void refuse_word(const std::string& expected, const Word& found) {
  throw InputError(text("expected ", expected, ", found \"", found.text, "\""));
}

// Turns one line into a statement, or none if it has no words. Throws InputError with only the cause.
bool parse_line(std::string_view line, Form form, Statement& statement) {
  const std::vector<Word> words = split_line(line);
  if (words.empty()) return false;
  statement.row = words.front().quoted ? nullptr : find_keyword(words.front().text, form);
  if (statement.row == nullptr) refuse_keyword(words.front().text, form);
  const Keyword& row = *statement.row;
  const std::size_t indices = index_count(row), values = word_count(row.value);
  if (words.size() != 1 + indices + values)
    throw InputError(text(row.name, " takes ", indices, indices == 1 ? " index and " : " indices and ", values,
                          values == 1 ? " value" : " values", ", but ", words.size() - 1, " words follow it"));
  for (std::size_t k = 0; k < indices; ++k) {
    const Word& word = words[1 + k];
    const auto number = parse_integer(word);
    if (!number) refuse_word(text("the number of a ", row.indices[k]->name), word);
    statement.indices[k] = *number;
  }
  for (std::size_t k = 0; k < values; ++k) {
    const Word& word = words[1 + indices + k];
    switch (row.value) {
    case ValueKind::integer:
    case ValueKind::triple:
      if (const auto number = parse_integer(word))
        statement.value.integers[k] = *number;
      else
        refuse_word("a whole number", word);
      break;
    case ValueKind::real:
    case ValueKind::point:
      if (const auto number = parse_real(word))
        statement.value.reals[k] = *number;
      else
        refuse_word("a finite number that single precision can hold", word);
      break;
    case ValueKind::text:
      if (!word.quoted) refuse_word("a text in quotes", word);
      statement.value.text = word.text;
      break;
    }
  }
  return true;
}

class Importer {
public:
  Importer(Host& host, const std::string& file, Form form) : host_(host), file_(file), form_(form) {}

  void run() {
    const std::string content = read_file(file_);
    const auto label = form_ == restart_form ? checked_label(content) : std::nullopt;
    parse(content);
    if (form_ == restart_form) check_state(label, content.ends_with('\n'));
    if (form_ == input_form) switch_outputs_off_after_model();
    for (; next_ < statements_.size(); ++next_) {
      stop_if_cancelled(next_);
      put(statements_[next_]);
    }
  }

private:
  [[noreturn]] void fail(std::size_t line, const std::string& cause) const {
    throw InputError(text(file_, ", line ", line, ": ", cause, "."));
  }

  void stop_if_cancelled(std::size_t statement) const {
    constexpr std::size_t between_questions = 1024;
    if (statement % between_questions == 0) host_.stop_if_cancelled();
  }

  void parse(std::string_view rest) {
    for (std::size_t line = 1; !rest.empty(); ++line) {
      const std::size_t end = std::min(rest.find('\n'), rest.size());
      Statement statement{.line = line, .row = nullptr, .indices = {}, .value = {}};
      try {
        if (parse_line(rest.substr(0, end), form_, statement)) statements_.push_back(std::move(statement));
      } catch (const InputError& error) {
        fail(line, error.what());
      }
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (statements_.empty()) throw InputError(text(file_, ": contains no keyword."));
  }

  // The label, if there is one. A state of another network is refused. One of another time only gets a warning: users
  // may want to start a run from a likely state.
  std::optional<RestartLabel> checked_label(const std::string& content) {
    std::optional<RestartLabel> label;
    try {
      label = read_restart_label(content);
    } catch (const InputError& error) {
      fail(1, error.what());
    }
    if (!label) return label;
    const auto segments = static_cast<std::size_t>(host_.count("NUMSEG")),
               systems = static_cast<std::size_t>(host_.count("NUMSYS"));
    if (label->segments != segments || label->systems != systems)
      throw InputError(text(file_, ": holds ", label->segments, " segments and ", label->systems,
                            " systems, but the data set has ", segments, " and ", systems, "."));
    const Moment start = read_start(host_);
    if (label->moment.days_since(start) != 0)
      host_.warning(text(file_, " holds the state of ", label->moment.iso(' '), ", but the simulation starts at ",
                         start.iso(' '), ". To continue the run that wrote it, set the start to that date and time."));
    return label;
  }

  // Before anything is put: half a state would give results that look right. A file without a label, written by hand,
  // may hold only some of the values.
  void check_state(const std::optional<RestartLabel>& label, bool last_line_ends) {
    std::vector<bool> volumes(label ? label->segments : 0);
    std::vector<bool> concentrations(volumes.size() * (label ? label->systems : 0));
    for (std::size_t i = 0; i < statements_.size(); ++i) {
      stop_if_cancelled(i);
      const Statement& it = statements_[i];
      const bool is_volume = it.row->name == "VOLUME";
      for (std::size_t k = 0; k < index_count(*it.row); ++k) check_index(it, k);
      if (is_volume && !(it.value.reals[0] > 0))
        fail(it.line, text("expected a volume above 0, found ", it.value.reals[0]));
      if (!label) continue;
      const auto first = static_cast<std::size_t>(it.indices[0] - 1), second = static_cast<std::size_t>(it.indices[1]);
      if (is_volume)
        volumes[first] = true;
      else
        concentrations[first * label->segments + second - 1] = true;
    }
    const auto held = std::ranges::count(volumes, true), values = std::ranges::count(concentrations, true);
    if (std::cmp_less(held, volumes.size()) || std::cmp_less(values, concentrations.size()))
      throw InputError(text(file_, ": holds ", held, " of ", volumes.size(), " volumes and ", values, " of ",
                            concentrations.size(), " concentrations, so a part of the file is missing."));
    if (label && !last_line_ends)
      fail(statements_.back().line, "the line does not end, so its last digits may be missing");
  }

  // The model comes first, since choosing it empties the data set. A new data set has all outputs on; the file lists
  // the ones to keep.
  void switch_outputs_off_after_model() {
    Statement& first = statements_.front();
    const auto is_model = [](const Statement& it) { return it.row->name == "MODELTYPE"; };
    if (!is_model(first)) fail(first.line, "MODELTYPE is not the first keyword");
    put(first);
    if (host_.integer("NUMSYS") == 0) fail(first.line, text("there is no model ", first.value.integers[0]));
    next_ = 1;
    if (const auto again = std::find_if(statements_.begin() + 1, statements_.end(), is_model);
        again != statements_.end())
      fail(again->line, "MODELTYPE is given a second time");
    switch_off("NUMOP", "OPISC", "OPENABLED");
    switch_off("NUMCSVOP", "CSVOPISC", "CSVOPENABLED");
  }

  // Only outputs that are on are listed, so the first one is switched off until none is left.
  void switch_off(std::string_view count, std::string_view isc, std::string_view enabled) {
    for (std::int32_t left = host_.integer(count); left > 0; --left) {
      std::int32_t number = host_.integer(isc, 1), off = 0;
      host_.put(enabled, Host::Arguments{&number, &off});
    }
  }

  void put(Statement& statement) {
    const Keyword& row = *statement.row;
    for (std::size_t k = 0; k < index_count(row); ++k) check_index(statement, k);
    check_value(statement);
    host_.put(row.name, statement.value.arguments(row, statement.indices));
    if (row.range == Range::date || row.range == Range::time_of_day) start_.reset(); // may have changed
    if (row.range == Range::size && index_count(row) > 0 && !row.indices[0]->isc.empty())
      sizes_[{row.name, statement.indices[0]}] = statement.value.integers[0];
  }

  // The front end does not check indices, so a wrong one must not get there. It does look up ISC numbers, and one that
  // the model lacks changes nothing.
  void check_index(const Statement& statement, std::size_t k) const {
    const Keyword& row = *statement.row;
    const Index& index = *row.indices[k];
    const std::int32_t number = statement.indices[k];
    if (!index.isc.empty()) return;
    const bool below_isc = k > 0 && index.parents > 0 && !row.indices[k - 1]->isc.empty();
    std::int32_t last = 0;
    if (below_isc) {
      const auto size = sizes_.find({index.count, statement.indices[k - 1]});
      last = size == sizes_.end() ? 0 : size->second;
    } else {
      last = items(host_, row, k, statement.indices);
    }
    if (number >= 1 && number <= last) return;
    fail(statement.line, text("there is no ", index.name, " ", number, ": ",
                              index.count.empty() ? std::string("they are") : text(index.count, " says"), " ", last));
  }

  void check_value(const Statement& statement) {
    const std::array<std::int32_t, 3>& values = statement.value.integers;
    const std::int32_t value = values[0];
    const auto hold = [&](std::int32_t least, std::int32_t most, const char* what) {
      if (value < least || value > most)
        fail(statement.line, text(what, " of ", value, " is not between ", least, " and ", most));
    };
    const auto hold_moment = [&](const Moment& moment, const char* what) {
      if (!moment.reaches(0)) fail(statement.line, text(what, ": ", values[0], " ", values[1], " ", values[2]));
    };
    switch (statement.row->range) {
    case Range::any: break;
    case Range::size: hold(0, Limits::segments, "a number"); break;
    case Range::a_segment: hold(1, host_.integer("NUMSEG"), "a segment"); break;
    case Range::segment_or_outside: hold(0, host_.integer("NUMSEG"), "a segment"); break;
    case Range::date:
      hold_moment({.month = values[0], .day = values[1], .year = values[2]},
                  "not a month, day and year of the calendar");
      break;
    case Range::time_of_day:
      hold_moment({.hour = values[0], .minute = values[1], .second = values[2]}, "not an hour, minute and second");
      break;
    case Range::days: hold_days(statement); break;
    case Range::csv_name:
      if (const std::string fault = csv_name_fault(statement.value.text); !fault.empty()) fail(statement.line, fault);
      break;
    }
    if (statement.row->counts_from_zero_on_get) hold(1, host_.integer("NUMSYS"), "a system");
  }

  void hold_days(const Statement& statement) {
    if (!start_) start_ = read_start(host_);
    if (const auto days = static_cast<double>(statement.value.reals[0]); !start_->reaches(days))
      fail(statement.line, text(days, " days after the start is not a date from ", first_date, " to ", last_date));
  }

  Host& host_;
  const std::string& file_;
  Form form_;
  std::vector<Statement> statements_;
  std::size_t next_ = 0;
  std::optional<Moment> start_;                                             // of the data set; none: not read yet
  std::map<std::pair<std::string_view, std::int32_t>, std::int32_t> sizes_; // sizes put, by size keyword and ISC number
};

} // namespace

void import_script(Host& host, const std::string& file, Form form) {
  try {
    Importer(host, file, form).run();
  } catch (const InputError& error) {
    if (form != restart_form) throw;
    throw InputError(text(error.what(), " Nothing was loaded."));
  }
  if (form == network_form) host.put("FINDBOUND");
}

} // namespace reference_engine
