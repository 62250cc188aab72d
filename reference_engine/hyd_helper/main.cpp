// vesk-hyd: reads a hydrodynamic file for the engine, so that neither a crash nor an endless loop of the libraries that
// know its format, which trust what they read, can reach the engine's process. See protocol.h.
#include "hyd_helper/protocol.h"

#include <netcdf.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace {

using reference_engine::hyd::Answer;
using reference_engine::hyd::Kind;
using reference_engine::hyd::Quantity;
using reference_engine::hyd::Request;

constexpr int channel = STDIN_FILENO;           // a socket: both ways
constexpr rlim_t most_memory = rlim_t{1} << 30; // bytes, beside what the program itself takes
constexpr rlim_t seconds_for_an_answer = 5;     // of processor time

using Row = std::vector<double>;

struct Refusal {
  std::string cause;
};

[[noreturn]] void refuse(std::string cause) {
  throw Refusal{std::move(cause)};
}

void check(int status) {
  if (status != NC_NOERR) refuse(std::string("can't be read: ") + nc_strerror(status));
}

std::string quoted(std::string_view name) {
  return '"' + std::string(name) + '"';
}

enum Dimension { time_dimension, segment_dimension, link_dimension, dimensions };
constexpr std::array<const char*, dimensions> dimension_names = {"time", "segment", "link"};

struct Variable {
  int id = 0;
  double fill = NC_FILL_DOUBLE; // as a number, that of single precision is the same
};

class File {
public:
  explicit File(const char* name) {
    const int status = nc_open(name, NC_NOWRITE, &id_);
    if (status == NC_ENOTNC) refuse("is no NetCDF file");
    check(status);
    for (std::size_t d = 0; d < dimensions; ++d) {
      if (nc_inq_dimid(id_, dimension_names[d], &dimension_[d]) != NC_NOERR)
        refuse("has no dimension " + quoted(dimension_names[d]));
      check(nc_inq_dimlen(id_, dimension_[d], &size_[d]));
    }
  }

  // As the protocol has it. To be called before any row is read.
  std::string content() {
    const std::string names = packed_names();
    std::string packed;
    for (const Dimension d : {time_dimension, segment_dimension, link_dimension}) add(packed, size_[d]);
    const Variable time = find("time", {time_dimension});
    add(packed, read(time, size_[time_dimension]));
    for (const char* name : {"length", "width"})
      add(packed, read(find(name, {segment_dimension}), size_[segment_dimension]));
    for (const char* name : {"link_from", "link_to"})
      add(packed, read(find(name, {link_dimension}), size_[link_dimension]));
    add(packed, text_attribute(time.id, "units"));
    flow_ = find("flow", {time_dimension, link_dimension});
    volume_ = find("volume", {time_dimension, segment_dimension});
    return packed + names;
  }

  Row row(Quantity quantity, std::size_t time) const {
    const bool flows = quantity == Quantity::flow;
    return read(flows ? flow_ : volume_, size_[flows ? link_dimension : segment_dimension], &time);
  }

private:
  static void add(std::string& packed, std::uint64_t number) {
    packed.append(reinterpret_cast<const char*>(&number), sizeof number);
  }
  static void add(std::string& packed, const Row& values) {
    packed.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(double));
  }
  static void add(std::string& packed, std::string_view text) {
    add(packed, text.size());
    packed += text;
  }

  Variable find(const char* name, const std::vector<Dimension>& shape) const {
    Variable variable;
    int count = 0;
    if (nc_inq_varid(id_, name, &variable.id) != NC_NOERR) refuse("has no variable " + quoted(name));
    check(nc_inq_varndims(id_, variable.id, &count));
    std::vector<int> found(static_cast<std::size_t>(count)), wanted;
    check(nc_inq_vardimid(id_, variable.id, found.data()));
    std::string wanted_names;
    for (const Dimension d : shape) {
      wanted.push_back(dimension_[d]);
      wanted_names += (wanted_names.empty() ? "" : ", ") + std::string(dimension_names[d]);
    }
    if (found != wanted)
      refuse("the variable " + quoted(name) + " does not have the dimensions (" + wanted_names + ")");
    if (double fill = 0; nc_get_att_double(id_, variable.id, "_FillValue", &fill) == NC_NOERR) variable.fill = fill;
    return variable;
  }

  // All of a variable, or what it has at one time.
  Row read(const Variable& variable, std::size_t size, const std::size_t* time = nullptr) const {
    Row values(size);
    const std::size_t start[] = {time ? *time : 0, 0}, count[] = {1, size};
    if (size > 0)
      check(time ? nc_get_vara_double(id_, variable.id, start, count, values.data())
                 : nc_get_var_double(id_, variable.id, values.data()));
    for (double& value : values)
      if (!std::isfinite(value) || value == variable.fill) value = std::numeric_limits<double>::quiet_NaN();
    return values;
  }

  std::string text_attribute(int variable, const char* name) const {
    std::size_t length = 0;
    nc_type type = NC_NAT;
    if (nc_inq_att(id_, variable, name, &type, &length) != NC_NOERR || type != NC_CHAR) return {};
    std::string value(length, '\0');
    check(nc_get_att_text(id_, variable, name, value.data()));
    return value;
  }

  std::string packed_names() const {
    int id = 0, count = 0;
    std::array<int, NC_MAX_VAR_DIMS> shape{};
    std::size_t length = 0;
    nc_type type = NC_NAT;
    if (nc_inq_varid(id_, "segment_name", &id) != NC_NOERR) refuse("has no variable \"segment_name\"");
    check(nc_inq_var(id_, id, nullptr, &type, &count, shape.data(), nullptr));
    if (type != NC_CHAR || count != 2 || shape[0] != dimension_[segment_dimension])
      refuse("the variable \"segment_name\" does not hold letters by (segment, name_length)");
    check(nc_inq_dimlen(id_, shape[1], &length));
    const std::size_t segments = size_[segment_dimension];
    std::string letters;
    if (segments > 0 && length > letters.max_size() / segments) refuse("has segment names without end");
    letters.resize(segments * length);
    if (!letters.empty()) check(nc_get_var_text(id_, id, letters.data()));
    std::string packed;
    for (std::size_t i = 0; i < segments; ++i) {
      std::string_view name = std::string_view(letters).substr(i * length, length);
      name = name.substr(0, name.find('\0'));
      add(packed, name.substr(0, name.find_last_not_of(' ') + 1));
    }
    return packed;
  }

  int id_ = -1;
  std::array<int, dimensions> dimension_{};
  std::array<std::size_t, dimensions> size_{};
  Variable flow_, volume_;
};

// False when the other side is gone.
bool send(const void* bytes, std::size_t size) {
  for (const char* at = static_cast<const char*>(bytes); size > 0;) {
    const ssize_t sent = write(channel, at, size);
    if (sent <= 0) return false;
    at += sent, size -= static_cast<std::size_t>(sent);
  }
  return true;
}
bool send(Kind kind, std::string_view bytes) {
  const Answer answer{kind, bytes.size()};
  return send(&answer, sizeof answer) && send(bytes.data(), bytes.size());
}
bool receive(Request& request) {
  char* const bytes = reinterpret_cast<char*>(&request);
  for (std::size_t got = 0; got < sizeof request;) {
    const ssize_t more = read(channel, bytes + got, sizeof request - got);
    if (more <= 0) return false;
    got += static_cast<std::size_t>(more);
  }
  return true;
}

void limit(decltype(RLIMIT_CPU) what, rlim_t most) {
  rlimit both{};
  getrlimit(what, &both);
  both.rlim_cur = std::min(most, both.rlim_max);
  setrlimit(what, &both);
}

// Address space in use, which a sanitizer makes large; 0 where the system does not tell.
rlim_t memory_in_use() {
  unsigned long long pages = 0;
  if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%llu", &pages) != 1) pages = 0;
    std::fclose(file);
  }
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

void begin_answer() {
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  limit(RLIMIT_CPU, static_cast<rlim_t>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) + 1 + seconds_for_an_answer);
}

bool send_row(const File& file, const Request& request) {
  try {
    const Row row = file.row(request.quantity, request.time);
    return send(Kind::row, {reinterpret_cast<const char*>(row.data()), row.size() * sizeof(double)});
  } catch (const Refusal& refusal) {
    return send(Kind::refusal, refusal.cause);
  }
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("vesk-hyd reads hydrodynamic files for the engine; it is no use by itself.\n", stderr);
    return 2;
  }
  limit(RLIMIT_CORE, 0);
  if (const rlim_t used = memory_in_use()) limit(RLIMIT_AS, used + most_memory);
  begin_answer();
  try {
    File file(argv[1]);
    bool heard = send(Kind::content, file.content());
    for (Request request{}; heard && receive(request); heard = send_row(file, request)) begin_answer();
  } catch (const Refusal& refusal) {
    send(Kind::refusal, refusal.cause);
  } catch (const std::bad_alloc&) { // told by its silence, as a crash is
  }
  _exit(0); // the libraries need not take down what they have built
}
