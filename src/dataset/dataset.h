// The complete input of a model run.
#pragma once

#include "dataset/catalogue.h"
#include "dataset/file_origin.h"
#include "dataset/reading_losses.h"
#include "dataset/records.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>

namespace vesk {

class binary_reader;
class binary_writer;

// Positions of segments, from `first` to before `end`; no end means all the others.
struct segment_range {
  std::size_t first = 0, end = std::numeric_limits<std::size_t>::max();
};

// A complete model input.
//
// A value: copies share bulk content until one side changes it, so a copy is cheap and may be passed to another thread.
// One object belongs to one thread at a time. Dates and times are date-time numbers, with date and time stored
// separately.
class prevesk_dataset_data_type {
public:
  shared_list<solution_technique_type> solution_techniques;
  print_interval_series print_intervals; // days between outputs
  stored_series time_steps;              // days
  shared_list<segment_data_type> segments;
  shared_list<time_function_data_type> time_functions;
  shared_list<constant_group_data_type> constant_groups;
  shared_list<system_data_type> systems;
  shared_list<parameter_data_type> parameters;
  shared_list<exchange_field_data_type> exchange_fields; // 2 from the start
  shared_list<flow_field_data_type> flow_fields;         // 6 from the start
  shared_list<output_control_type> output_controls;
  std::string comments;
  std::string description = "Unnamed VESK Input Data Set";
  std::string hydrodynamic_file;
  std::string nps_file;
  double seed_date = 0; // start of the simulation
  double end_date = 0;  // end of the simulation
  double seed_time = 0;
  double end_time = 0;
  double skip_date = 0; // where the run starts in the hydrodynamic file
  double skip_time = 0;
  bool time_step_option = true;
  bool negative_solution = false;
  bool use_nps_file = false;
  bool bed_compaction_option = false; // true dynamic, false static bed volumes
  std::uint32_t reserved_option = 0;  // stored, without meaning
  std::uint32_t model_type = 0;       // the catalogue's Model_id
  std::uint32_t restart_option = 0;   // 0 no restart file, 1 create one
  std::uint32_t vesk_to_vesk_linkage_option = 0;
  std::uint32_t flow_option = 1; // 1 net flows, 2 gross flows, 3 hydrodynamic linkage, 4 kinematic wave
  double volume_scale_factor = 1.0;
  double volume_conversion_factor = 1.0;
  double bed_compaction_time_step = 0;
  double fraction_of_max_time_step = 0.9;
  std::string library = "UNKNOWN.DLL";
  std::string model_name = "UNKNOWN MODEL";
  std::uint32_t file_version = current_file_version();
  std::uint32_t max_num_segments = 0; // this and the next four: the engine's limits, 0 until it has set them
  std::uint32_t max_num_ef_functions = 0;
  std::uint32_t max_num_time_breaks = 0;
  std::uint32_t max_num_boundaries = 0;
  std::uint32_t max_num_loads = 0;
  shared_list<validation_information> validation_results;
  std::uint32_t hydrodynamic_file_type = 0;
  std::uint32_t solution_type = 0; // id of a solution technique
  double max_dt = 1.0;             // days
  double min_dt = 0.0001;          // days
  shared_list<project_component> project_files;
  file_origin origin; // never stored

  static constexpr std::uint32_t current_file_version() { return 0x00070007; }

  // A data set without a catalogue: defaults, the transport fields, and the machine's clock for all dates and times.
  prevesk_dataset_data_type();

  // A new data set for the catalogue's first model. If `catalogue` is null, the same as above.
  explicit prevesk_dataset_data_type(std::shared_ptr<const model_catalogue> catalogue);

  // Reads a whole data file into this newly constructed data set and reconciles it with the catalogue, if there is one.
  // Returns everything in the file that the data set does not have. Throws data_file_exception; the data set is then
  // partly filled.
  reading_losses read(binary_reader& file);

  // Writes the current layout with the current version and not with `file_version`.
  void write(binary_writer& file) const;

  // Takes the model's lists from the catalogue, sets the seed of new moments to the data set's start, and the default
  // segment type to the model's first. With `merge` the user's values are carried over to items with the same ISC
  // number; without it the lists, and everything that depends on them, get their defaults. Throws catalogue_exception
  // without a catalogue.
  void refresh_from_catalogue(bool merge);

  // The individual fills: `count` is the number of records in the new list. `merge` as above. The segments' own lists
  // are brought to the same length; those before `first_segment` are known to have the length of the present list.
  void fill_parameters(std::size_t count, bool merge, segment_range which = {});
  void fill_systems(std::size_t count, bool merge, segment_range which = {});
  void fill_constant_groups(std::size_t count, bool merge);
  void fill_time_functions(std::size_t count, bool merge);
  void fill_output_controls(std::size_t count, bool merge);
  std::size_t count_constants_in_group(const constant_group_data_type& group) const;
  void fill_constants_of_group(constant_group_data_type& group, std::size_t count) const;

  // Sets the number of segments to `count`: new ones are appended with lists of the right length, or the last ones
  // removed.
  void resize_segments(std::size_t count);

  // Gives these segments lists of the right length; the others are known to have them. Their values and all else that
  // the user has entered are kept. Restores the catalogue's descriptions and limits where its model has the parameters
  // and systems of this data set.
  void reconcile_segments(segment_range which = {});

  // Gives an empty series two points of value 0, at the default moment and at the data set's end. Leaves other series
  // alone.
  void ensure_default_points(point_list& points) const;

  // The same for every empty series that a run needs: print intervals, time functions, loads. Boundaries, exchange and
  // flow functions get theirs when they are created.
  void give_default_points();

  // Called before the queries of a run's copy are executed. Does nothing: only a job's own copy ever moves cursors, so
  // there is nothing to reset.
  void reset_cursors() const {}

  // Updates each system's boundaries to the segments that touch the outside of the model: missing ones are appended
  // with a series of zeros over the run, those no longer needed are erased.
  void find_boundaries();

  // Checks the data set against the engine's limits and the files that it names, and replaces `validation_results`. A
  // relative file name is looked for in `data_folder`, then in the current folder. True if nothing of severity 2 was
  // found. The engine must have set the limits before.
  bool check_limits(const std::filesystem::path& data_folder = {});

  // The lists that come from the catalogue.
  model_lists lists_of_model() const { return {systems, parameters, constant_groups, time_functions, output_controls}; }

  // Why the model cannot be run over its period, one sentence: the start or the end is not finite or outside the
  // calendar, and an engine might never finish. Empty if it can be run.
  std::string period_fault() const;

  // Start of the simulation as a date-time number.
  double start_date_time() const { return seed_date + seed_time; }
  double end_date_time() const { return end_date + end_time; }

  // Sets the seed of new moments to the data set's start, for the calling thread.
  void apply_seed() const;

  // The same, and the type of new segments to the first of the data set's model.
  void apply_thread_defaults() const;

  // The source of the model lists; may be null.
  const std::shared_ptr<const model_catalogue>& catalogue() const { return catalogue_.pointer; }
  // Sets another catalogue; the lists stay as they are until they are refreshed.
  void set_catalogue(std::shared_ptr<const model_catalogue> catalogue) { catalogue_.pointer = std::move(catalogue); }

  // Equal in all members except cursors, origin and catalogue.
  friend bool operator==(const prevesk_dataset_data_type&, const prevesk_dataset_data_type&) = default;

private:
  struct catalogue_link {
    std::shared_ptr<const model_catalogue> pointer;
    friend bool operator==(const catalogue_link&, const catalogue_link&) { return true; }
  };

  // The catalogue's model for `model_type`; a model without rows if the catalogue lacks it.
  const catalogue_model& model() const;
  // The catalogue has the model, with the same parameters and systems in the same order.
  bool has_lists_of_catalogue() const;

  catalogue_link catalogue_;
};

} // namespace vesk
