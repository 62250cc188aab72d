// Results of a few series only: a run among thousands needs no more, and small files are what many of them take.
#ifndef REFERENCE_ENGINE_OUTPUT_CHOSEN_RESULTS_H
#define REFERENCE_ENGINE_OUTPUT_CHOSEN_RESULTS_H

#include "output/results.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace reference_engine {

struct ChosenResults {
  struct Column {
    std::string name;              // "DO@24"
    std::size_t variable, segment; // positions, in `variables` and of the segment
  };
  std::vector<OutputVariable> variables; // those that a column needs
  std::vector<Column> columns;           // in the order of the text
};

// Reads "DO@24,{Dissolved oxygen}@0": variables by their names in the results file, or by description in braces;
// segments by position from 0. Throws InputError.
ChosenResults choose_results(std::string_view text, const std::vector<OutputVariable>& variables, std::size_t segments);

// `base` with ".results.csv" added: the time, then the columns, with all digits of double precision.
std::unique_ptr<ResultWriter> make_chosen_writer(const std::filesystem::path& base, const RunDescription& run,
                                                 const ChosenResults& chosen);

} // namespace reference_engine

#endif
