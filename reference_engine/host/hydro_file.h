// A hydrodynamic linkage file (.hyd): segments, the links between them, and flows and volumes over time, as another
// program computed them. NetCDF; the README has the layout.
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
    double length = 0, width = 0; // m; 0 where the file has none
  };
  struct Link {
    int from, to; // positions from 0, `outside` for the world around the model
  };

  // Reads all but flows and volumes, which are read as they are asked for. Throws InputError, in one sentence, for what
  // is no such file or a damaged one; so does all that reads. `waiting` as HydroReader has it.
  explicit HydroFile(std::string name, HydroReader::Waiting waiting = {});

  const std::string& name() const { return name_; }
  const std::vector<Segment>& segments() const { return segments_; }
  const std::vector<Link>& links() const { return links_; }

  // Lets day 0 of a run be this moment of the file. `days` is the length of the run: throws InputError where the file
  // does not cover it.
  void take_up(const Moment& at, double days);
  // The same for a look at one moment; a moment that the file does not cover becomes its nearest.
  void take_up_nearest(const Moment& at);

  // Days of the run from here on.
  // Flows (m3/s for each link) hold until the next change; between two times of the file volumes are linear. A moment
  // that is a time of the file belongs to what follows it.
  void hold(double day, std::vector<double>& flows, std::vector<double>& volume_change);
  double next_change(double day) const; // infinite behind the last

  // A volume that does not follow from the flows.
  struct Mismatch {
    std::size_t segment;
    Moment begin, end;           // times of the file
    double before, after, flown; // m3 at the begin, at the end, and at the end by the flows
  };
  // The worst one between the two times that `hold` last took, if it is more than a hundredth of the volume.
  std::optional<Mismatch> mismatch() const;
  std::vector<double> volumes(double day);

private:
  using Row = HydroReader::Row;

  std::string name_of_segment(std::size_t segment) const; // number and name for a sentence
  std::string name_of_link(std::size_t link) const;
  void take_segments(HydroReader::Content& content);
  void take_links(const HydroReader::Content& content);
  void take_times(HydroReader::Content& content);
  void read_row(HydroReader::Quantity quantity, std::size_t time, Row& row); // throws where a value is missing
  void load(std::size_t interval);
  std::size_t interval_at(double day) const;

  std::string name_;
  HydroReader reader_;
  std::vector<Segment> segments_;
  std::vector<Link> links_;
  Moment epoch_;              // that times_ count from
  std::vector<double> times_; // days, ascending
  double offset_ = 0;         // time of the file on day 0
  std::size_t interval_;      // whose rows are loaded
  Row flows_, volumes_, next_volumes_;
};

} // namespace reference_engine

#endif
