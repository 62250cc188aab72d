// Names of CSV results. They come with the model, which may be someone else's, and must not lead out of its folder.
#ifndef REFERENCE_ENGINE_OUTPUT_CSV_NAME_H
#define REFERENCE_ENGINE_OUTPUT_CSV_NAME_H

#include "output/results.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace reference_engine {

// Why `name` can't be the end of a result name, as in "the name \"a/b\" has a path separator"; empty if it can. An
// empty name is allowed: the variable's number is used instead.
std::string csv_name_fault(std::string_view name);

// The result file of a variable: in the folder of `base`, with its name as prefix. Throws InputError.
std::filesystem::path csv_result_name(const std::filesystem::path& base, const OutputVariable& variable);

} // namespace reference_engine

#endif
