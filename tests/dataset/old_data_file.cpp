#include "old_data_file.h"

namespace vesk {

namespace {

class file_bytes {
public:
  explicit file_bytes(std::uint32_t version) : version_(version) {}

  bool from(std::uint32_t first) const { return version_ >= first; }
  bool only(std::uint32_t first, std::uint32_t last) const { return version_ >= first && version_ <= last; }

  file_bytes& u8(unsigned value) { return little_endian(value, 1); }
  file_bytes& u32(std::uint64_t value) { return little_endian(value, 4); }
  file_bytes& i32(std::int32_t value) { return little_endian(static_cast<std::uint32_t>(value), 4); }
  file_bytes& f64(double value) { return little_endian(std::bit_cast<std::uint64_t>(value), 8); }
  file_bytes& text(const std::string& value) {
    u32(value.size());
    bytes += value;
    return *this;
  }
  file_bytes& one_point(double value) { return u32(1).i32(146097).i32(3600).f64(value); }

  file_bytes& query(const std::string& name) {
    text(name).text("a.db").text("").u8(0).u8(1).text("when").text("what").u8(0);
    u32(1).text("station").u32(1).u32(4).text("7");
    if (from(0x00070001)) u8(1);
    return *this;
  }
  // The last fields of most series.
  file_bytes& tail(const std::string& name) {
    if (from(0x00070006)) u32(1);
    if (from(0x00070002)) query(name);
    if (only(0x00010007, 0x00070001)) text("select old");
    return *this;
  }

  std::string bytes;

private:
  file_bytes& little_endian(std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xff);
    return *this;
  }

  std::uint32_t version_;
};

void add_lists(file_bytes& f) {
  f.one_point(0.5); // print intervals
  f.u32(0);         // time steps
  f.u32(1);         // segments
  f.u32(2).u32(11).f64(1).u32(12).f64(2);
  f.u32(1).u32(21).f64(3).f64(0.5);
  f.f64(100).f64(1).f64(2).f64(3).f64(4).u32(5).i32(-1).text("Bend");
  if (f.from(0x00010008)) f.f64(10).f64(20).f64(30).f64(40);
  if (f.from(0x00070004)) f.f64(50);
  f.u32(1).u8(1).u32(31).text("Wind").one_point(1).tail("wind"); // time functions
  f.u32(1).u32(41).text("Global").u32(1);                        // constant groups
  f.u32(51).f64(0).f64(1).f64(0.5).text("Rate").u8(1).f64(0.75);
  f.u32(1).u32(21).u32(1).u32(2).u8(1).u8(0).u8(1); // systems
  f.f64(1.5).f64(2.5).f64(3.5).f64(4.5).f64(5.5).f64(6.5).text("Nitrate");
  f.u32(1).one_point(2).i32(0).tail("load");
  f.u32(1).one_point(3).i32(1).tail("boundary");
  f.u32(1).u32(11).f64(0).f64(9).f64(4).text("Shade").u8(1).f64(2);                         // parameters
  f.u32(1).u32(1).one_point(4).u32(1).f64(5).f64(6).i32(0).i32(-1).text("Mix").tail("mix"); // exchange fields
  f.u32(77).u8(1).f64(1.5).f64(2.5).text("Surface");
  f.u32(1).u32(1).one_point(5).u32(1).f64(0.25).i32(-1).i32(0).text("Flow").tail("flow"); // flow fields
  f.u8(1).u32(78).f64(3.5).f64(4.5).text("Main");
}

time_series_block series(std::uint32_t version, double value, const char* name) {
  time_series_block result;
  result.points = {{{146097, 3600}, value}};
  if (version >= 0x00070006) result.interpolation_type = 1;
  if (version >= 0x00070002)
    result.query.edit() = {name, "a.db", "", false, true, "when", "what", false, {{"station", 1, 4, "7"}}, true};
  return result;
}

template <class Record>
Record with_series(const time_series_block& block) {
  Record record;
  static_cast<time_series_block&>(record) = block;
  return record;
}

} // namespace

std::string old_data_file(std::uint32_t version) {
  file_bytes f(version);
  f.u32(version);
  if (f.from(0x00070005)) f.u32(0).u32(0);
  add_lists(f);
  f.text("remark").text("Old river").text("h.hyd").text("n.nps");
  f.f64(36526).f64(36527).f64(0.25).f64(0.75).u8(0).u8(1).u8(1).u8(1);
  f.u32(61).u32(7).u32(1).u32(2).f64(1.25).f64(2.25).f64(3.25);
  if (f.from(0x00010002)) f.u32(4).u32(3);
  if (f.only(0x00010007, 0x00070001)) f.u32(2).query("dropped").query("dropped too").text("and this");
  if (f.from(0x00010009)) f.u32(1).u32(61).text("Oxygen").text("DO").text("mg/L").u8(0).u8(1);
  if (f.from(0x00070002)) f.query("print").query("step");
  if (f.from(0x00070003)) f.f64(36526.5).f64(0.125);
  if (f.from(0x00070004)) f.f64(0.8);
  if (f.from(0x00070006)) f.f64(0.5).f64(0.001);
  if (f.from(0x00070007)) f.u32(1);
  if (!f.from(0x00070005)) return f.bytes;
  file_bytes offset(version);
  offset.u32(f.bytes.size());
  f.bytes.replace(4, 4, offset.bytes);
  return f.u32(2).text("a.vki").text("b.vki").bytes;
}

prevesk_dataset_data_type old_data_set(std::uint32_t version) {
  prevesk_dataset_data_type data;
  data.file_version = version;
  data.print_intervals.points = {{{146097, 3600}, 0.5}};

  segment_data_type segment;
  segment.parameters.push_back({11, 1.0});
  segment.parameters.push_back({12, 2.0});
  segment.systems.push_back({21, 3.0, 0.5});
  segment.volume = 100, segment.vmult = 1, segment.vexp = 2, segment.dmult = 3, segment.dexp = 4;
  segment.segment_type = 5;
  segment.name = "Bend";
  if (version >= 0x00010008) segment.length = 10, segment.width = 20, segment.slope = 30, segment.bottom_roughness = 40;
  if (version >= 0x00070004) segment.minimum_depth = 50;
  data.segments = {segment};

  auto wind = with_series<time_function_data_type>(series(version, 1, "wind"));
  wind.isc = 31, wind.description = "Wind", wind.used = true;
  data.time_functions = {wind};
  data.constant_groups = {{41, "Global", {{51, 0, 1, 0.5, "Rate", -1, true, 0.75}}}};
  auto load = with_series<loads_data_type>(series(version, 2, "load"));
  auto boundary = with_series<boundary_data_type>(series(version, 3, "boundary"));
  boundary.segment = 1;
  data.systems = {{21, "Nitrate", 1, 2, true, false, true, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, {load}, {boundary}}};
  data.parameters = {{11, 0, 9, 4, "Shade", true, 2}};
  auto mix = with_series<exchange_function_data_type>(series(version, 4, "mix"));
  mix.pairs = {{5, 6, 0, -1}};
  mix.description = "Mix";
  data.exchange_fields = {{{mix}, 77, true, 1.5, 2.5, "Surface"}};
  auto flow = with_series<flow_function_data_type>(series(version, 5, "flow"));
  flow.pairs = {{0.25, -1, 0}};
  flow.description = "Flow";
  data.flow_fields = {{{flow}, true, 78, 3.5, 4.5, "Main"}};

  data.comments = "remark", data.description = "Old river", data.hydrodynamic_file = "h.hyd", data.nps_file = "n.nps";
  data.seed_date = 36526, data.end_date = 36527, data.seed_time = 0.25, data.end_time = 0.75;
  data.time_step_option = false;
  data.negative_solution = data.use_nps_file = data.bed_compaction_option = true;
  data.reserved_option = 61, data.model_type = 7, data.restart_option = 1, data.flow_option = 2;
  data.volume_scale_factor = 1.25, data.volume_conversion_factor = 2.25, data.bed_compaction_time_step = 3.25;
  if (version >= 0x00010002) data.hydrodynamic_file_type = 4, data.solution_type = 3;
  if (version >= 0x00010009) data.output_controls = {{61, "Oxygen", "DO", "mg/L", "", false, true}};
  if (version >= 0x00070002) {
    data.print_intervals.query = series(version, 0, "print").query;
    data.time_steps.query = series(version, 0, "step").query;
  }
  if (version >= 0x00070003) data.skip_date = 36526.5, data.skip_time = 0.125;
  if (version >= 0x00070004) data.fraction_of_max_time_step = 0.8;
  if (version >= 0x00070005) data.project_files = {"a.vki", "b.vki"};
  if (version >= 0x00070006) data.max_dt = 0.5, data.min_dt = 0.001;
  if (version >= 0x00070007) data.vesk_to_vesk_linkage_option = 1;
  return data;
}

} // namespace vesk
