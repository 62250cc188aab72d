// A catalogue whose models name the behaviours of the misbehaving engine: model 1 "says run", and so on.
#pragma once

#include <filesystem>
#include <initializer_list>
#include <string>

namespace vesk {

// The behaviours, model 1 first.
extern const std::initializer_list<const char*> behaviours;

// The model for a behaviour.
unsigned model_of(const std::string& behaviour);

// Writes `catalogue.sqlite` into the folder; each model has one system and two parameters.
void write_behaviour_catalogue(const std::filesystem::path& folder);

} // namespace vesk
