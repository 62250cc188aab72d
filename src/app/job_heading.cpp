#include "app/job_heading.h"

#include "app/file_names.h"
#include "platform/counted.h"

#include <cstdio>
#include <ctime>

namespace vesk {

namespace {

const char* name_of(job_code code) {
  switch (code) {
  case job_code::import_file: return "Import of ";
  case job_code::export_file: return "Export to ";
  case job_code::run: return "Run of ";
  case job_code::get_maximum_parameters: return "Validity check of ";
  case job_code::read_hyd_file: return "Reading the hydrodynamic file of ";
  case job_code::import_network: return "Import of the network ";
  case job_code::load_restart_file: return "Loading the restart file ";
  }
  return "Job of ";
}

std::string result_of(const job_outcome& job) {
  if (job.cancelled) return "cancelled";
  if (job.failed()) return "failed";
  if (job.return_code != 0) return "failed with return code " + std::to_string(job.return_code);
  if (!job.warnings.empty()) return "finished with " + counted(job.warnings.size(), "warning");
  return "finished";
}

std::string heading(const char* what, const std::string& file) {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  char time[16] = "";
  std::strftime(time, sizeof time, "%H:%M:%S", &parts);
  return what + (file.empty() ? std::string("the unnamed data set") : leaf_of(file)) + ", " + time;
}

} // namespace

std::string heading_of_job(job_code code, const std::string& file) {
  return heading(name_of(code), file);
}

std::string heading_of_queries(const std::string& file) {
  return heading("Deferred queries of ", file);
}

std::string outcome_in_words(const job_outcome& job, double seconds) {
  char time[32];
  std::snprintf(time, sizeof time, seconds < 10 ? ", %.1f s" : ", %.0f s", seconds);
  return result_of(job) + time;
}

} // namespace vesk
