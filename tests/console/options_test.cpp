#include "console/console_interface.h"
#include "console/options.h"

#include <gtest/gtest.h>

namespace vesk {
namespace {

using lines = std::vector<std::string>;

TEST(Options, AreTakenFromAnyPlace) {
  const console_options o =
      parse_console_options(lines{"--engine", "e.so", "a.vki", "-run", "--log=logs", "-IMPORT", "./--odd.inp",
                                  "--progress=bar", "--yes", "b.vki", "--save", "./-c.vki"});
  EXPECT_EQ(o.walk, (lines{"a.vki", "-run", "-IMPORT", "./--odd.inp", "b.vki"}));
  EXPECT_TRUE(o.run && o.import && o.log && o.yes && o.any_work());
  EXPECT_EQ(o.engine, "e.so");
  EXPECT_EQ(o.log_directory, "logs");
  EXPECT_EQ(o.save, "./-c.vki");
  EXPECT_EQ(o.progress, progress_style::bar);
  EXPECT_FALSE(parse_console_options(lines{"--log", "--quiet"}).any_work());
}

TEST(Options, WrongUsageIsReportedInOneSentence) {
  const auto error = [](const lines& arguments) -> std::string {
    try {
      parse_console_options(arguments);
    } catch (const usage_error& e) {
      return e.what();
    }
    return "";
  };
  EXPECT_EQ(error({"--exprot", "a.inp"}), "Unknown option --exprot; the nearest is --export.");
  EXPECT_EQ(error({"-RUNN"}), "Unknown option -RUNN; the nearest is -RUN.");
  EXPECT_EQ(error({"--save"}), "Option --save requires a value.");
  EXPECT_EQ(error({"--save="}), "Option --save requires a value.");
  for (const char* option : {"--engine", "--catalogue", "--import-network", "--load-restart", "--export", "--save",
                             "--progress", "-IMPORT"}) {
    EXPECT_EQ(error({option, "-"}),
              std::string("Option ") + option + " requires a value, found \"-\"; a file of that name is ./-.");
    EXPECT_TRUE(error({option, "-RUN"}).starts_with(std::string("Option ") + option + " requires a value")) << option;
    EXPECT_EQ(error({option, "/dev/null"}),
              std::string("Option ") + option + " does not accept a device, found \"/dev/null\".");
  }
  EXPECT_EQ(error({"--log=-x"}), "Option --log requires a value, found \"-x\"; a file of that name is ./-x.");
  EXPECT_EQ(error({"--save", "/dev/fd/1"}), "Option --save does not accept a device or pipe, found \"/dev/fd/1\".");
  for (const char* folder : {"..", "rivers/", "rivers/."})
    EXPECT_EQ(error({"--save", folder}),
              std::string("Option --save requires the name of a file, found \"") + folder + "\".");
  EXPECT_EQ(error({"--export", "a.inp", "--export=b.vkn"}), "Option --export is given more than once.");
  EXPECT_EQ(error({"a.vki", "--results", "DO@1"}), "Option --results requires -RUN.");
  EXPECT_EQ(error({"--yes=no"}), "Option --yes takes no value, found \"no\".");
  EXPECT_EQ(error({"--progress", "fast"}), "Option --progress takes auto, bar, plain or none, not \"fast\".");
}

// What the interface has written to a stream.
class captured {
public:
  ~captured() { std::fclose(stream); }
  std::string text() const {
    std::fflush(stream);
    std::string result(static_cast<std::size_t>(std::ftell(stream)), '\0');
    std::rewind(stream);
    EXPECT_EQ(std::fread(result.data(), 1, result.size(), stream), result.size());
    return result;
  }
  std::FILE* stream = std::tmpfile();
};

TEST(ConsoleInterface, PartsTheStreamsAndAnswersCautiously) {
  captured out, err;
  console_interface ui({progress_style::plain, false, false}, out.stream, err.stream);
  ui.add_info_line("a line", icon_plain);
  ui.add_info_line("a failure", icon_failure);
  ui.set_subject("river.vki");
  EXPECT_EQ(ui.message_box("Error", "Cannot open file.", box_buttons::ok), box_answer::ok);
  EXPECT_EQ(ui.message_box("Sure?", "first\r\n second\r\n", box_buttons::yes_no_cancel), box_answer::cancel);
  ui.begin_progress();
  for (const int percent : {3, 9, 10, 12, 47, 48, 0}) ui.set_progress(percent);
  ui.end_progress(true);
  ui.set_progress(0);
  EXPECT_EQ(out.text(), "a line\n");
  EXPECT_EQ(err.text(), "vesk-run: a failure\nvesk-run: river.vki: Cannot open file.\n"
                        "vesk-run: Sure?: river.vki: first second\n10 %\n40 %\n100 %\n");
}

TEST(ConsoleInterface, QuietShowsFailuresOnlyAndYesSaysYes) {
  captured out, err;
  console_interface ui({progress_style::bar, true, true}, out.stream, err.stream);
  ui.begin_progress();
  ui.set_progress(50);
  ui.refresh_progress();
  ui.add_info_line("a line", icon_plain);
  ui.add_info_line("a failure", icon_failure);
  EXPECT_EQ(ui.message_box("Sure?", "text", box_buttons::yes_no), box_answer::yes);
  EXPECT_EQ(out.text(), "");
  EXPECT_EQ(err.text(), "vesk-run: a failure\nvesk-run: Sure?: text\n");
}

TEST(ConsoleInterface, TheBarGivesWayToLines) {
  captured out, err;
  console_interface ui({progress_style::bar, false, false}, out.stream, err.stream);
  ui.begin_progress();
  ui.set_progress(50);
  ui.set_time_remaining_label(" Time remaining: 0:00:09");
  ui.refresh_progress();
  ui.say_failure("stop");
  ui.end_progress(false);
  const std::string bar = "\r\033[K[###############...............] 50 % Time remaining: 0:00:09";
  EXPECT_EQ(err.text(), bar + "\r\033[Kvesk-run: stop\n" + bar + "\r\033[K");
}

} // namespace
} // namespace vesk
