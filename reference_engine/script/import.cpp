#include "core/errors.h"
#include "core/text.h"
#include "script/arguments.h"
#include "script/script.h"
#include "script/words.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
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

std::string read_file(const std::string& name) {
  std::ifstream in(name, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  if (!in) throw InputError(text(name, ": can't be read."));
  return std::move(content).str();
}

// Turns one line into a statement; none for a line without words. Throws InputError with the cause alone.
bool parse_line(std::string_view line, Form form, Statement& statement) {
  const std::vector<Word> words = split_line(line);
  if (words.empty()) return false;
  const std::string& name = words.front().text;
  statement.row = words.front().quoted ? nullptr : find_keyword(name, form);
  if (statement.row == nullptr)
    throw InputError(
        text("the keyword \"", name, "\" is not known here; the nearest one is ", nearest_keyword(name, form)));
  const Keyword& row = *statement.row;
  const std::size_t indices = index_count(row), values = word_count(row.value);
  if (words.size() != 1 + indices + values)
    throw InputError(text(name, " takes ", indices, indices == 1 ? " index and " : " indices and ", values,
                          values == 1 ? " value" : " values", ", but ", words.size() - 1, " words follow it"));
  for (std::size_t k = 0; k < indices; ++k) {
    const Word& word = words[1 + k];
    const auto number = parse_integer(word);
    if (!number) throw InputError(text("\"", word.text, "\" is no ", row.indices[k]->name, " number"));
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
        throw InputError(text("\"", word.text, "\" is no integer"));
      break;
    case ValueKind::real:
    case ValueKind::point:
      if (const auto number = parse_real(word))
        statement.value.reals[k] = *number;
      else
        throw InputError(text("\"", word.text, "\" is no number that single precision can hold"));
      break;
    case ValueKind::text:
      if (!word.quoted) throw InputError(text("the text ", word.text, " has no quotes"));
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
    parse(read_file(file_));
    if (form_ == input_form) switch_outputs_off_after_model();
    for (; next_ < statements_.size(); ++next_) {
      constexpr std::size_t between_questions = 1024;
      if (next_ % between_questions == 0) host_.stop_if_cancelled();
      put(statements_[next_]);
    }
  }

private:
  [[noreturn]] void fail(std::size_t line, const std::string& cause) const {
    throw InputError(text(file_, ", line ", line, ": ", cause, "."));
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
    if (statements_.empty()) throw InputError(text(file_, ": holds no keyword."));
  }

  // The model comes first, since choosing it empties the data set. Outputs are on in a new data set; the file names
  // those that it wants.
  void switch_outputs_off_after_model() {
    Statement& first = statements_.front();
    const auto is_model = [](const Statement& it) { return it.row->name == "MODELTYPE"; };
    if (!is_model(first)) fail(first.line, "MODELTYPE is not the first keyword");
    put(first);
    if (host_.integer("NUMSYS") == 0) fail(first.line, text("there is no model ", first.value.integers[0]));
    next_ = 1;
    if (const auto again = std::find_if(statements_.begin() + 1, statements_.end(), is_model);
        again != statements_.end())
      fail(again->line, "MODELTYPE stands a second time");
    switch_off("NUMOP", "OPISC", "OPENABLED");
    switch_off("NUMCSVOP", "CSVOPISC", "CSVOPENABLED");
  }

  // Only what is on can be seen, so the first one is switched off until none is left.
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
    if (row.range == Range::size && index_count(row) > 0 && !row.indices[0]->isc.empty())
      sizes_[{row.name, statement.indices[0]}] = statement.value.integers[0];
  }

  // The front end does not look at indices, so a wrong one must not get there. An ISC number is looked up there, and
  // one that the model lacks changes nothing.
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

  void check_value(const Statement& statement) const {
    const std::int32_t value = statement.value.integers[0];
    const auto hold = [&](std::int32_t least, std::int32_t most, const char* what) {
      if (value < least || value > most)
        fail(statement.line, text(what, " of ", value, " does not lie between ", least, " and ", most));
    };
    switch (statement.row->range) {
    case Range::any: break;
    case Range::size: hold(0, Limits::segments, "a number"); break;
    case Range::a_segment: hold(1, host_.integer("NUMSEG"), "a segment"); break;
    case Range::segment_or_outside: hold(0, host_.integer("NUMSEG"), "a segment"); break;
    }
    if (statement.row->counts_from_zero_on_get) hold(1, host_.integer("NUMSYS"), "a system");
  }

  Host& host_;
  const std::string& file_;
  Form form_;
  std::vector<Statement> statements_;
  std::size_t next_ = 0;
  std::map<std::pair<std::string_view, std::int32_t>, std::int32_t> sizes_; // put below ISC numbers, by size keyword
};

} // namespace

void import_script(Host& host, const std::string& file, Form form) {
  Importer(host, file, form).run();
  if (form == network_form) host.put("FINDBOUND");
}

} // namespace reference_engine
