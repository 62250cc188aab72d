// A data set as JSON, for people, scripts and version control.
//
// One object whose members have the names of the data set's members, in the order of the data file. `file_version` is
// that of the file. Lists of records are arrays of objects, points are [[date, time, value], ...], flags true and
// false. A text that is not valid UTF-8 is {"windows-1252": "..."}. Doubles read back bit for bit; values without a
// JSON number are texts: "inf", "-inf", "nan" for the usual not-a-number and "nan:<16 hexadecimal digits>" for any
// other. Dates and times are numbers as in the file, or ISO 8601 texts: "2011-10-01", "06:30:00".
#pragma once

#include "dataset/binary_writer.h"
#include "dataset/dataset.h"
#include "dataset/vki_layout.h"

#include <stdexcept>
#include <string_view>

namespace vesk {

enum class json_dates { numbers, iso };

// Prints `data` as stored in a file of its `file_version`, without members that this version does not have or that come
// after `last_section`. With `iso`, a date or time that cannot be restored bit for bit from an ISO text remains a
// number. Throws file_exception.
void write_json(binary_writer& output, const prevesk_dataset_data_type& data,
                int last_section = layout<prevesk_dataset_data_type>::last_section,
                json_dates dates = json_dates::numbers);

// The JSON is not a data set: one sentence with the path of the fault, as in "segments[3].volume: expected a number,
// found a text.", or with line and column if it is not even JSON.
class json_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The data set described by `json`, with the current `file_version`. Missing members have their defaults, except that
// the six dates and times and `model_type` are 0. Throws json_exception.
prevesk_dataset_data_type read_json(std::string_view json);

} // namespace vesk
