#include "core/errors.h"
#include "core/text.h"
#include "output/output_file.h"
#include "script/arguments.h"
#include "script/export_notes.h"
#include "script/script.h"
#include "script/words.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fstream>

namespace reference_engine {

namespace {

class Writer {
public:
  Writer(Host& host, std::ostream& out) : host_(host), out_(out) { value_.text.resize(Host::text_size); }

  void write(const Keyword& row) { write_below(row, 0, {}, {}); }

  // Call it after all rows.
  void warn_of_values_that_cannot_be_imported(const std::string& file) {
    if (not_finite_ > 0)
      host_.warning(text(file, ": ", not_finite_, not_finite_ == 1 ? " value is" : " values are",
                         " not finite, so the file cannot be imported as it is; the first is ", first_not_finite_,
                         "."));
  }

private:
  // positions: the indices as a GET takes them. numbers: as a PUT takes them.
  void write_below(const Keyword& row, std::size_t depth, Indices positions, Indices numbers) {
    if (depth == index_count(row)) return write_line(row, positions, numbers);
    const Index& index = *row.indices[depth];
    const std::int32_t count = items(host_, row, depth, positions);
    if (depth == 0) host_.stop_if_cancelled();
    for (std::int32_t k = 1; k <= count; ++k) {
      positions[depth] = numbers[depth] = k;
      if (!index.isc.empty())
        numbers[depth] = index.segment_before ? host_.integer(index.isc, 1, k) : host_.integer(index.isc, k);
      write_below(row, depth + 1, positions, numbers);
    }
  }

  void write_line(const Keyword& row, Indices positions, const Indices& numbers) {
    value_.integers = {};
    value_.reals = {};
    value_.text.front() = '\0';
    host_.get(row.name, value_.arguments(row, positions));
    if (row.counts_from_zero_on_get && value_.integers[0]++ >= host_.integer("NUMSYS")) return; // none is chosen
    if (row.left_out_when_empty && value_.text.front() == '\0') return;
    line_ = row.name;
    for (std::size_t k = 0; k < index_count(row); ++k) append_number(line_ += ' ', numbers[k]);
    if (!std::ranges::all_of(value_.reals, [](float value) { return std::isfinite(value); }) && not_finite_++ == 0)
      first_not_finite_ = line_;
    for (std::size_t k = 0; k < word_count(row.value); ++k) append_value(row.value, k);
    out_ << (line_ += '\n');
  }

  void append_value(ValueKind kind, std::size_t k) {
    line_ += ' ';
    switch (kind) {
    case ValueKind::integer:
    case ValueKind::triple: return append_number(line_, value_.integers[k]);
    case ValueKind::real:
    case ValueKind::point: return append_number(line_, value_.reals[k]);
    case ValueKind::text: return append_text(line_, value_.text.c_str());
    }
  }

  Host& host_;
  std::ostream& out_;
  Value value_;
  std::string line_;
  std::size_t not_finite_ = 0;
  std::string first_not_finite_; // keyword and indices
};

} // namespace

void export_script(Host& host, const std::string& file, Form form) {
  OutputFile target(file, file);
  std::ofstream out(target.temporary(), std::ios::binary);
  Writer writer(host, out);
  for (const Keyword& row : keywords())
    if ((row.forms & form) != 0) writer.write(row);
  out.close();
  if (!out) throw WriteError(file, errno);
  target.publish();
  writer.warn_of_values_that_cannot_be_imported(file);
  if (form == input_form) report_what_is_left_out(host);
  host.info(text("Wrote ", file, "; it contains no stored queries, nor values of items that are switched off."));
}

} // namespace reference_engine
