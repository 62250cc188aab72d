#include "runs/value_path.h"

#include "dataset/any_case.h"
#include "dataset/text_encoding.h"
#include "platform/nearest_name.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <vector>

namespace vesk {

namespace {

using data_set = prevesk_dataset_data_type;

bool is_number(std::string_view token) {
  return !token.empty() && token.find_first_not_of("0123456789") == token.npos;
}
bool is_name(std::string_view token) {
  return token.size() >= 2 && token.front() == '{' && token.back() == '}';
}
bool numbers_an_item(std::string_view token) {
  return is_number(token) || is_name(token);
}

// Splits at points outside braces.
std::vector<std::string_view> split(std::string_view path) {
  std::vector<std::string_view> tokens;
  std::size_t begin = 0;
  bool in_name = false;
  for (std::size_t i = 0; i <= path.size(); ++i) {
    if (i < path.size() && path[i] == '{') in_name = true;
    if (i < path.size() && path[i] == '}') in_name = false;
    if (i < path.size() && (in_name || path[i] != '.')) continue;
    tokens.push_back(path.substr(begin, i - begin));
    begin = i + 1;
  }
  return tokens;
}

std::string joined(const std::vector<std::string>& tokens) {
  std::string path;
  for (const std::string& token : tokens) path += (path.empty() ? "" : ".") + token;
  return path;
}

bool matches(const value_row& row, const std::vector<std::string_view>& tokens) {
  const auto pattern = split(row.pattern);
  return std::ranges::equal(pattern, tokens, [](std::string_view wanted, std::string_view given) {
    return wanted == "#" ? numbers_an_item(given) : wanted == given;
  });
}

// The row's pattern filled with the numbers and names of a path, 0 where the path is too short.
std::string filled_pattern(const value_row& row, const std::vector<std::string_view>& tokens) {
  std::vector<std::string> filled;
  std::size_t at = 0;
  for (const std::string_view word : split(row.pattern)) {
    if (word == "#") {
      while (at < tokens.size() && !numbers_an_item(tokens[at])) ++at;
      filled.emplace_back(at < tokens.size() ? tokens[at++] : "0");
    } else {
      filled.emplace_back(word);
    }
  }
  return joined(filled);
}

bool exists(const data_set& data, std::string_view path) {
  try {
    find_value(data, path);
    return true;
  } catch (const value_error&) { // no such item
    return false;
  }
}

// "constant, parameter, segment and start"
std::string first_words() {
  std::vector<std::string_view> words;
  for (const value_row& row : value_rows())
    if (const auto word = split(row.pattern).front(); std::ranges::count(words, word) == 0) words.push_back(word);
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i)
    text.append(i == 0 ? "" : i + 1 == words.size() ? " or " : ", ").append(words[i]);
  return text;
}

[[noreturn]] void refuse_unknown(const data_set& data, std::string_view path,
                                 const std::vector<std::string_view>& tokens) {
  std::vector<std::string> candidates;
  for (const value_row& row : value_rows()) candidates.push_back(filled_pattern(row, tokens));
  const std::vector<std::string_view> views(candidates.begin(), candidates.end());
  const std::string hint = exists(data, nearest_name(path, views)) ? nearest_hint(path, views) : std::string();
  throw value_error("Unknown path " + std::string(path) +
                    (hint.empty() ? "; paths begin with " + first_words() + ", and --list-paths lists them" : hint) +
                    ".");
}

// Finds items of one list, for the messages about one path.
class item_finder {
public:
  item_finder(const data_set& data, const numbered_list& list, const value_positions& at, std::string_view path)
      : data_(data), list_(list), at_(at), path_(path), size_(list.size(data, at)) {}

  std::size_t find(std::string_view token) const {
    if (size_ == 0) fail("there is no " + std::string(list_.noun) + ".");
    return is_number(token) ? by_number(token) : by_name(token.substr(1, token.size() - 2));
  }

  std::int64_t number(std::size_t i) const {
    return list_.number ? list_.number(data_, at_, i) : static_cast<std::int64_t>(i);
  }
  std::string name(std::size_t i) const { return list_.name ? shown_text(list_.name(data_, at_, i)) : std::string(); }

private:
  std::size_t by_number(std::string_view token) const {
    std::int64_t wanted = 0;
    constexpr std::int64_t beyond_all = std::int64_t{1} << 40; // differences of greater numbers could overflow
    const bool too_large = std::from_chars(token.data(), token.data() + token.size(), wanted).ec != std::errc();
    if (too_large || wanted > beyond_all) wanted = beyond_all;
    std::size_t nearest = 0;
    for (std::size_t i = 0; i < size_; ++i) {
      if (number(i) == wanted) return i;
      if (std::abs(number(i) - wanted) < std::abs(number(nearest) - wanted)) nearest = i;
    }
    const std::string its_name = name(nearest);
    fail("there is no " + std::string(list_.noun) + " " + std::string(token) + "; the nearest is " +
         std::to_string(number(nearest)) + (its_name.empty() ? "" : " (" + its_name + ")") + ".");
  }

  std::size_t by_name(std::string_view wanted) const {
    const std::string capitals = in_capitals(wanted);
    std::vector<std::string> names;
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < size_; ++i) {
      names.push_back(in_capitals(name(i)));
      if (names.back() == capitals) found.push_back(i);
    }
    if (found.size() == 1) return found.front();
    if (found.empty()) {
      const std::vector<std::string_view> views(names.begin(), names.end());
      const std::string_view nearest = nearest_name(capitals, views);
      const auto at = static_cast<std::size_t>(std::ranges::find(names, nearest) - names.begin());
      fail("no " + std::string(list_.noun) + " has the name {" + std::string(wanted) + "}; the nearest is {" +
           name(at) + "}.");
    }
    fail(std::to_string(found.size()) + " items have the name {" + std::string(wanted) + "}, such as " +
         std::string(list_.noun) + " " + std::to_string(number(found[0])) + " and " + std::to_string(number(found[1])) +
         "; give the number.");
  }

  [[noreturn]] void fail(const std::string& cause) const { throw value_error(std::string(path_) + ": " + cause); }

  const data_set& data_;
  const numbered_list& list_;
  const value_positions& at_;
  std::string_view path_;
  std::size_t size_;
};

// The pattern up to and including its "#" number `count`, counted from 0.
std::string_view pattern_up_to(std::string_view pattern, std::size_t count) {
  std::size_t end = 0;
  for (std::size_t i = 0; i <= count; ++i) end = pattern.find('#', end) + 1;
  return pattern.substr(0, end);
}

std::string without_middle(const std::string& sentence) {
  constexpr std::size_t longest = 3000, last = 500; // bytes
  if (sentence.size() <= longest) return sentence;
  std::size_t rest = sentence.size() - last;
  while (rest < sentence.size() && (sentence[rest] & 0xc0) == 0x80) ++rest; // not within a character
  return sentence.substr(0, whole_characters(sentence, longest - last)) + " ... " + sentence.substr(rest);
}

} // namespace

value_error::value_error(const std::string& sentence) : std::runtime_error(without_middle(sentence)) {}

std::size_t end_of_path(std::string_view text) {
  bool in_name = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (in_name || c == '{') {
      in_name = c != '}';
      continue;
    }
    const bool fits =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.';
    if (!fits) return i;
  }
  return text.size();
}

value_ref find_value(const data_set& data, std::string_view path) {
  if (end_of_path(path) != path.size())
    throw value_error("\"" + std::string(path) +
                      "\" is not a path: it has words and numbers between points, and names in braces.");
  const auto tokens = split(path);
  const auto rows = value_rows();
  const auto row = std::ranges::find_if(rows, [&](const value_row& it) { return matches(it, tokens); });
  if (row == rows.end()) refuse_unknown(data, path, tokens);
  value_ref ref{.row = &*row};
  std::vector<std::string> numbered(tokens.begin(), tokens.end());
  std::size_t depth = 0;
  for (std::string& token : numbered) {
    if (!numbers_an_item(token)) continue;
    const item_finder items(data, list_of(pattern_up_to(row->pattern, depth)), ref.at, path);
    const std::size_t position = items.find(token);
    token = std::to_string(items.number(position));
    ref.at[depth++] = position;
  }
  ref.path = joined(numbered);
  return ref;
}

namespace {

void visit_from(const data_set& data, const value_ref& ref, std::size_t depth,
                const std::function<void(const value_ref&)>& visit) {
  const std::size_t hash = ref.path.find('#');
  if (hash == ref.path.npos) return visit(ref);
  const numbered_list& list = list_of(pattern_up_to(ref.row->pattern, depth));
  const item_finder items(data, list, ref.at, ref.path);
  const std::size_t size = list.size(data, ref.at);
  for (std::size_t i = 0; i < size; ++i) {
    value_ref next = ref;
    next.path.replace(hash, 1, std::to_string(items.number(i)));
    next.at[depth] = i;
    visit_from(data, next, depth + 1, visit);
  }
}

} // namespace

void for_each_value(const data_set& data, const std::function<void(const value_ref&)>& visit) {
  for (const value_row& row : value_rows()) visit_from(data, {&row, {}, std::string(row.pattern)}, 0, visit);
}

std::string name_of_value(const data_set& data, const value_ref& ref) {
  std::string name;
  std::size_t depth = 0;
  std::string_view last;
  for (const std::string_view word : split(ref.row->pattern)) {
    if (word == "#") {
      const item_finder items(data, list_of(pattern_up_to(ref.row->pattern, depth)), ref.at, ref.path);
      const std::string part = items.name(ref.at[depth]);
      name += (name.empty() ? "" : ", ") + (part.empty() ? std::to_string(items.number(ref.at[depth])) : part);
      ++depth;
    }
    last = word;
  }
  if (name.empty()) return ref.path;
  return last == "#" ? name : name + ", " + std::string(last);
}

} // namespace vesk
