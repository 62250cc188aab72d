// The content of a hydrodynamic file, read by a separate program (vesk-hyd). The libraries for the format trust the
// file: one that is damaged or malicious can make them crash, hang, or read other files.
#ifndef REFERENCE_ENGINE_HOST_HYDRO_READER_H
#define REFERENCE_ENGINE_HOST_HYDRO_READER_H

#include "hyd_helper/protocol.h"

#include <chrono>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace reference_engine {

class HydroReader {
public:
  using Row = std::vector<double>;
  using Quantity = hyd::Quantity;
  using Waiting = std::function<void()>;

  struct Content {
    std::string time_units;
    Row times;                      // in that unit
    Row lengths, widths;            // m, of each segment
    Row from, to;                   // segments counted from 1, of each link
    std::vector<std::string> names; // of each segment
  };

  // Opens the file and starts the program on it, which must be in the library's folder. `waiting` is called ten times a
  // second while waiting for an answer, and may throw to give up. After any exception the reader can no longer be used.
  explicit HydroReader(std::string file, Waiting waiting = {},
                       std::chrono::milliseconds longest_silence = std::chrono::seconds(60));
  ~HydroReader();
  HydroReader(const HydroReader&) = delete;
  HydroReader& operator=(const HydroReader&) = delete;

  // Call once, before any row. Missing values are not-a-number; nothing else has been validated. Throws InputError,
  // with one sentence, if the file can't be read or is not a linkage file.
  Content content();

  // The flow of each link (m3/s) or the volume of each segment (m3) at a time, counted from 0. The size of `row` says
  // how many. Throws as above.
  void read_row(Quantity quantity, std::size_t time, Row& row);

  [[noreturn]] void refuse(const std::string& cause) const;

private:
  std::string answer(hyd::Kind expected);
  void receive(char* bytes, std::size_t size);
  void send(const hyd::Request& request) const;
  void start();
  void stop();
  [[noreturn]] void refuse_damaged() const { refuse("is damaged: the NetCDF library fails on it"); }

  std::string file_;
  Waiting waiting_;
  std::chrono::milliseconds longest_silence_;
  int socket_ = -1;
  pid_t program_ = -1;
};

} // namespace reference_engine

#endif
