#include "tools/json_loader.h"

#include "tools/dataset_json.h"

#include <nlohmann/json.hpp>

namespace vesk {

// The parser's events; true continues.
struct json_loader::events {
  json_loader& loader;

  bool null() { return take(nullptr); }
  bool boolean(bool value) { return take(value); }
  bool number_integer(std::int64_t value) { return take(value); }
  bool number_unsigned(std::uint64_t value) { return take(value); }
  bool number_float(double value, const std::string&) { return take(value); }
  bool string(std::string& value) { return take(std::move(value)); }
  bool binary(std::vector<std::uint8_t>&) { return false; } // does not occur in JSON
  bool start_object(std::size_t) { return loader.open(true), true; }
  bool start_array(std::size_t) { return loader.open(false), true; }
  bool end_object() { return loader.close(), true; }
  bool end_array() { return loader.close(), true; }
  bool key(std::string& name) { return loader.begin_member(name), true; }
  bool parse_error(std::size_t, const std::string& token, const nlohmann::json::exception& error) {
    if (error.id == number_overflow) loader.refuse_number(token);
    const std::string_view text = error.what();
    const std::size_t prefix = text.find("] "); // the library's error number
    throw json_exception(std::string(text.substr(prefix == text.npos ? 0 : prefix + 2)) + ".");
  }

private:
  static constexpr int number_overflow = 406; // the library's error number

  bool take(json_scalar&& value) { return loader.take(std::move(value)), true; }
};

void json_loader::load(std::string_view json, slot root) {
  root_ = root;
  frames_.clear();
  events handler{*this};
  nlohmann::json::sax_parse(json.begin(), json.end(), &handler);
}

slot json_loader::next_slot() {
  if (frames_.empty()) return root_;
  frame& innermost = frames_.back();
  if (innermost.is_object) return member_;
  return innermost.at.kind->element(*this, innermost.at.place, innermost.count++);
}

void json_loader::take(json_scalar&& value) {
  const slot to = next_slot();
  if (!to.kind->take) fail_unexpected(to.kind->expected, value);
  to.kind->take(*this, to.place, std::move(value));
}

void json_loader::refuse_number(const std::string& token) {
  next_slot();
  fail(token + " is outside -1.7976931348623157e+308 to 1.7976931348623157e+308.");
}

void json_loader::open(bool is_object) {
  const slot to = next_slot();
  if (is_object ? !to.kind->member : !to.kind->element)
    fail_unexpected(to.kind->expected, std::string(is_object ? "an object" : "an array"));
  if (to.kind->opened) to.kind->opened(*this, to.place);
  frames_.push_back({to, is_object});
}

void json_loader::close() {
  const slot done = frames_.back().at;
  const std::size_t count = frames_.back().count;
  frames_.pop_back();
  if (done.kind->closed) done.kind->closed(*this, done.place, count);
}

void json_loader::begin_member(const std::string& name) {
  frame& innermost = frames_.back();
  innermost.name = name;
  ++innermost.count;
  member_ = innermost.at.kind->member(*this, innermost.at.place, name);
}

void json_loader::note_member(std::size_t index) {
  if (frames_.back().given.test(index)) fail("given twice.");
  frames_.back().given.set(index);
}

std::string json_loader::path() const {
  std::string result;
  for (const frame& outer : frames_) {
    if (outer.count == 0) break; // nothing read yet
    if (outer.is_object)
      result += (result.empty() ? "" : ".") + outer.name;
    else
      result += "[" + std::to_string(outer.count - 1) + "]";
  }
  return result;
}

void json_loader::fail(const std::string& cause) const {
  const std::string where = path();
  throw json_exception(where.empty() ? cause : where + ": " + cause);
}

void json_loader::fail_unexpected(const char* expected, const std::string& found) const {
  fail(std::string("expected ") + expected + ", found " + found + ".");
}

void json_loader::fail_unexpected(const char* expected, const json_scalar& found) const {
  struct description {
    std::string operator()(std::nullptr_t) const { return "null"; }
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(std::uint64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return nlohmann::json(number).dump(); }
    std::string operator()(const std::string&) const { return "a text"; }
  };
  fail_unexpected(expected, std::visit(description{}, found));
}

} // namespace vesk
