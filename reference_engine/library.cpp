// The six exported functions. Every exception ends here, as one sentence for the modeller and a return code.
// Only the functions of this header are visible from outside; the rest of the library is built hidden.
#pragma GCC visibility push(default)
#include "vesk_engine.h"
#pragma GCC visibility pop

#include "core/errors.h"
#include "host/host.h"
#include "host/hydro_linkage.h"
#include "host/read_period.h"
#include "host/run.h"
#include "script/script.h"

#include <algorithm>
#include <exception>
#include <filesystem>

namespace reference_engine {
namespace {

void end(Host& host, ReturnCode code, const char* sentence) {
  host.failure(sentence);
  host.return_code(code);
}

template <class Job>
void guarded(vesk_data_callback callback, Job job) noexcept {
  try {
    Host host(callback);
    try {
      job(host);
      host.return_code(ReturnCode::good);
    } catch (const Cancelled& cancelled) {
      host.info(cancelled.kept.empty() ? "Cancelled; no file was written."
                                       : "Cancelled. The results up to then are in " + cancelled.kept + ".");
      host.return_code(ReturnCode::cancelled);
    } catch (const InputError& error) {
      end(host, ReturnCode::bad_input, error.what());
    } catch (const WriteError& error) {
      end(host, error.disk_full() ? ReturnCode::disk_full : ReturnCode::not_written, error.what());
    } catch (const std::bad_alloc&) {
      end(host, ReturnCode::failed, "There is not enough memory for this model.");
    } catch (const std::exception& error) {
      end(host, ReturnCode::failed, error.what());
    }
  } catch (...) { // the front end could not even be reached
  }
}

Form form_of(const std::string& file) {
  const auto extension = std::filesystem::path(file).extension();
  if (extension == ".vkn") return network_form;
  if (extension == ".rst") return restart_form;
  return input_form;
}

std::string named_file(Host& host) {
  std::string file = host.string("FILENAME");
  host.stop_if_cancelled(); // a name that is too long has made the job fail
  if (file.empty()) throw InputError("No file name was given.");
  return file;
}

} // namespace
} // namespace reference_engine

using namespace reference_engine;

extern "C" {

// Not part of the interface: tells Vesk's own programs that the return codes and VESK_RESULTS are those of this engine.
[[gnu::visibility("default")]] extern const int vesk_bundled_engine;
const int vesk_bundled_engine = 1;

[[gnu::visibility("default")]] extern const char* const vesk_engine_version; // shown by the front end
const char* const vesk_engine_version = REFERENCE_ENGINE_VERSION;

void execute_model(const char* library, vesk_data_callback data_callback) {
  guarded(data_callback, [&](Host& host) { run_model(host, library == nullptr ? "" : library); });
}

void get_maximum_parameters(const char*, vesk_data_callback data_callback) {
  guarded(data_callback, [](Host& host) {
    host.put("MAXSEG", Limits::segments);
    host.put("MAXTRANFUNC", Limits::functions);
    host.put("MAXBREAK", Limits::breaks);
    host.put("MAXBOUND", Limits::boundaries);
    host.put("MAXLOAD", Limits::loads);
    read_period(host); // refuses a period that no run could use
  });
}

void import_export(vesk_data_callback data_callback, int flag) {
  guarded(data_callback, [flag](Host& host) {
    const std::string file = named_file(host);
    if (flag == 0) return export_script(host, file, form_of(file));
    import_script(host, file, input_form);
    host.put("FILENAME", file);
    host.info("Read " + file + ".");
  });
}

void import_network(vesk_data_callback data_callback) {
  guarded(data_callback, [](Host& host) {
    const std::string file = named_file(host);
    import_script(host, file, network_form);
    host.info("Read the network " + file + ".");
  });
}

void load_restart_file(vesk_data_callback data_callback) {
  guarded(data_callback, [](Host& host) {
    const std::string file = named_file(host);
    import_script(host, file, restart_form);
    host.info("Read the restart file " + file + ".");
  });
}

void read_hyd_file(vesk_data_callback data_callback) {
  guarded(data_callback, build_from_hydro_file);
}

} // extern "C"
