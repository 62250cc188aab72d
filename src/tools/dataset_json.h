// A data set as JSON, for people, scripts and version control.
//
// One object whose members bear the names of the data set's members, in the order of the data file. `file_version` is
// the file's. Lists of records are arrays of objects, points are [[date, time, value], ...], flags true and false. A
// text that is not valid UTF-8 is {"windows-1252": "..."}. Doubles read back bit for bit; what JSON has no number for
// is a text: "inf", "-inf", "nan" for the usual not-a-number and "nan:<16 hexadecimal digits>" for any other one.
#pragma once

#include "dataset/binary_writer.h"
#include "dataset/dataset.h"
#include "dataset/vki_layout.h"

#include <stdexcept>
#include <string_view>

namespace vesk {

// Prints `data` as it was stored in a file of its `file_version`: what that version does not hold is left out, and so
// is what stands behind `last_section`. Throws file_exception.
void write_json(binary_writer& output, const prevesk_dataset_data_type& data,
                int last_section = layout<prevesk_dataset_data_type>::last_section);

// JSON that is no data set: one sentence with the path of what is wrong, as in "segments[3].volume: expected a number,
// found a text.", or with line and column where it is not even JSON.
class json_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The data set that `json` tells, with the current `file_version`. Members left out have their defaults, but the six
// dates and times and `model_type` are 0. Throws json_exception.
prevesk_dataset_data_type read_json(std::string_view json);

} // namespace vesk
