// vesk-run as a whole: what it does in which order, what it says, and its exit status.
#include "app/catalogue_source.h"
#include "behaviour_catalogue.h"
#include "dataset/vki_file.h"
#include "run_program.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vesk {
namespace {

class VeskRun : public testing::Test {
protected:
  VeskRun() {
    write_behaviour_catalogue(folder.path);
    setenv("XDG_CONFIG_HOME", folder.path.c_str(), 1); // not the settings of who runs the tests
  }

  // A data file on which the engine behaves as named.
  std::string make_file(const std::string& behaviour, bool deferred = false, const std::string& source = {},
                        std::size_t segments = 1) {
    prevesk_dataset_data_type data(catalogue_source(folder.path).get());
    data.model_type = model_of(behaviour);
    data.refresh_from_catalogue(false);
    data.resize_segments(segments);
    if (deferred) data.time_steps.query.edit().deferred = true;
    if (!source.empty()) {
      import_query_descriptor& query = data.time_steps.query.edit();
      query.file_name = source;
      query.date_time_field = "day";
      query.value_field = "step";
    }
    save_data_file(folder.path / "river.vki", data);
    return folder.file("river.vki");
  }
  program_result run(std::vector<std::string> arguments, int signal = 0) {
    arguments.insert(arguments.begin(), {"--catalogue", folder.path.string(), "--engine", MISBEHAVING_ENGINE});
    return run_program(VESK_RUN, arguments, signal);
  }

  static constexpr const char* two_more = "vesk-run: Cancelling. Press Ctrl+C twice more to end at once.\n";
  temporary_folder folder;
};

TEST_F(VeskRun, RunsAndReports) {
  const program_result result = run({make_file("reports"), "-RUN"});
  EXPECT_EQ(result.out, "a line\n");
  EXPECT_EQ(result.err, "vesk-run: a failure\n");
  EXPECT_EQ(result.status, 4); // the engine's return code, the last one put
}

TEST_F(VeskRun, AnEngineThatThrowsEndsInOneSentence) {
  const program_result result = run({make_file("throws"), "-RUN"});
  EXPECT_EQ(result.err, "vesk-run: The engine failed: division by zero in segment 3\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(VeskRun, AnEngineThatEndsTheProgramIsNamed) {
  const std::string engine = std::string("vesk-run: Engine ") + MISBEHAVING_ENGINE;
  for (const char* name : {"ASAN_OPTIONS", "TSAN_OPTIONS"}) { // a sanitizer would take the signals
    const char* present = std::getenv(name);
    setenv(name, ((present ? std::string(present) + ":" : "") + "handle_segv=0:handle_abort=0").c_str(), 1);
  }
  const struct {
    const char* behaviour;
    int status;
    const char* line;
  } cases[] = {
      {"crashes", 128 + SIGSEGV, " crashed: invalid memory access (SIGSEGV).\n"},
      {"overflows its stack", 128 + SIGSEGV, " crashed: invalid memory access (SIGSEGV).\n"},
      {"aborts", 128 + SIGABRT, " ended the program: it aborted (SIGABRT).\n"},
      {"throws on its own thread", 128 + SIGABRT,
       " ended the program: an uncaught exception on a thread that it started: no convergence\n"},
      {"ends its thread", 128 + SIGABRT, " ended the program by ending its thread.\n"},
      {"calls exit", 1, " ended the program by calling exit.\n"},
  };
  for (const auto& c : cases) {
    const program_result result = run({make_file(c.behaviour), "-RUN"});
    EXPECT_EQ(result.status, c.status) << c.behaviour;
    EXPECT_EQ(result.err, engine + c.line) << c.behaviour;
  }
}

TEST_F(VeskRun, CtrlCCancels) {
  const program_result result =
      run({make_file("waits for cancel"), "-RUN", "--save", folder.file("never.vki")}, SIGINT);
  EXPECT_EQ(result.out, "waiting\nTerminating model thread... please wait...\n");
  EXPECT_EQ(result.err, two_more);
  EXPECT_EQ(result.status, 130); // whatever code the engine has put
  EXPECT_FALSE(std::filesystem::exists(folder.file("never.vki")));
}

TEST_F(VeskRun, ASignalEndsTheReadingOfAFileAndAQueryAtOnce) {
  const std::string pipe = folder.file("pipe.vki"); // that nobody writes to
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  make_file("says run");
  prevesk_dataset_data_type data(catalogue_source(folder.path).get());
  read_data_file(folder.path / "river.vki", data);
  auto& query = data.time_steps.query.edit();
  query.deferred = true;
  query.file_name = "steps.sqlite"; // that somebody has locked
  query.table_name = "steps";
  query.date_time_field = "t";
  query.value_field = "v";
  save_data_file(folder.path / "river.vki", data);
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(folder.file("steps.sqlite").c_str(), &database), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(database, "CREATE TABLE steps (t TEXT, v REAL); BEGIN EXCLUSIVE;", nullptr, nullptr, nullptr),
            SQLITE_OK);

  std::vector<std::string> files{folder.file("river.vki")};
#if !defined(__SANITIZE_THREAD__) // which holds signals back while a file is being opened
  files.push_back(pipe);
#endif
  for (const std::string signal : {"INT", "TERM", "HUP"})
    for (const std::string& file : files) {
      const auto start = std::chrono::steady_clock::now();
      const program_result result = run_program(
          "/usr/bin/timeout", {"--preserve-status", "--foreground", "-k", "20", "-s", signal, "0.4", VESK_RUN,
                               "--catalogue", folder.path, "--engine", MISBEHAVING_ENGINE, file, "-RUN"});
      EXPECT_EQ(result.status, 130) << signal << " " << file;
      EXPECT_EQ(result.out + result.err, "") << signal << " " << file;
      EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500)) << signal << " " << file;
    }
  sqlite3_close(database);
}

TEST_F(VeskRun, AFileBeyondTheLimitOfSizesIsADiskThatIsFull) {
  const std::string saved = folder.file("saved.vki");
  const program_result result = run_program(
      "/bin/sh", {"-c", "ulimit -f 1; " VESK_RUN " --catalogue " + folder.path.string() + " --engine " +
                            MISBEHAVING_ENGINE + " " + make_file("says run", false, "", 1000) + " --save " + saved});
  EXPECT_EQ(result.err, "vesk-run: Cannot write " + saved + ": File too large.\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_FALSE(std::filesystem::exists(saved));
}

TEST_F(VeskRun, ALogThatCannotBeWrittenIsReported) {
  const std::string file = make_file("says run");
  folder.write("plain", "");
  const std::string log = folder.file("plain/LOG.TXT");
  const program_result result = run({file, "-RUN", "--export", "a.inp", "--log=" + folder.file("plain")});
  EXPECT_EQ(result.err, "vesk-run: Cannot write " + log + ": Not a directory. Continuing without a log.\n");
  EXPECT_EQ(result.out, "run\nexport 0\n");
  EXPECT_EQ(result.status, 0); // of the work
}

TEST_F(VeskRun, MissingPermissionIsReportedInOneSentence) {
  if (geteuid() == 0) GTEST_SKIP() << "nothing is protected from root";
  const std::string file = make_file("says run"), unreadable = folder.file("unreadable.vki");
  std::filesystem::copy_file(file, unreadable);
  chmod(unreadable.c_str(), 0);
  const std::string locked = folder.file("locked");
  std::filesystem::create_directory(locked);
  chmod(locked.c_str(), 0555);
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string err;
  } cases[] = {
      {{unreadable, "-RUN"}, 1, "vesk-run: " + unreadable + ": Cannot open file.\n"},
      {{file, "--save", locked + "/a.vki"}, 1, "vesk-run: " + locked + "/a.vki: Cannot open file for writing.\n"},
      {{file, "-RUN", "--log=" + locked},
       0,
       "vesk-run: Cannot write " + locked + "/LOG.TXT: Permission denied. Continuing without a log.\n"},
  };
  for (const auto& c : cases) {
    const program_result result = run(c.arguments);
    EXPECT_EQ(result.err, c.err);
    EXPECT_EQ(result.status, c.status);
  }
  chmod(locked.c_str(), 0755); // for removing it
}

TEST_F(VeskRun, NoTextFromElsewhereCommandsTheTerminal) {
  prevesk_dataset_data_type data(catalogue_source(folder.path).get());
  make_file("says run");
  read_data_file(folder.path / "river.vki", data);
  data.segments.edit(0).name = "\x1b]52;c;cm0=\x07\r\xc2\x9b"
                               "2J\nvesk-run: forged";
  save_data_file(folder.path / "river.vki", data);
  const std::string said = "\\x1b]52;c;cm0=\\x07\\x0d\\x9b2J\\nvesk-run: forged";
  const program_result result =
      run({folder.file("river.vki"), "--import-network", "a.vkn", "--log=" + folder.file("logs")});
  EXPECT_EQ(result.out, "network after " + said + "\n"); // the engine repeats the name
  EXPECT_EQ(result.status, 0);
  for (const auto& log : std::filesystem::directory_iterator(folder.path / "logs")) {
    const std::string text = folder.read("logs/" + log.path().filename().string());
    EXPECT_EQ(text.find_first_of("\x1b\x07\r"), std::string::npos);
    const bool is_template = log.path().filename() == "LOG.TXT";
    EXPECT_EQ(text.find(said) == std::string::npos, is_template);
  }
  EXPECT_EQ(run({"\x1b[2J\n.vki"}).err, "vesk-run: \\x1b[2J\\n.vki: Cannot open file.\n");
  EXPECT_EQ(run({"--\x1b[2J"}).err.find('\x1b'), std::string::npos);
  EXPECT_EQ(run({"\xe2\x80\xaegpj.exe"}).err,
            "vesk-run: Could not open specified file type \"\\u202egpj.exe\" (.EXE file)\n");
}

TEST_F(VeskRun, AnExceptionOutweighsACancelAndACancelAReturnCode) {
  for (const int signal : {SIGTERM, SIGHUP}) {
    const program_result thrown = run({make_file("throws after a cancel"), "-RUN"}, signal);
    EXPECT_EQ(thrown.status, 1);
    EXPECT_EQ(thrown.err, "vesk-run: The engine failed: too late\n");
  }
  const program_result checked = run({make_file("waits for cancel"), "--check"}, SIGINT);
  EXPECT_EQ(checked.status, 130);
  EXPECT_EQ(checked.err, two_more); // and no verdict without limits
}

TEST_F(VeskRun, WhatFollowsAFailedRunIsStillDone) {
  const program_result result =
      run({make_file("reports"), "-RUN", "--export", "a.inp", "--save", folder.file("b.vki")});
  EXPECT_EQ(result.out, "a line\nexport 0\nSaved " + folder.file("b.vki") + ".\n");
  EXPECT_EQ(result.status, 4);
}

TEST_F(VeskRun, AReturnCodeIsTheStatusOfARunAlone) {
  const std::string file = make_file("reports"), calm = folder.file("calm.vki");
  std::filesystem::rename(make_file("says run"), calm);
  make_file("reports");
  struct {
    std::vector<std::string> arguments;
    int status;
  } const cases[] = {
      {{file, "-RUN", "--export", "code-0.inp"}, 4}, // the export's code does not hide the run's
      {{calm, "-RUN", "--export", "code-3.inp"}, 1},
      {{"-IMPORT", "code-7.inp", "-RUN"}, 1},
      {{file, "--check"}, 1},
      {{calm, "--load-restart", "code-3.rst"}, 1},
      {{calm, "-RUN"}, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(run(c.arguments).status, c.status) << testing::PrintToString(c.arguments);
  EXPECT_EQ(run({"-IMPORT", "code-7.inp", "-RUN"}).out, "import 1\n"); // what it left is not run
}

TEST_F(VeskRun, LostStandardOutputEndsWith1) {
  const std::string file = make_file("says run");
  const std::string command =
      VESK_RUN " --catalogue " + folder.path.string() + " --engine " MISBEHAVING_ENGINE " " + file;
  const auto shell = [](const std::string& line) { return run_program("/bin/sh", {"-c", line}); };
  const std::string no_space = "vesk-run: Cannot write standard output: No space left on device.\n";
  const program_result full = shell(command + " -RUN --save " + folder.file("whole.vki") + " > /dev/full");
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.err, no_space);
  EXPECT_TRUE(std::filesystem::exists(folder.file("whole.vki"))); // the work is done all the same
  const program_result unread = shell("(sleep 0.3; " + command + " -RUN; echo $? >&2) | true");
  EXPECT_EQ(unread.err, "vesk-run: Cannot write standard output: Broken pipe.\n1\n");
  EXPECT_EQ(shell(VESK_RUN " --help > /dev/full").err, no_space);
}

TEST_F(VeskRun, WorksInTheDocumentedOrder) {
  const std::string file = make_file("says run");
  const program_result result = run({"--save", folder.file("out.vki"), "--export", "out.inp", "-RUN", "--load-restart",
                                     "a.rst", "--read-hyd", "--import-network", "a.vkn", file});
  EXPECT_EQ(result.out, "network after Vesk Segment\nhyd after network\nrestart after hyd\nrun\nexport 0\nSaved " +
                            folder.file("out.vki") + ".\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(run({"-RUN", "-IMPORT", "x.inp", file}).out, "import 1\nrun\n");
  prevesk_dataset_data_type saved;
  read_data_file(folder.path / "out.vki", saved);
  EXPECT_EQ(saved.segments[0].name, "restart");
  EXPECT_EQ(run({file, "--refresh"}).out, "No series has a deferred query.\nSaved " + file + ".\n");
  EXPECT_EQ(run({"-IMPORT", "x.inp", "--refresh"}).err,
            "vesk-run: The data set has no file name; give one with --save.\n");
  run({file, "-RUN", "--log=" + folder.file("logs")});
  EXPECT_EQ(folder.read("logs/LOG.TXT"), "\n");
}

TEST_F(VeskRun, BadInputIsReportedInOneSentence) {
  const std::string file = make_file("returns", true), missing = folder.file("missing.vki");
  folder.write("text.vki", "no data file");
  struct {
    std::vector<std::string> arguments;
    int status;
    std::string err;
  } const cases[] = {
      {{missing, "-RUN"}, 1, "vesk-run: " + missing + ": Cannot open file.\n"},
      {{"notes.txt"}, 1, "vesk-run: Could not open specified file type \"notes.txt\" (.TXT file)\n"},
      {{"-RUN"}, 1, "vesk-run: Nothing to run: no data file was opened or imported.\n"},
      {{"--save", "x.vki"}, 1, "vesk-run: Nothing to save: no data file was opened or imported.\n"},
      {{file, "-RUN"},
       1,
       "vesk-run: Live query error: " + file +
           ": Live query for time series \"Time step\" failed: File name not set\n"},
      {{file, "-RUN", "--no-queries"}, 0, ""},
      {{file, "--engine", folder.file("gone.so"), "-RUN", "--no-queries"},
       1,
       "vesk-run: " + file + ": Engine library " + folder.file("gone.so") + " does not exist.\n"},
      {{file, "--save", folder.file("gone/x.vki")},
       1,
       "vesk-run: " + folder.file("gone/x.vki") + ": Cannot open file for writing.\n"},
      {{file, "--export", "x.doc"}, 1, "vesk-run: x.doc: Cannot export specified file type\n"},
      {{"-IMPORT"}, 1, "vesk-run: Cannot import specified file type\n"},
      {{"--refrsh"}, 2, "vesk-run: Unknown option --refrsh; the nearest is --refresh. Try vesk-run --help.\n"},
  };
  for (const auto& c : cases) {
    const program_result result = run(c.arguments);
    EXPECT_EQ(result.err, c.err);
    EXPECT_EQ(result.status, c.status) << c.err;
  }
  const program_result no_catalogue = run({"--catalogue", folder.file("gone"), file});
  EXPECT_EQ(no_catalogue.err,
            "vesk-run: Cannot open catalogue " + folder.file("gone/") + ": No such file or directory.\n");
  EXPECT_EQ(no_catalogue.status, 1);
}

TEST_F(VeskRun, AFileThatIsOnlyPartlyUnderstoodIsNotSavedOver) {
  make_file("returns", true);
  std::string newer = folder.read("river.vki");
  newer[0] = 8;
  prevesk_dataset_data_type unknown(catalogue_source(folder.path).get());
  unknown.model_type = 77;
  save_data_file(folder.path / "unknown.vki", unknown);
  folder.write("newer.vki", newer);
  for (const char* name : {"newer.vki", "unknown.vki"}) {
    const std::string before = folder.read(name);
    for (const char* work : {"--refresh", "-RUN"}) EXPECT_EQ(run({folder.file(name), work}).status, 1);
    const program_result refused = run({folder.file(name), "--save", folder.file(name), "--quiet"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.ends_with(
        "vesk-run: Nothing was done, because a file was only partly read. Use --yes to continue anyway.\n"));
    EXPECT_EQ(folder.read(name), before);
    const program_result agreed = run({folder.file(name), "--save", folder.file("out"), "--yes"});
    EXPECT_EQ(agreed.status, 0) << agreed.err;
    EXPECT_EQ(folder.read("out.vki")[0], 7);
  }
  // Single records that the catalogue lacks: the file counts as opened, but is not what was opened.
  prevesk_dataset_data_type data(catalogue_source(folder.path).get());
  data.systems.edit(0).isc = 9;
  save_data_file(folder.path / "system.vki", data);
  const std::string file = folder.file("system.vki"), before = folder.read("system.vki");
  const program_result refused = run({file, "--refresh"});
  EXPECT_EQ(refused.err,
            "vesk-run: Replace file?: " + file +
                " already exists and contains data that is not in this data set. Replace it?\n"
                "vesk-run: Not saved. Use --yes to replace the file, or --save FILE to save under another name.\n");
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(folder.read("system.vki"), before);
  EXPECT_EQ(run({file, "--refresh", "--yes"}).status, 0);
  EXPECT_NE(folder.read("system.vki"), before);
}

TEST_F(VeskRun, SavesUnderTheWholeName) {
  const std::string file = make_file("returns");
  EXPECT_EQ(run({file, "--save", folder.file("m.backup-2026")}).out,
            "Saved " + folder.file("m.backup-2026.vki") + ".\n");
  EXPECT_FALSE(std::filesystem::exists(folder.path / "m.VKI"));
  EXPECT_EQ(run({file, "--save", folder.file("m.backup-2026.vki")}).status, 0); // replaced without a question
  EXPECT_EQ(run({file, "--save", "-"}).status, 2);
}

// A model that ran on would have zeros where the query has found nothing.
TEST_F(VeskRun, AQueryWithoutRowsStopsARunUnlessYes) {
  folder.write("steps.csv", "day,step\n2011-10-01,0.1\n");
  const std::string file = make_file("says run", true, "steps.csv"), before = folder.read("river.vki");
  const std::string found = "vesk-run: Time step: steps.csv, no rows found. Check the conditions, and that the table "
                            "covers the time of the run.\n";
  for (const char* work : {"-RUN", "--refresh"}) {
    const program_result stopped = run({file, "--quiet", work});
    EXPECT_EQ(stopped.err, found + "vesk-run: Stopped: a query found no values. Use --yes to continue without them.\n");
    EXPECT_EQ(stopped.status, 1);
    EXPECT_EQ(folder.read("river.vki"), before);
  }
  EXPECT_EQ(run({file, "--refresh", "--save", folder.file("never.vki")}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(folder.file("never.vki")));
  const program_result run_all_the_same = run({file, "-RUN", "--yes"});
  EXPECT_EQ(run_all_the_same.err, found);
  EXPECT_EQ(run_all_the_same.out, "run\n");
  EXPECT_EQ(run_all_the_same.status, 0);
}

TEST_F(VeskRun, AnImportThatNamesAHydrodynamicFilePointsToItsOption) {
  EXPECT_EQ(run({"-IMPORT", "hydro.inp"}).err,
            "vesk-run: Cannot read hyd file now: hydro.inp: The read hyd file thread is busy. Try again later.\n"
            "vesk-run: The file name is stored; --read-hyd reads it.\n");
}

// Two containers on one folder: neither sees the other's processes, and both have the same process numbers.
TEST_F(VeskRun, TwoRunsNeverWriteTheSameResults) {
  const std::vector<std::string> container = {"--user", "--map-root-user", "--pid", "--fork", "--kill-child"};
  const auto contained = [&](std::vector<std::string> words) {
    words.insert(words.begin(), container.begin(), container.end());
    return words;
  };
  if (run_program("/usr/bin/unshare", contained({"/bin/true"})).status != 0)
    GTEST_SKIP() << "The system does not permit PID namespaces.";
  const std::vector<std::string> words = contained({VESK_RUN, "--catalogue", folder.path.string(), "--engine",
                                                    MISBEHAVING_ENGINE, make_file("waits for cancel"), "-RUN"});
  background_program first("/usr/bin/unshare", words);
  ASSERT_EQ(first.read_line(), "waiting");
  const std::string unfinished = "river.part-node7-1-0123456789abcdef"; // as of the engine in the first container
  folder.write(unfinished, "x");

  const program_result second = run_program("/usr/bin/unshare", words);
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.out, "");
  EXPECT_THAT(second.err, testing::HasSubstr("The results of " + folder.file("river") +
                                             " are being written by another run: process 1 on "));
  EXPECT_EQ(folder.read(unfinished), "x");

  first.kill_and_wait();
  EXPECT_TRUE(std::filesystem::exists(folder.path / ".river.run"));
  const program_result third = run({make_file("says run"), "-RUN"});
  EXPECT_EQ(third.out, "run\n");
  EXPECT_EQ(third.err, "");
  EXPECT_EQ(third.status, 0);
  EXPECT_FALSE(std::filesystem::exists(folder.path / unfinished));
  EXPECT_FALSE(std::filesystem::exists(folder.path / ".river.run"));
}

TEST_F(VeskRun, AFailedCheckEndsTheWork) {
  const std::string file = make_file("returns");
  const program_result result = run({file, "--check", "--save", folder.file("never.vki")});
  EXPECT_EQ(result.err, "vesk-run: Validity check failed: " + file +
                            ": Problems were detected\nvesk-run: Tracer system has no boundaries.\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_FALSE(std::filesystem::exists(folder.file("never.vki")));
}

TEST_F(VeskRun, ReadsTheSettingsAndLeavesThemAlone) {
  const std::string file = make_file("says run");
  const std::string stored = "[SOFTWARE\\TALMO\\VESK\\7.0]\nDatabaseDir=" + folder.path.string() + "\n";
  std::filesystem::create_directory(folder.path / "vesk");
  folder.write("vesk/settings.ini", stored);
  EXPECT_EQ(run_program(VESK_RUN, {"--engine", MISBEHAVING_ENGINE, file, "-RUN"}, 0).out, "run\n");
  EXPECT_EQ(folder.read("vesk/settings.ini"), stored);
}

TEST_F(VeskRun, PrintsHelpAndVersion) {
  EXPECT_EQ(run({"--version"}).out, "vesk-run 0.1.0\n");
  EXPECT_NE(run({"--help"}).out.find("--import-network NAME"), std::string::npos);
  EXPECT_EQ(run({"-h"}).out, run({"--help"}).out);
}

} // namespace
} // namespace vesk
