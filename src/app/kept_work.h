// Protects users against the loss of work: FOLDER/earlier has the content of data files that a save has replaced,
// FOLDER/unsaved has changes that were never saved.
//
// Main thread only; the copies against a crash are written in a thread of their own.
#pragma once

#include "app/kept_folder.h"
#include "dataset/dataset.h"

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <string>

namespace vesk {

// The present content of a data file during a save. It is a hard link, which costs nothing: the save replaces the file
// as a whole. Where links are not possible, it is a copy.
class earlier_version {
public:
  // Without a file nothing is held. Throws file_exception, also if the disk has no room for three times the file.
  earlier_version(const kept_folder& folder, const std::filesystem::path& file);
  ~earlier_version(); // removes it unless it was kept
  earlier_version(const earlier_version&) = delete;
  earlier_version& operator=(const earlier_version&) = delete;

  void keep(); // the save has succeeded

private:
  const kept_folder& folder_;
  std::optional<kept_folder::place> place_;
};

class kept_work {
public:
  using clock = std::chrono::steady_clock;
  using data_set = prevesk_dataset_data_type;

  explicit kept_work(const std::filesystem::path& folder)
      : earlier_(folder / "earlier", kept_kind::earlier_version),
        unsaved_(folder / "unsaved", kept_kind::unsaved_work) {}
  ~kept_work();

  clock::duration interval = std::chrono::minutes(2); // between the copies against a crash

  const kept_folder& earlier() const { return earlier_; }

  // Brings this program's copy of the unsaved work up to date, in the background: writes it if the data set differs
  // from `saved` (null: it was never saved), removes it otherwise. To be called often; does nothing before the interval
  // has passed. `original`: absolute path of the data file. Returns why the last copy failed, once; mostly empty.
  std::string renew(const data_set& data, const data_set* saved, const std::string& original);

  // The data set was saved, or its changes were undone: removes the copy.
  void drop();

  // Writes the copy and keeps it. `for_next_start`: the next program finds it by take_over. Throws file_exception.
  std::filesystem::path keep(const data_set& data, const std::string& original, bool for_next_start);

  // Throws file_exception if no unsaved work can be kept.
  void prepare() const { unsaved_.prepare(); }

  // What ended programs have left. Removes what is beyond the limits.
  std::vector<kept_file> take_over();

  std::vector<kept_file> list() const; // unsaved work, then earlier versions, each with the newest first

private:
  class unsaved_copy;
  struct outcome {
    bool is_unsaved = true;
    std::string failure;
  };
  static outcome bring_up_to_date(unsaved_copy& copy, const data_set& data, const std::optional<data_set>& saved,
                                  const std::optional<data_set>& written);
  void prepare_copy(const std::string& original);
  std::string take_outcome(); // waits for the thread
  void hand_over(bool for_next_start);

  kept_folder earlier_, unsaved_;
  std::shared_ptr<unsaved_copy> copy_; // null: no unsaved work is known
  std::optional<data_set> written_;    // what the copy contains
  std::optional<data_set> pending_;    // what the thread writes
  std::future<outcome> writing_;
  clock::time_point checked_ = clock::now();
  std::string reported_; // the last failure
};

} // namespace vesk
