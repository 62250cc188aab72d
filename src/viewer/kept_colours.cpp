#include "viewer/kept_colours.h"

#include "platform/settings_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace vesk {

namespace {

constexpr const char* section = "SOFTWARE\\TALMO\\VESK\\7.0\\SeriesColours";

std::string key(std::size_t position) {
  return "Series" + std::to_string(position + 1);
}

} // namespace

// A value is the colour, the variable and the segment, with tabs between them.
kept_colours::kept_colours(std::filesystem::path settings) : settings_(std::move(settings)) {
  if (settings_.empty()) return;
  const settings_file file(settings_);
  for (std::size_t i = 0; i < most_kept; ++i) {
    const std::string text = file.get(section, key(i)).value_or("");
    const std::size_t first = text.find('\t'), second = text.find('\t', first + 1);
    std::size_t colour = 0;
    if (first == text.npos || second == text.npos ||
        std::from_chars(text.data(), text.data() + first, colour).ptr != text.data() + first || colour >= palette)
      continue;
    colours_[{text.substr(first + 1, second - first - 1), text.substr(second + 1)}] = {colour, false};
  }
}

std::vector<std::size_t> kept_colours::colours_of(const std::vector<names>& series) {
  const std::size_t most_uses = (series.size() + palette - 1) / palette; // of one colour
  std::array<std::size_t, palette> uses{};
  std::vector<std::optional<std::size_t>> given(series.size());
  for (std::size_t i = 0; i < series.size(); ++i)
    if (const auto known = colours_.find(series[i]); known != colours_.end() && uses[known->second.colour] < most_uses)
      ++uses[*(given[i] = known->second.colour)];
  std::vector<std::size_t> colours;
  for (std::size_t i = 0; i < series.size(); ++i) {
    const auto least_used = static_cast<std::size_t>(std::ranges::min_element(uses) - uses.begin());
    const std::size_t colour = given[i].value_or(least_used);
    if (!given[i]) ++uses[colour], is_changed_ = true;
    colours_[series[i]] = {colour, true};
    colours.push_back(colour);
  }
  return colours;
}

void kept_colours::save() {
  if (settings_.empty() || !std::exchange(is_changed_, false)) return;
  std::vector<std::string> values;
  for (const bool is_used : {true, false})
    for (const auto& [series, it] : colours_)
      if (it.is_used == is_used && values.size() < most_kept)
        values.push_back(std::to_string(it.colour) + '\t' + series.first + '\t' + series.second);
  settings_file::update(settings_, [&](settings_file& file) {
    for (std::size_t i = 0; i < values.size(); ++i) file.set(section, key(i), values[i]);
  });
}

} // namespace vesk
