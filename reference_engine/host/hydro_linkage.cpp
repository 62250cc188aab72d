#include "host/hydro_linkage.h"

#include "core/errors.h"
#include "core/text.h"
#include "script/script.h"

#include <algorithm>
#include <filesystem>

namespace reference_engine {

namespace {

constexpr std::int32_t surface_field = 1;

std::string find_file(const std::string& name, const std::string& data_file) {
  namespace fs = std::filesystem;
  if (name.find("://") != std::string::npos) // a library would fetch it, with the user's credentials
    throw InputError(text(name, ": is a URL; a hydrodynamic file must be on this machine."));
  std::string with_slashes = name, data_with_slashes = data_file;
  std::ranges::replace(with_slashes, '\\', '/');
  std::ranges::replace(data_with_slashes, '\\', '/');
  std::error_code ignored;
  for (const std::string& form : {name, with_slashes})
    for (const std::string& beside : {data_file, data_with_slashes})
      if (const fs::path path = fs::path(beside).parent_path() / form; fs::is_regular_file(path, ignored))
        return path.string();
  for (const std::string& form : {name, with_slashes})
    if (fs::is_regular_file(form, ignored)) return form;
  throw InputError(text(name, ": no such hydrodynamic file. Correct the name in the data set's settings."));
}

Moment taken_up_at(Host& host) {
  Moment moment;
  host.get("HYDSKIPDATE", {&moment.month, &moment.day, &moment.year});
  host.get("HYDSKIPTIME", {&moment.hour, &moment.minute, &moment.second});
  if (!moment.is_valid())
    throw InputError("The date and time at which the run enters the hydrodynamic file is not a date.");
  return moment;
}

template <class Value>
void put_at(Host& host, std::string_view keyword, std::int32_t segment, Value value) {
  auto narrowed = static_cast<float>(value);
  host.put(keyword, Host::Arguments{&segment, &narrowed});
}

void put_segments(Host& host, HydroFile& file) {
  const double factor = host.real("SCALV") * host.real("CONVV");
  if (!(factor > 0)) throw InputError("The scale or conversion factor of volumes is 0 or less.");
  file.take_up_nearest(taken_up_at(host));
  const std::vector<double> volumes = file.volumes(0);
  host.put("NUMSEG", static_cast<std::int32_t>(volumes.size()));
  for (std::size_t i = 0; i < volumes.size(); ++i) {
    auto segment = static_cast<std::int32_t>(i + 1);
    HydroFile::Segment it = file.segments()[i];
    host.put("SEGNAME", Host::Arguments{&segment, it.name.data()});
    put_at(host, "VOLUME", segment, volumes[i] / factor);
    put_at(host, "SEGLENGTH", segment, it.length);
    put_at(host, "SEGWIDTH", segment, it.width);
  }
}

void put_links(Host& host, const HydroFile& file) {
  const auto name_of = [&file](int segment) {
    return segment == outside ? std::string("outside") : file.segments()[static_cast<std::size_t>(segment)].name;
  };
  std::int32_t field = surface_field, none = 0, one = 1, count = static_cast<std::int32_t>(file.links().size());
  host.put("NINQ", Host::Arguments{&field, &none}); // clears the old functions first, so that nothing of them remains
  host.put("NINQ", Host::Arguments{&field, &count});
  for (std::int32_t function = 1; function <= count; ++function) {
    const HydroFile::Link& link = file.links()[static_cast<std::size_t>(function - 1)];
    std::string description = text(name_of(link.from), " to ", name_of(link.to));
    std::int32_t from = link.from + 1, to = link.to + 1;
    float all = 1;
    host.put("FLOWFUNCDESC", Host::Arguments{&field, &function, description.data()});
    host.put("NOQS", Host::Arguments{&field, &function, &one});
    host.put("JQ", Host::Arguments{&field, &function, &one, &from});
    host.put("IQ", Host::Arguments{&field, &function, &one, &to});
    host.put("BQ", Host::Arguments{&field, &function, &one, &all});
  }
}

} // namespace

std::unique_ptr<HydroFile> open_hydro_file(Host& host) {
  if (const int type = host.integer("HYDROTYPE"); type != 0)
    throw InputError(text("The hydrodynamic file type ", type, " is unknown; this engine reads type 0."));
  const std::string name = host.string("HYDROFILE");
  if (name.empty()) throw InputError("The data set does not name a hydrodynamic file.");
  auto file =
      std::make_unique<HydroFile>(find_file(name, host.string("FILENAME")), [&host] { host.stop_if_cancelled(); });
  if (file->segments().size() > Limits::segments || file->links().size() > Limits::functions)
    throw InputError(text(file->name(), ": has more segments or links than this engine supports."));
  return file;
}

void build_from_hydro_file(Host& host) {
  const auto file = open_hydro_file(host);
  host.stop_if_cancelled();
  put_segments(host, *file);
  put_links(host, *file);
  host.put("FINDBOUND");
  host.info(text("Read ", file->segments().size(), " segments and ", file->links().size(), " links from ", file->name(),
                 "; runs read the flows over time from that file."));
}

std::unique_ptr<HydroFile> link_hydro_file(Host& host, double days, Forcing& forcing, Problem& problem) {
  auto file = open_hydro_file(host);
  if (file->segments().size() != problem.segments.size())
    throw InputError(text(file->name(), ": has ", file->segments().size(), " segments, but the data set has ",
                          problem.segments.size(), "."));
  file->take_up(taken_up_at(host), days);
  const std::vector<double> volumes = file->volumes(0);
  for (std::size_t i = 0; i < volumes.size(); ++i) problem.segments[i].volume = volumes[i];
  std::size_t element = forcing.flows.size();
  for (const HydroFile::Link& link : file->links())
    problem.flows.push_back(
        {.element = element++, .field = FlowField::surface_water, .from = link.from, .to = link.to});
  file->hold(0, forcing.linked, forcing.volume_change);
  return file;
}

} // namespace reference_engine
