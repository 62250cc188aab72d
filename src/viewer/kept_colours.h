// Which colour a series has, by the names of its variable and segment; kept from one start of the program to the next.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vesk {

class kept_colours {
public:
  static constexpr std::size_t palette = 10;    // of charts
  static constexpr std::size_t most_kept = 200; // in the file

  using names = std::pair<std::string, std::string>; // of variable and segment

  // `settings`: the file that they are kept in; empty: none.
  explicit kept_colours(std::filesystem::path settings);

  // A colour for each of some series that are shown together, each one once. Every series has the colour that it had
  // before, unless another one here has it and others are free.
  std::vector<std::size_t> colours_of(const std::vector<names>& series);

  // Those asked for since the start before older ones. A failure is silent, like that of all settings.
  void save();

private:
  struct entry {
    std::size_t colour = 0;
    bool is_used = false; // since the start
  };
  const std::filesystem::path settings_;
  std::map<names, entry> colours_;
  bool is_changed_ = false;
};

} // namespace vesk
