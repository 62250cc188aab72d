// Reads long pieces of a file with two threads.
//
// Reading a large file into fresh memory keeps one processor busy: the system clears each page, then copies into it. A
// second thread takes some of the pieces. The calling thread never waits for it before `finish`. While many pieces are
// waiting, it reads the next one itself, some megabytes ahead of the other thread, since two threads in one large page
// would both clear it.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>

namespace vesk {

class shared_reading {
public:
  // Reads the open file `descriptor`, which the caller keeps. `name` is for messages. If there is no second thread, the
  // caller reads everything.
  shared_reading(int descriptor, std::string name);
  ~shared_reading() { drop(); }

  // Reads `size` bytes at `offset` into `to`, now or later: `to` must be valid until `finish` or `drop`. Throws
  // file_exception.
  void read(void* to, std::size_t size, std::uint64_t offset);

  // Returns when all pieces have been read. Throws file_exception for the first failure of the second thread.
  void finish();

  // Discards waiting pieces, and returns when nothing is being written any more.
  void drop();

private:
  struct piece {
    char* to;
    std::size_t size;
    std::uint64_t offset;
  };

  bool hand_over(const piece& next);
  void read_whole(piece rest) const;
  void work(const std::stop_token& stopped);

  const int descriptor_;
  const std::string name_;
  std::mutex mutex_;
  std::condition_variable_any changed_;
  std::deque<piece> waiting_;  // guarded by mutex_
  bool at_work_ = false;       // guarded by mutex_; the second thread
  std::exception_ptr failure_; // guarded by mutex_
  std::jthread thread_;        // the last member, since it uses the others
};

} // namespace vesk
