#include "script/keywords.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace reference_engine {

namespace {

constexpr Index time_step{.name = "time step", .count = "NUMDT"};
constexpr Index print_interval{.name = "print interval", .count = "NPRINT"};
constexpr Index segment{.name = "segment", .count = "NUMSEG"};
constexpr Index system{.name = "system", .count = "NUMSYS"};
constexpr Index constant{.name = "constant", .count = "NUMCONST", .isc = "CONSTISC"};
constexpr Index parameter{.name = "parameter", .count = "NOPAM", .isc = "ISCPARAM", .segment_before = true};
constexpr Index time_function{.name = "time function", .count = "NUMTF", .isc = "TFISC"};
constexpr Index output{.name = "output variable", .count = "NUMOP", .isc = "OPISC"};
constexpr Index csv_output{.name = "output variable", .count = "NUMCSVOP", .isc = "CSVOPISC"};
constexpr Index function_point{.name = "point", .count = "NBRKTF", .parents = 1};
constexpr Index boundary{.name = "boundary", .count = "NOBC", .parents = 1};
constexpr Index boundary_point{.name = "point", .count = "NBFP", .parents = 2};
constexpr Index load{.name = "load", .count = "NOWK", .parents = 1};
constexpr Index load_point{.name = "point", .count = "NBWK", .parents = 2};
constexpr Index exchange_field{.name = "exchange field", .fixed = 2};
constexpr Index exchange_function{.name = "exchange function", .count = "NTEX", .parents = 1};
constexpr Index exchange_pair{.name = "exchange pair", .count = "NORS", .parents = 2};
constexpr Index exchange_point{.name = "point", .count = "NOBRKS", .parents = 2};
constexpr Index flow_field{.name = "flow field", .fixed = 6};
constexpr Index flow_function{.name = "flow function", .count = "NINQ", .parents = 1};
constexpr Index flow_pair{.name = "flow pair", .count = "NOQS", .parents = 2};
constexpr Index flow_point{.name = "point", .count = "NBRKQ", .parents = 2};

constexpr unsigned network = input_form | network_form;
constexpr unsigned restart = input_form | restart_form;
using enum ValueKind;
using enum Range;

constexpr Keyword rows[] = {
    {.name = "MODELTYPE"},
    {.name = "SEEDDATE", .value = triple, .range = date},
    {.name = "SEEDTIME", .value = triple, .range = time_of_day},
    {.name = "ENDJULIAN", .value = real, .range = days},
    {.name = "HYDSKIPDATE", .value = triple, .range = date},
    {.name = "HYDSKIPTIME", .value = triple, .range = time_of_day},
    {.name = "SOLUTIONTYPE"},
    {.name = "IQOPT"},
    {.name = "HYDROTYPE"},
    {.name = "HYDROFILE", .value = ValueKind::text, .left_out_when_empty = true},
    {.name = "LOPT"},
    {.name = "NPSFILE", .value = ValueKind::text},
    {.name = "ICRD"},
    {.name = "VESKTOVESKLINK"},
    {.name = "NEGSLN"},
    {.name = "INTYP"},
    {.name = "FRACMAXTS", .value = real},
    {.name = "MAXDT", .value = real},
    {.name = "MINDT", .value = real},
    {.name = "BEDOPT"},
    {.name = "BEDDT", .value = real},
    {.name = "NUMDT", .range = size},
    {.name = "DTFUNC", .indices = {&time_step}, .value = point},
    {.name = "NPRINT", .range = size},
    {.name = "PRINTFUNC", .indices = {&print_interval}, .value = point},

    {.name = "SCALV", .value = real},
    {.name = "CONVV", .value = real},
    {.name = "NUMSEG", .forms = network, .range = size},
    {.name = "SEGNAME", .indices = {&segment}, .value = ValueKind::text, .forms = network},
    {.name = "SEGTYPE", .indices = {&segment}, .forms = network},
    {.name = "BOTSEG", .indices = {&segment}, .forms = network, .range = segment_or_outside},
    {.name = "VOLUME", .indices = {&segment}, .value = real, .forms = network | restart},
    {.name = "VMULT", .indices = {&segment}, .value = real, .forms = network},
    {.name = "VEXP", .indices = {&segment}, .value = real, .forms = network},
    {.name = "DMULT", .indices = {&segment}, .value = real, .forms = network},
    {.name = "DEXP", .indices = {&segment}, .value = real, .forms = network},
    {.name = "SEGLENGTH", .indices = {&segment}, .value = real, .forms = network},
    {.name = "SEGWIDTH", .indices = {&segment}, .value = real, .forms = network},
    {.name = "SEGSLOPE", .indices = {&segment}, .value = real, .forms = network},
    {.name = "SEGROUGH", .indices = {&segment}, .value = real, .forms = network},
    {.name = "SEGMINDEPTH", .indices = {&segment}, .value = real, .forms = network},

    {.name = "CONSTVALUE", .indices = {&constant}, .value = real},
    {.name = "SCALEPARAM", .indices = {&parameter}, .value = real},
    {.name = "CONSTPARAM", .indices = {&segment, &parameter}, .value = real},
    {.name = "NBRKTF", .indices = {&time_function}, .range = size},
    {.name = "BRKTF", .indices = {&time_function, &function_point}, .value = point},

    {.name = "JMAS", .counts_from_zero_on_get = true},
    {.name = "JMASS", .indices = {&system}},
    {.name = "GSYSPASS", .indices = {&system}},
    {.name = "NOQSYSPASS", .indices = {&system}},
    {.name = "NORSYSPASS", .indices = {&system}},
    {.name = "IFIELD", .indices = {&system}},
    {.name = "DENSITY", .indices = {&system}, .value = real},
    {.name = "CMAX", .indices = {&system}, .value = real},
    {.name = "SCALB", .indices = {&system}, .value = real},
    {.name = "CONVB", .indices = {&system}, .value = real},
    {.name = "SCALW", .indices = {&system}, .value = real},
    {.name = "CONVW", .indices = {&system}, .value = real},
    {.name = "INITC", .indices = {&system, &segment}, .value = real, .forms = restart},
    {.name = "FDISS", .indices = {&system, &segment}, .value = real},
    {.name = "NOBC", .indices = {&system}, .range = size},
    {.name = "IBC", .indices = {&system, &boundary}, .range = a_segment},
    {.name = "NBFP", .indices = {&system, &boundary}, .range = size},
    {.name = "BOUNDFUNC", .indices = {&system, &boundary, &boundary_point}, .value = point},
    {.name = "NOWK", .indices = {&system}, .range = size},
    {.name = "IWK", .indices = {&system, &load}, .range = a_segment},
    {.name = "NBWK", .indices = {&system, &load}, .range = size},
    {.name = "LOADFUNC", .indices = {&system, &load, &load_point}, .value = point},

    {.name = "NTEX", .indices = {&exchange_field}, .forms = network, .range = size},
    {.name = "SCALER", .indices = {&exchange_field}, .value = real, .forms = network},
    {.name = "CONVR", .indices = {&exchange_field}, .value = real, .forms = network},
    {.name = "EXCHANGEFUNCDESC",
     .indices = {&exchange_field, &exchange_function},
     .value = ValueKind::text,
     .forms = network},
    {.name = "NORS", .indices = {&exchange_field, &exchange_function}, .forms = network, .range = size},
    {.name = "JRSEG",
     .indices = {&exchange_field, &exchange_function, &exchange_pair},
     .forms = network,
     .range = segment_or_outside},
    {.name = "IRSEG",
     .indices = {&exchange_field, &exchange_function, &exchange_pair},
     .forms = network,
     .range = segment_or_outside},
    {.name = "XAREA",
     .indices = {&exchange_field, &exchange_function, &exchange_pair},
     .value = real,
     .forms = network},
    {.name = "LENGTH",
     .indices = {&exchange_field, &exchange_function, &exchange_pair},
     .value = real,
     .forms = network},
    {.name = "NOBRKS", .indices = {&exchange_field, &exchange_function}, .forms = network, .range = size},
    {.name = "NORFUNC",
     .indices = {&exchange_field, &exchange_function, &exchange_point},
     .value = point,
     .forms = network},

    {.name = "NINQ", .indices = {&flow_field}, .forms = network, .range = size},
    {.name = "SCALEQ", .indices = {&flow_field}, .value = real, .forms = network},
    {.name = "CONVQ", .indices = {&flow_field}, .value = real, .forms = network},
    {.name = "FLOWFUNCDESC", .indices = {&flow_field, &flow_function}, .value = ValueKind::text, .forms = network},
    {.name = "NOQS", .indices = {&flow_field, &flow_function}, .forms = network, .range = size},
    {.name = "JQ", .indices = {&flow_field, &flow_function, &flow_pair}, .forms = network, .range = segment_or_outside},
    {.name = "IQ", .indices = {&flow_field, &flow_function, &flow_pair}, .forms = network, .range = segment_or_outside},
    {.name = "BQ", .indices = {&flow_field, &flow_function, &flow_pair}, .value = real, .forms = network},
    {.name = "NBRKQ", .indices = {&flow_field, &flow_function}, .forms = network, .range = size},
    {.name = "NOQFUNC", .indices = {&flow_field, &flow_function, &flow_point}, .value = point, .forms = network},

    {.name = "OPENABLED", .indices = {&output}},
    {.name = "OPUNITS", .indices = {&output}, .value = ValueKind::text},
    {.name = "OPSHORTDESC", .indices = {&output}, .value = ValueKind::text},
    {.name = "OPDESCRIPTION", .indices = {&output}, .value = ValueKind::text},
    {.name = "CSVOPENABLED", .indices = {&csv_output}},
    {.name = "CSVOPUNITS", .indices = {&csv_output}, .value = ValueKind::text},
    {.name = "CSVOPSHORTDESC", .indices = {&csv_output}, .value = ValueKind::text},
    {.name = "CSVOPDESCRIPTION", .indices = {&csv_output}, .value = ValueKind::text},
    {.name = "CSVOPFILENAME", .indices = {&csv_output}, .value = ValueKind::text, .range = Range::csv_name},
};

constexpr char capital(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

// Letters to insert, drop or change to turn one word into another (Wagner and Fischer, 1974).
std::size_t distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t changed = diagonal + (capital(from[i - 1]) == to[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
    }
  }
  return row.back();
}

} // namespace

std::span<const Keyword> keywords() {
  return rows;
}

const Keyword* find_keyword(std::string_view name, Form form) {
  const auto is_it = [&](const Keyword& row) {
    return std::ranges::equal(row.name, name, {}, {}, capital) && (row.forms & form) != 0;
  };
  const auto found = std::ranges::find_if(rows, is_it);
  return found == std::end(rows) ? nullptr : &*found;
}

std::string_view nearest_keyword(std::string_view name, Form form) {
  constexpr std::size_t longest_compared = 64; // longer than any keyword
  const std::string_view head = name.substr(0, longest_compared);
  std::string_view nearest;
  std::size_t fewest = head.size() / 3 + 1; // a match with more edits would be meaningless
  for (const Keyword& row : rows) {
    const std::size_t letters = (row.forms & form) != 0 ? distance(head, row.name) : fewest;
    if (letters >= fewest) continue;
    nearest = row.name;
    fewest = letters;
  }
  return nearest;
}

} // namespace reference_engine
