#include "core/kinetics.h"

#include "core/errors.h"
#include "core/oxygen.h"
#include "core/text.h"
#include "core/tracer.h"

namespace reference_engine {

const std::vector<ModelInfo>& known_models() {
  static const std::vector<ModelInfo> models = {Oxygen::info(), Tracer::info()};
  return models;
}

const ModelInfo& model_info(std::string_view library) {
  for (const ModelInfo& model : known_models())
    if (model.library == library) return model;
  throw InputError(
      text("The model library \"", library, "\" is not known to this engine, which has oxygen and tracer."));
}

std::unique_ptr<Kinetics> make_kinetics(std::string_view library, const Problem& problem) {
  const ModelInfo& model = model_info(library);
  if (problem.systems.size() != model.systems.size())
    throw InputError(text("The model ", library, " has ", model.systems.size(), " systems, but the data set has ",
                          problem.systems.size(), "."));
  if (library == Oxygen::library) return std::make_unique<Oxygen>(problem);
  return std::make_unique<Tracer>(problem);
}

} // namespace reference_engine
