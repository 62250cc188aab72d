// A value that is set and saved reads back; every other value and line stays. The settings take any content, and any
// text of it as a picture of numbers.
#include "app/configuration.h"
#include "charts/numeric_picture.h"
#include "support/scratch.h"

#include <algorithm>
#include <sstream>

namespace {

using vesk::fuzz::demand;

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    while (line.ends_with('\r')) line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  constexpr const char* section = "SOFTWARE\\TALMO\\VESK\\7.0";
  static const fuzz::scratch_folder folder;
  const std::string content(fuzz::as_text(bytes, size)), file = folder.write("settings.ini", content);
  const std::vector<std::string> before = lines_of(content);

  const configuration settings(file, configuration::access::read_only);
  number_in_picture(-12.5, settings.SegmentsBasicNumericField);
  number_in_picture(1e300, settings.SegmentsInitSimpleField);

  settings_file first(file);
  const std::string value = before.empty() ? "" : before.front();
  const auto other = first.get(section, "MainFormTop");
  first.set(section, "MainFormLeft", value);
  demand(first.save(), "it cannot be saved");
  const settings_file second(file);
  std::string expected = value;
  std::replace(expected.begin(), expected.end(), '\r', ' ');
  demand(second.get(section, "MainFormLeft") == expected, "the value does not read back");
  demand(second.get(section, "MainFormTop") == other, "another value has changed");

  // At most one line is another one, and at most three are new.
  const std::vector<std::string> after = lines_of(folder.read("settings.ini"));
  demand(after.size() >= before.size() && after.size() <= before.size() + 3, "lines are lost or too many");
  std::size_t same = 0;
  for (std::size_t i = 0; i < after.size() && same < before.size(); ++i) same += after[i] == before[same];
  demand(same >= before.size() || after.size() == before.size(), "a line is lost");
  if (after.size() == before.size()) {
    std::size_t different = 0;
    for (std::size_t i = 0; i < after.size(); ++i) different += after[i] != before[i];
    demand(different <= 1, "another line has changed");
  }
  return 0;
}
