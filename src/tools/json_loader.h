// Leads the values of a JSON text to the places that they are for.
//
// A `slot` is a place with the way in which JSON values go into it; the slot of an object or array gives those of its
// members or elements, one by one as they come. So the text is read once, nothing is built in between, and whatever
// is wrong is named by its path.
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
  void* place = nullptr; // of the type that the functions of its kind know
  const slot_kind* kind = nullptr;
};

// The functions that are null are for what such a place does not take.
struct slot_kind {
  const char* expected;                                            // for messages, as in "a number"
  void (*take)(json_loader&, void*, json_scalar&&) = nullptr;      // a plain value
  slot (*member)(json_loader&, void*, std::string_view) = nullptr; // an object: the slot of its next member
  slot (*element)(json_loader&, void*, std::size_t) = nullptr;     // an array: the slot of its next element
  void (*opened)(json_loader&, void*) = nullptr;                   // before the first member or element
  void (*closed)(json_loader&, void*, std::size_t) = nullptr;      // after the last of so many
};

class json_loader {
public:
  // Loads a whole text into `root`. Throws json_exception.
  void load(std::string_view json, slot root);

  // For the functions of slots: throws the json_exception that names the present path.
  [[noreturn]] void fail(const std::string& cause) const;
  [[noreturn]] void fail_unexpected(const char* expected, const std::string& found) const;
  [[noreturn]] void fail_unexpected(const char* expected, const json_scalar& found) const;

  // For `member`: notes that the innermost object's member number `index`, below 64, is being given, and fails when it
  // has been before.
  void note_member(std::size_t index);

private:
  struct events; // of the parser

  struct frame { // an object or array that is open
    slot at;
    bool is_object;
    std::size_t count = 0; // of the members or elements so far, the present one included
    std::string name = {}; // of the present member
    std::bitset<64> given = {};
  };

  slot next_slot();
  void take(json_scalar&& value);
  [[noreturn]] void refuse_number(const std::string& token); // one too large for a double
  void open(bool is_object);
  void close();
  void begin_member(const std::string& name);
  std::string path() const;

  slot root_;
  slot member_; // of the member whose name came last
  std::vector<frame> frames_;
};

} // namespace vesk
