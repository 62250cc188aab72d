// Stores the values of a JSON text in their destinations.
//
// A `slot` is a destination together with functions that store JSON values in it; the slot of an object or array gives
// the slots of its members or elements as they are read. So the text is read once, without an intermediate form, and
// every fault is reported with its path.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vesk {

class json_loader;

using json_scalar = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string>;

struct slot_kind;
struct slot {
  void* place = nullptr; // of the type expected by the functions of its kind
  const slot_kind* kind = nullptr;
};

// Null functions are for values that the destination does not accept.
struct slot_kind {
  const char* expected;                                            // for messages, as in "a number"
  void (*take)(json_loader&, void*, json_scalar&&) = nullptr;      // a plain value
  slot (*member)(json_loader&, void*, std::string_view) = nullptr; // an object: the slot of its next member
  slot (*element)(json_loader&, void*, std::size_t) = nullptr;     // an array: the slot of its next element
  void (*opened)(json_loader&, void*) = nullptr;                   // before the first member or element
  void (*closed)(json_loader&, void*, std::size_t) = nullptr;      // after the last one; how many there were
};

class json_loader {
public:
  // Loads a whole text into `root`. Throws json_exception.
  void load(std::string_view json, slot root);

  // For functions of slots: throws the json_exception with the current path.
  [[noreturn]] void fail(const std::string& cause) const;
  [[noreturn]] void fail_unexpected(const char* expected, const std::string& found) const;
  [[noreturn]] void fail_unexpected(const char* expected, const json_scalar& found) const;

  // For `member`: notes that member number `index`, below 64, of the innermost object is present; fails if it already
  // was.
  void note_member(std::size_t index);

private:
  struct events; // of the parser

  struct frame { // an object or array that is open
    slot at;
    bool is_object;
    std::size_t count = 0; // of the members or elements so far, including the current one
    std::string name = {}; // of the current member
    std::bitset<64> given = {};
  };

  slot next_slot();
  void take(json_scalar&& value);
  [[noreturn]] void refuse_number(const std::string& token); // too large for a double
  void open(bool is_object);
  void close();
  void begin_member(const std::string& name);
  std::string path() const;

  slot root_;
  slot member_; // of the member whose name was read last
  std::vector<frame> frames_;
};

} // namespace vesk
