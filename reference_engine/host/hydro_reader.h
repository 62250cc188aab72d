// The content of a hydrodynamic file, read by a separate program (vesk-hyd): the libraries that know the format trust a
// file, and one that is damaged, or made for it, makes them crash, never end, or read other files.
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

  // Opens the file and starts the program on it, which is looked for beside the library alone. `waiting` is called ten
  // times a second while an answer is waited for, and may throw to end that. Afterwards, as after any other exception,
  // the reader is of no more use.
  explicit HydroReader(std::string file, Waiting waiting = {},
                       std::chrono::milliseconds longest_silence = std::chrono::seconds(60));
  ~HydroReader();
  HydroReader(const HydroReader&) = delete;
  HydroReader& operator=(const HydroReader&) = delete;

  // To be taken once, before any row. Not-a-number stands for a missing value; nothing else has been looked at. Throws
  // InputError, in one sentence, where the file can't be read or is no such file.
  Content content();

  // The flow of each link (m3/s) or the volume of each segment (m3) at a time, counted from 0: as many as the row is
  // long. Throws as above.
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
