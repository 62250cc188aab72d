// Saving a data file, interrupted at each of its calls to the system: killed there, or failed by it.
#include "dataset/vki_file.h"
#include "sample_data_set.h"
#include "temporary_folder.h"
#include "traced_process.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/syscall.h>

namespace vesk {
namespace {

namespace fs = std::filesystem;

// Failures of these have no file to lose; each other call of saving concerns files.
bool is_about_files(std::uint64_t number) {
  constexpr std::uint64_t others[] = {SYS_brk,          SYS_mmap,        SYS_munmap,      SYS_mremap,
                                      SYS_mprotect,     SYS_madvise,     SYS_futex,       SYS_rt_sigprocmask,
                                      SYS_rt_sigaction, SYS_sigaltstack, SYS_sched_yield, SYS_getpid,
                                      SYS_exit_group};
  return std::find(std::begin(others), std::end(others), number) == std::end(others);
}

bool asks_for_unnamed_file(const system_call& call) {
  return call.number == SYS_openat && (call.arguments[2] & O_TMPFILE) == O_TMPFILE;
}

// A data file of several writes, reached by a symbolic link, and what a save makes of it. Parameter: whether the file
// system has files without names.
class InterruptedSave : public testing::TestWithParam<bool> {
protected:
  InterruptedSave() {
    fs::create_directory(folder.path / "far");
    fs::create_symlink("far/river.vki", link);
    data.segments.resize(4000);
    save_data_file(link, data);
    wanted = folder.read("far/river.vki");
    fs::permissions(folder.path / "far/river.vki", fs::perms(0640));
  }

  // 0: the save reported success, 1: failure.
  int save() const {
    try {
      save_data_file(link, data);
      return 0;
    } catch (const file_exception&) {
      return 1;
    }
  }

  // Saves again and again, each time with one more call that goes well before `interruption` decides on the rest, until
  // the save ends before it is asked. Without an old file when `old` is empty.
  void interrupt_everywhere(const std::string& old, const call_decision& interruption) {
    int first = 0;
    for (bool reached = true; reached && !HasFailure(); ++first) {
      fs::remove(folder.path / "far/river.vki");
      if (!old.empty()) folder.write("far/river.vki", old);
      reached = false;
      const auto decide = [&](const system_call& call) {
        if (!GetParam() && asks_for_unnamed_file(call)) return EOPNOTSUPP;
        if (call.index < first) return 0;
        reached = true;
        return interruption({call.index - first, call.number, {}});
      };
      const traced_end end = run_traced([this] { return save(); }, decide);
      if (!end.refusal.empty()) GTEST_SKIP() << end.refusal;
      SCOPED_TRACE("from call " + std::to_string(first) + " on, status " + std::to_string(end.status));
      check(old, end);
    }
    EXPECT_GT(first, 10); // calls
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(leftovers(), 0);
  }

  void check(const std::string& old, const traced_end& end) {
    const std::string found = folder.read("far/river.vki");
    EXPECT_TRUE(end.killed || end.status == 0 || end.status == 1);
    EXPECT_TRUE((found == wanted && end.status != 1) || (found == old && end.status != 0)) << found.size() << " bytes";
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_LE(leftovers(), 1);
  }

  std::ptrdiff_t leftovers() const {
    return std::count_if(fs::directory_iterator(folder.path / "far"), {},
                         [](const fs::directory_entry& entry) { return entry.path().filename() != "river.vki"; });
  }

  temporary_folder folder;
  const fs::path link = folder.path / "river.vki";
  prevesk_dataset_data_type data = sample_data_set();
  std::string wanted;
};

TEST_P(InterruptedSave, AKillLeavesTheOldFileOrTheNewOne) {
  const auto kill = [](const system_call&) { return kill_process; };
  interrupt_everywhere("old", kill);
  interrupt_everywhere("", kill);
}

TEST_P(InterruptedSave, AFailedSystemCallLeavesTheFileThatTheSaveReports) {
  for (const int error : {ENOSPC, EIO})
    interrupt_everywhere(
        "old", [error](const system_call& call) { return call.index == 0 && is_about_files(call.number) ? error : 0; });
}

TEST_P(InterruptedSave, ADiskThatKeepsFailingLeavesTheFileThatTheSaveReports) {
  interrupt_everywhere("old", [](const system_call& call) { return is_about_files(call.number) ? EIO : 0; });
}

INSTANTIATE_TEST_SUITE_P(, InterruptedSave, testing::Bool(), [](const auto& one) {
  return std::string(one.param ? "WithFilesWithoutNames" : "WithNamedFilesOnly");
});

} // namespace
} // namespace vesk
