// A private folder of copies of data files: NAME-YYYYMMDD-HHMMSS.vki.
//
// A note beside each copy holds the path of the data file that it was kept for. It is called NAME....vki.path, or
// NAME....vki.session while the copy belongs to a running program, which holds a lock (flock) on it. Without the lock
// the program has ended. Folder 0700, files 0600, created exclusively; links are not followed. Any thread.
#pragma once

#include "platform/file_io.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vesk {

enum class kept_kind { unsaved_work, earlier_version };

struct kept_file {
  std::filesystem::path file;
  kept_kind kind = kept_kind::unsaved_work;
  std::string original;                       // absolute path of the data file; empty: the data set had none
  std::chrono::system_clock::time_point time; // when it was kept
  std::uint64_t bytes = 0;
};

class kept_folder {
public:
  static constexpr std::size_t most_files = 10; // of unsaved work in all, of earlier versions for each data file
  static constexpr std::uint64_t most_bytes = 1'000'000'000;

  kept_folder(std::filesystem::path folder, kept_kind kind) : folder_(std::move(folder)), kind_(kind) {}

  // Creates the folder if needed. Throws file_exception if nothing can be kept there.
  void prepare() const;

  // A name that is not in use, with its note. The file itself is still missing.
  struct place {
    std::filesystem::path file, note;
    file_descriptor lock; // of the note; not open if no program owns the copy
    void remove() const noexcept;
  };
  // `owned`: by this program. Throws file_exception.
  place new_place(const std::string& original, bool owned) const;

  // From now on no program owns the copy. Throws file_exception.
  static void give_up(place& owned);

  // Copies that no program owns, the newest first. A folder that cannot be read is empty.
  std::vector<kept_file> list() const;

  // Gives up what ended programs have owned, and returns it.
  std::vector<kept_file> take_over() const;

  // Removes the oldest copies beyond the limits, but never the newest of unsaved work and of each data file.
  void tidy() const;

  const std::filesystem::path& path() const { return folder_; }

private:
  kept_file examine(const std::filesystem::path& file, const std::filesystem::path& note) const;

  std::filesystem::path folder_;
  kept_kind kind_;
};

std::string in_words(const kept_file& file);                           // "unsaved changes to river.vki"
std::string time_in_words(std::chrono::system_clock::time_point time); // local: "2026-11-22 14:05:09"

} // namespace vesk
