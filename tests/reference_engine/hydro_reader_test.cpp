// What the engine makes of a helper program that fails, in whatever way. What a good one reads is tested with the
// engine.
#include "core/errors.h"
#include "host/hydro_reader.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

using reference_engine::HydroReader;
using reference_engine::InputError;

class HydroReaderTest : public testing::Test {
protected:
  ~HydroReaderTest() override { unsetenv("VESK_HYD"); }

  // Lets a script stand in for the helper; its standard input is the socket.
  void let_helper(const std::string& script) {
    std::filesystem::remove(helper);
    std::ofstream(helper) << "#!/bin/sh\n" << script << "\n";
    std::filesystem::permissions(helper, std::filesystem::perms::owner_all);
    setenv("VESK_HYD", helper.c_str(), 1);
  }
  static std::string refusal(HydroReader::Waiting waiting = {}) {
    try {
      HydroReader("river.hyd", std::move(waiting), std::chrono::milliseconds(300)).content();
    } catch (const InputError& error) {
      return error.what();
    }
    return "";
  }
  const std::string helper = testing::TempDir() + "vesk-hyd-" + std::to_string(getpid());
  const std::string damaged = "river.hyd: is damaged: the NetCDF library fails on it.";
};

TEST_F(HydroReaderTest, AHelperThatFailsIsToldInOneSentence) {
  for (const char* script : {"kill -SEGV $$", "exit 0", "exec sleep 100", "printf short >&0",
                             "head -c 8 /dev/zero >&0; printf '\\377\\377\\377\\377\\377\\377\\377\\377' >&0",
                             "head -c 8 /dev/zero >&0; printf '\\010\\0\\0\\0\\0\\0\\0\\0aaaaaaaa' >&0"}) {
    let_helper(script);
    EXPECT_EQ(refusal(), damaged) << script;
  }
  setenv("VESK_HYD", "/no/such/vesk-hyd", 1);
  EXPECT_EQ(refusal(), "river.hyd: the program that reads hydrodynamic files can't be started: /no/such/vesk-hyd: "
                       "No such file or directory.");
}

TEST_F(HydroReaderTest, OneThatFailsBetweenTwoRowsIsTold) {
  let_helper("head -c 8 /dev/zero >&0; printf '\\040\\0\\0\\0\\0\\0\\0\\0' >&0; head -c 32 /dev/zero >&0; exit 0");
  HydroReader reader("river.hyd");
  EXPECT_TRUE(reader.content().times.empty());
  HydroReader::Row row(1);
  EXPECT_THROW(reader.read_row(HydroReader::Quantity::flow, 0, row), InputError);
  EXPECT_THROW(reader.read_row(HydroReader::Quantity::flow, 0, row), InputError);
}

TEST_F(HydroReaderTest, WaitingCanBeEnded) {
  let_helper("exec sleep 100");
  struct Enough {};
  const auto began = std::chrono::steady_clock::now();
  EXPECT_THROW(HydroReader("river.hyd", [] { throw Enough(); }).content(), Enough);
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(30));
}

} // namespace
