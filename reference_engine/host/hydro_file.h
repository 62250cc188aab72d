// A hydrodynamic linkage file (.hyd): segments, the links between them, and flows and volumes over time, as computed by
// another program. NetCDF; the layout is in the README.
#ifndef REFERENCE_ENGINE_HOST_HYDRO_FILE_H
#define REFERENCE_ENGINE_HOST_HYDRO_FILE_H

#include "host/hydro_reader.h"
#include "output/moment.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace reference_engine {

class HydroFile {
public:
  struct Segment {
    std::string name;
    double length = 0, width = 0; // m; 0 if not in the file
  };
  struct Link {
    int from, to; // 0-based segments; `outside` for the surroundings of the model
  };

  // Reads everything but flows and volumes, which are read on demand. Throws InputError, with one sentence, if the file
  // is damaged or is not a linkage file; so do all functions that read. `waiting`: see HydroReader.
  explicit HydroFile(std::string name, HydroReader::Waiting waiting = {});

  const std::string& name() const { return name_; }
  const std::vector<Segment>& segments() const { return segments_; }
  const std::vector<Link>& links() const { return links_; }

  // Makes `at`, a date and time in the file, day 0 of the run. `days`: length of the run. Throws InputError if the file
  // does not cover it.
  void take_up(const Moment& at, double days);
  // The same for a single time. A time outside the file is moved to the nearest one inside.
  void take_up_nearest(const Moment& at);

  // From here on, days are days of the run.
  // Flows (m3/s for each link) are constant until the next change; volumes are linear between two times of the file. A
  // time of the file belongs to the interval after it.
  void hold(double day, std::vector<double>& flows, std::vector<double>& volume_change);
  double next_change(double day) const; // infinite after the last one

  // A volume that does not agree with the flows.
  struct Mismatch {
    std::size_t segment;
    Moment begin, end;           // times of the file
    double before, after, flown; // m3: at the start, at the end, and at the end according to the flows
  };
  // The worst mismatch between the two file times of the last `hold`, if it exceeds a hundredth of the volume.
  std::optional<Mismatch> mismatch() const;
  std::vector<double> volumes(double day);

private:
  using Row = HydroReader::Row;

  std::string name_of_segment(std::size_t segment) const; // number and name, for use in a sentence
  std::string name_of_link(std::size_t link) const;
  void take_segments(HydroReader::Content& content);
  void take_links(const HydroReader::Content& content);
  void take_times(HydroReader::Content& content);
  void read_row(HydroReader::Quantity quantity, std::size_t time, Row& row); // throws if a value is missing
  void load(std::size_t interval);
  std::size_t interval_at(double day) const;

  std::string name_;
  HydroReader reader_;
  std::vector<Segment> segments_;
  std::vector<Link> links_;
  Moment epoch_;              // the origin of times_
  std::vector<double> times_; // days, ascending
  double offset_ = 0;         // file time of day 0
  std::size_t interval_;      // the interval whose rows are loaded
  Row flows_, volumes_, next_volumes_;
};

} // namespace reference_engine

#endif
