#include "engine/model_thread.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace vesk {
namespace {

namespace fs = std::filesystem;

// Notes what a job asks of the front end, a line each.
class noting_front_end : public job_front_end {
public:
  std::vector<std::string> notes;
  int lines_told = 0; // main thread only, unlike the notes, which the worker adds to as well
  const float* grid = nullptr;
  std::atomic<bool> logging{false};

  void add_info_line(const std::string& text, int icon) override {
    notes.push_back(std::to_string(icon) + " " + text + (grid ? ", with a grid" : ""));
    ++lines_told;
  }
  void clear_info_lines() override { notes.push_back("clear"); }
  void set_file_name(const std::string& name) override { notes.push_back("file " + name); }
  void initialize_grid(const std::vector<std::string>& labels, int rows) override {
    std::string text = "grid of " + std::to_string(rows) + ":";
    for (const auto& label : labels) text += " " + label;
    notes.push_back(text);
  }
  void clear_grid_data() override { grid = nullptr; }
  void hydrodynamic_file_put() override { notes.push_back("read hyd"); }
  void set_grid_data(const float* data, int, int, bool) override { grid = data; }
  int diagnostic_level() const override { return 0; }
  void set_diagnostic_level(int) override {}
  bool logging_enabled() const override { return logging; }
  std::int32_t window_handle() const override { return 0; }
  void set_return_code(int code) override { notes.push_back("code " + std::to_string(code)); }
};

prevesk_dataset_data_type data_for(const std::string& behaviour) {
  prevesk_dataset_data_type data;
  data.library = behaviour;
  data.segments.resize(2);
  data.seed_date = data.end_date = 36526; // 1 January 2000
  data.seed_time = 0;
  return data;
}

struct job_result {
  std::vector<std::string> notes;
  std::string failure;
  winvesk_thread::mailbox mailbox;
  int status_code = 0;
  bool grid_left = false;
  prevesk_dataset_data_type data;
};

// Runs one job to its end; `meanwhile` is called again and again until then.
job_result run_job(job_code code, const prevesk_dataset_data_type& data, const fs::path& log = {},
                   const std::function<void(model_thread&, const noting_front_end&)>& meanwhile = nullptr) {
  noting_front_end front_end;
  front_end.logging = !log.empty();
  job_result result;
  bool ended = false;
  const int threads_before = live_thread_count();
  auto* job = new model_thread(front_end, engine_library::load(MISBEHAVING_ENGINE), data, code, "river.vki", log);
  job->FreeOnTerminate = true;
  job->OnTerminate = [&](ResizableThread*) {
    result.failure = job->failure();
    result.mailbox = job->take_mailbox();
    result.status_code = job->status_code();
    result.data = job->data_set();
    ended = true;
  };
  job->Resume();
  while (!ended) {
    if (meanwhile) meanwhile(*job, front_end);
    wait_and_synchronize(std::chrono::milliseconds(1));
  }
  while (live_thread_count() > threads_before) wait_and_synchronize(std::chrono::milliseconds(1));
  result.notes = front_end.notes;
  result.grid_left = front_end.grid != nullptr;
  return result;
}

using lines = std::vector<std::string>;

TEST(Job, ReachesTheFrontEndByBothWays) {
  const job_result result = run_job(job_code::run, data_for("reports"));
  EXPECT_EQ(result.notes, (lines{"0 a line", "2 a failure", "code 3", "code 4", "file other.vki"}));
  EXPECT_EQ(result.status_code, 5);
  EXPECT_TRUE(result.mailbox.progress_changed);
  EXPECT_EQ(result.mailbox.progress_percent, 10); // only the last is ever seen
  EXPECT_TRUE(result.mailbox.simulation_time_changed);
  EXPECT_EQ(result.mailbox.simulation_time_text, "Simulation Time: 1/2/2000 12:00:00");
  EXPECT_EQ(result.failure, "");
}

TEST(Job, EachCodeCallsItsFunctionOnItsCopy) {
  const prevesk_dataset_data_type data = data_for("returns");
  EXPECT_EQ(run_job(job_code::run, data).notes, lines{});
  EXPECT_EQ(run_job(job_code::import_file, data).notes, (lines{"0 import 1"}));
  EXPECT_EQ(run_job(job_code::export_file, data).notes, (lines{"0 export 0"}));
  EXPECT_EQ(run_job(job_code::get_maximum_parameters, data).data.max_num_segments, 1U);
  EXPECT_EQ(run_job(job_code::read_hyd_file, data).data.segments[0].name, "hyd");
  EXPECT_EQ(run_job(job_code::import_network, data).data.segments[0].name, "network");
  EXPECT_EQ(run_job(job_code::load_restart_file, data).data.segments[0].name, "restart");
  EXPECT_EQ(data.segments[0].name, "Vesk Segment");
}

TEST(Job, AnExceptionFailsTheJobAndNotTheProcess) {
  const job_result thrown = run_job(job_code::run, data_for("throws"));
  EXPECT_EQ(thrown.failure, "The engine failed: division by zero in segment 3");
  EXPECT_EQ(thrown.notes, (lines{"2 The engine failed: division by zero in segment 3"}));
  EXPECT_EQ(run_job(job_code::run, data_for("throws an int")).failure,
            "The engine failed with an exception of unknown type.");
}

TEST(Job, CanBeCancelled) {
  // Not before the engine works: a job that is asked to stop before it has begun never calls it.
  const auto cancel = [](model_thread& job, const noting_front_end& front_end) {
    if (front_end.lines_told > 0) job.Terminate();
  };
  EXPECT_EQ(run_job(job_code::run, data_for("waits for cancel"), {}, cancel).notes, (lines{"0 waiting", "code 9"}));
}

TEST(Job, KeepsNoPointerIntoTheEngine) {
  const job_result result = run_job(job_code::run, data_for("grid without DONE"));
  EXPECT_EQ(result.notes, (lines{"grid of 2: one two three", "grid of 2: only"}));
  EXPECT_TRUE(result.mailbox.grid_changed);
  EXPECT_FALSE(result.grid_left);
}

TEST(Job, TakesTheGridBackBeforeAFailureIsShown) {
  const job_result result = run_job(job_code::run, data_for("throws with a grid of its own"));
  EXPECT_EQ(result.notes, (lines{"grid of 4: one two", "0 shown, with a grid", "2 The engine failed: too deep"}));
  EXPECT_FALSE(result.grid_left);
}

TEST(Job, ServesAThreadThatTheEngineStarted) {
  EXPECT_EQ(run_job(job_code::run, data_for("calls from its own thread")).notes, (lines{"0 from another thread"}));
}

std::string content(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

TEST(Job, LogsToItsOwnFileAndLeavesAnEmptyLineInTheTemplate) {
  const fs::path folder = fs::temp_directory_path() / ("vesk-log-" + std::to_string(getpid()));
  fs::create_directory(folder);
  run_job(job_code::run, data_for("reports"), folder / "LOG.TXT");
  EXPECT_EQ(content(folder / "LOG.TXT"), "\n");
  std::string log;
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.path().filename() != "LOG.TXT") log = content(entry.path());
  EXPECT_TRUE(log.starts_with("--BEGIN LOG FILE--\n")) << log;
  EXPECT_NE(log.find(": Keyword: INFO\n"), std::string::npos);
  EXPECT_NE(log.find("\nhalfway\n"), std::string::npos); // the status, without a time in front
  EXPECT_NE(log.find(": RUNTIME PERFORMANCE METRICS FOLLOW:\n"), std::string::npos);
  fs::remove_all(folder);

  run_job(job_code::run, data_for("reports"), folder / "gone" / "LOG.TXT"); // a log that cannot be opened
  EXPECT_FALSE(fs::exists(folder));
}

TEST(EngineLibrary, AFaultyOneIsRefusedWithItsCause) {
  const auto failure = [](const std::string& path) -> std::string {
    try {
      engine_library::load(path);
    } catch (const engine_library_exception& error) {
      return error.what();
    }
    return "loaded";
  };
  EXPECT_EQ(failure("nowhere/engine.so"), "Engine library nowhere/engine.so does not exist.");
  EXPECT_EQ(failure(INCOMPLETE_ENGINE),
            std::string("Engine library ") + INCOMPLETE_ENGINE + " has no function get_maximum_parameters.");
  EXPECT_TRUE(failure("/etc/passwd").starts_with("Cannot load engine library /etc/passwd: "));
}

} // namespace
} // namespace vesk
