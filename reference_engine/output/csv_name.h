// The names of CSV results. They come with the model, from whoever made it, and must not lead out of its folder.
#ifndef REFERENCE_ENGINE_OUTPUT_CSV_NAME_H
#define REFERENCE_ENGINE_OUTPUT_CSV_NAME_H

#include "output/results.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace reference_engine {

// Why `name` can't be the end of a result's name, as in "the name \"a/b\" has a path separator"; empty when it can. An
// empty name can: it stands for the variable's number.
std::string csv_name_fault(std::string_view name);

// The file of a variable's results: in the folder of `base`, beginning with its name. Throws InputError.
std::filesystem::path csv_result_name(const std::filesystem::path& base, const OutputVariable& variable);

} // namespace reference_engine

#endif
