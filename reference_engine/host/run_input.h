// Everything that a run reads from the data set, in one pass before its first step.
#ifndef REFERENCE_ENGINE_HOST_RUN_INPUT_H
#define REFERENCE_ENGINE_HOST_RUN_INPUT_H

#include "core/forcing.h"
#include "core/problem.h"
#include "core/step_control.h"
#include "host/host.h"
#include "host/hydro_file.h"
#include "output/results.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace reference_engine {

struct RunInput {
  Problem problem;
  Forcing forcing;                  // registered with the host: this object must not move and must outlive the job
  std::unique_ptr<HydroFile> hydro; // with hydrodynamic linkage
  StepRules rules;
  std::vector<std::pair<double, double>> print_intervals; // days from which each holds, and days
  std::vector<double> points;                             // days on which series in use have points, ascending
  double days = 0;                                        // length of the run
  int technique = 0;
  int debug = 0; // 0 to 2: how much the run reports
  double volume_factor = 1;
  bool writes_restart = false;
  std::filesystem::path base; // of the result names: the data file without its extension
  Moment start;
  std::vector<OutputVariable> outputs, csv_outputs;
};

// Reads the data set into `input` and registers the arrays of its forcing. Throws InputError, with one sentence, if it
// can't be run, and Cancelled.
void read_run_input(Host& host, std::string_view library, RunInput& input);

} // namespace reference_engine

#endif
