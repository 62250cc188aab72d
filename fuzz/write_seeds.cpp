// Writes the seeds that only the program's own code can make: data files of all versions, their JSON form, exported
// scripts, hydrodynamic files and results.
//
//   write_seeds FOLDER
#include "dataset/vki_file.h"
#include "old_data_file.h"
#include "sample_data_set.h"
#include "support/import_job.h"
#include "tools/dataset_json.h"
#include "vesk_engine.h"

#include <fstream>
#include <netcdf.h>

namespace {

using namespace vesk;
namespace fs = std::filesystem;

void write(const fs::path& file, const std::string& content) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

void write_data_files(const fs::path& folder) {
  for (const std::uint32_t version : {0x00010001U, 0x00010008U, 0x00010009U, 0x00070000U, 0x00070001U, 0x00070002U,
                                      0x00070003U, 0x00070004U, 0x00070005U, 0x00070006U, 0x00070007U})
    write(folder / "vki" / ("version" + std::to_string(version)), old_data_file(version));
  save_data_file(folder / "vki" / "sample", sample_data_set());
  std::string json;
  binary_writer output(json);
  write_json(output, sample_data_set());
  write(folder / "json" / "sample", json);
}

// A model with a record of each kind.
void write_scripts(const fs::path& folder) {
  fs::create_directories(folder / "script");
  const auto save = [&](const char* extension, const char* head) {
    const fs::path file = folder / "script" / ("river" + std::string(extension));
    fuzz::import_job job(file.string());
    job.data.resize_segments(3);
    job.data.time_steps.points = sample_points(0.5);
    job.data.print_intervals.points = sample_points(1);
    system_data_type& system = job.data.systems.edit(0);
    system.loads = {{}};
    system.loads.edit(0).points = sample_points(2);
    system.boundaries = {{}};
    job.data.time_functions.edit(0).used = job.data.parameters.edit(0).used = true;
    job.data.time_functions.edit(0).points = sample_points(3);
    job.data.constant_groups.edit(0).constants.edit(0).used = true;
    fill_transport_fields(job.data);
    job.data.segments.edit(1).name = "caf\xe9 \"x\"";
    fuzz::demand(job.run([] { import_export(&data_callback, 0); }), "the sample cannot be exported");
    std::ifstream stream(file, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    stream.close();
    write(file, head + content);
  };
  save(".inp", "");
  save(".vkn", "vkn\n");
  save(".rst", "rst\n");
}

void check(int status) {
  fuzz::demand(status == NC_NOERR, nc_strerror(status));
}

void write_hydro_file(const fs::path& file, int form) {
  fs::create_directories(file.parent_path());
  int id = 0, time = 0, segment = 0, link = 0, letters = 0;
  check(nc_create(file.c_str(), NC_CLOBBER | form, &id));
  check(nc_def_dim(id, "time", form == 0 ? NC_UNLIMITED : 3, &time));
  check(nc_def_dim(id, "segment", 2, &segment));
  check(nc_def_dim(id, "link", 3, &link));
  check(nc_def_dim(id, "name_length", 6, &letters));
  struct variable {
    const char* name;
    std::vector<int> shape;
    std::vector<double> values;
    int id = 0;
  };
  std::vector<variable> variables = {{"time", {time}, {240, 264, 288}},
                                     {"length", {segment}, {1000, NC_FILL_DOUBLE}},
                                     {"width", {segment}, {20, 30}},
                                     {"link_from", {link}, {0, 1, 2}},
                                     {"link_to", {link}, {1, 2, 0}},
                                     {"flow", {time, link}, {2, 1, 1, 1, 1, 1, 9, 9, 9}},
                                     {"volume", {time, segment}, {86400, 86400, 172800, 86400, 172800, 86400}}};
  for (variable& v : variables)
    check(nc_def_var(id, v.name, NC_DOUBLE, static_cast<int>(v.shape.size()), v.shape.data(), &v.id));
  const int name_shape[] = {segment, letters};
  int names = 0;
  check(nc_def_var(id, "segment_name", NC_CHAR, 2, name_shape, &names));
  const std::string units = "hours since 2000-01-01 00:00";
  check(nc_put_att_text(id, variables[0].id, "units", units.size(), units.data()));
  check(nc_enddef(id));
  check(nc_put_var_text(id, names, "upper\0lower "));
  for (const variable& v : variables) {
    std::vector<std::size_t> start(v.shape.size(), 0), count;
    for (const int dimension : v.shape) count.push_back(dimension == segment ? 2 : 3);
    check(nc_put_vara_double(id, v.id, start.data(), count.data(), v.values.data()));
  }
  check(nc_close(id));
}

} // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  const fs::path folder = arguments[1];
  write_data_files(folder);
  write_scripts(folder);
  for (const char* target : {"hyd", "results"}) { // both have volumes over times and segments
    write_hydro_file(folder / target / "classic", 0);
    write_hydro_file(folder / target / "wide", NC_64BIT_DATA);
    write_hydro_file(folder / target / "hdf5", NC_NETCDF4);
  }
}
