#include "fake_host.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace {

FakeHost* current = nullptr;

std::int32_t& integer(void* address) {
  return *static_cast<std::int32_t*>(address);
}
float& real(void* address) {
  return *static_cast<float*>(address);
}

// Keywords whose value is 1 unless put.
const std::set<std::string> ones = {"SCALV", "CONVV", "SCALEQ", "CONVQ",   "SCALER",    "CONVR",
                                    "SCALB", "CONVB", "SCALW",  "CONVW",   "FDISS",     "BQ",
                                    "MAXDT", "IQOPT", "INTYP",  "DENSITY", "SCALEPARAM"};

template <class... Part>
std::string join(const Part&... parts) {
  std::ostringstream out;
  ((out << parts), ...);
  return std::move(out).str();
}

} // namespace

FakeHost::FakeHost() {
  current = this;
  choose_model(1);
  load("FRACMAXTS 0.9\nSEEDDATE 10 1 2007\nHYDSKIPDATE 10 1 2007");
}

FakeHost::~FakeHost() {
  current = nullptr;
}

void FakeHost::callback(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5) {
  void* const arguments[] = {a1, a2, a3, a4, a5};
  current->serve(name[0], name + 1, arguments);
}

const std::map<std::string, FakeHost::Signature>& FakeHost::signatures() {
  static const std::map<std::string, Signature> all = [] {
    std::map<std::string, Signature> table;
    std::istringstream in(
        "MODELTYPE 0 i SEEDDATE 0 iii SEEDTIME 0 iii ENDJULIAN 0 r HYDSKIPDATE 0 iii HYDSKIPTIME 0 iii FILENAME 0 s "
        "SOLUTIONTYPE 0 i IQOPT 0 i HYDROTYPE 0 i HYDROFILE 0 s LOPT 0 i NPSFILE 0 s ICRD 0 i VESKTOVESKLINK 0 i "
        "NEGSLN 0 i INTYP 0 i FRACMAXTS 0 r MAXDT 0 r MINDT 0 r BEDOPT 0 i BEDDT 0 r DEBUG 0 i SCALV 0 r CONVV 0 r "
        "NUMDT 0 i DTFUNC 1 rr NPRINT 0 i PRINTFUNC 1 rr NUMSEG 0 i NUMSYS 0 i SYSNAME 1 s SEGNAME 1 s SEGTYPE 1 i "
        "BOTSEG 1 i VOLUME 1 r VMULT 1 r VEXP 1 r DMULT 1 r DEXP 1 r SEGLENGTH 1 r SEGWIDTH 1 r SEGSLOPE 1 r "
        "SEGROUGH 1 r SEGMINDEPTH 1 r NUMCONST 0 i CONSTISC 1 i CONSTDESC 1 s CONSTVALUE 1 r NOPAM 1 i ISCPARAM 2 i "
        "DESCPARAM 1 s SCALEPARAM 1 r "
        "CONSTPARAM 2 r NUMTF 0 i TFISC 1 i TFDESC 1 s NBRKTF 1 i BRKTF 2 rr JMASS 1 i GSYSPASS 1 i NOQSYSPASS 1 i "
        "NORSYSPASS 1 i IFIELD 1 i DENSITY 1 r CMAX 1 r SCALB 1 r CONVB 1 r SCALW 1 r CONVW 1 r INITC 2 r FDISS 2 r "
        "NOBC 1 i IBC 2 i NBFP 2 i BOUNDFUNC 3 rr NOWK 1 i IWK 2 i NBWK 2 i LOADFUNC 3 rr NTEX 1 i SCALER 1 r "
        "CONVR 1 r EXCHANGEFUNCDESC 2 s NORS 2 i JRSEG 3 i IRSEG 3 i XAREA 3 r LENGTH 3 r NOBRKS 2 i NORFUNC 3 rr "
        "NINQ 1 i SCALEQ 1 r CONVQ 1 r FLOWFUNCDESC 2 s NOQS 2 i JQ 3 i IQ 3 i BQ 3 r NBRKQ 2 i NOQFUNC 3 rr "
        "NUMOP 0 i OPISC 1 i OPENABLED 1 i OPUNITS 1 s OPSHORTDESC 1 s OPDESCRIPTION 1 s NUMCSVOP 0 i CSVOPISC 1 i "
        "CSVOPENABLED 1 i CSVOPUNITS 1 s CSVOPSHORTDESC 1 s CSVOPDESCRIPTION 1 s CSVOPFILENAME 1 s");
    std::string name, values;
    for (int indices = 0; in >> name >> indices >> values;) table[name] = {indices, values};
    return table;
  }();
  return all;
}

void FakeHost::choose_model(int model) {
  const std::string file = texts_["FILENAME"];
  numbers_.clear();
  texts_ = {{"FILENAME", file}};
  for (auto* used : {&constants_, &parameters_, &functions_, &outputs_, &csv_outputs_}) used->clear();
  numbers_["MODELTYPE"] = {static_cast<double>(model)};
  numbers_["NUMSYS"] = {model == 1 ? 4.0 : model == 2 ? 3.0 : 0.0};
  for (int s = 1; s <= 4; ++s) texts_[join("SYSNAME ", s)] = join("system ", s);
  if (model == 1) outputs_ = {1, 23, 24};
  if (model == 2) outputs_ = {1, 11};
  for (const int isc : outputs_) numbers_[join("OPENABLED ", isc)] = {1};
  for (int isc = 1; isc < 40; ++isc) {
    texts_[join("CONSTDESC ", isc)] = join("constant ", isc);
    texts_[join("DESCPARAM ", isc)] = join("parameter ", isc);
  }
  for (const int isc : {1, 11, 12, 23, 24}) {
    texts_[join("OPUNITS ", isc)] = isc == 1 ? "m3" : "g/m3";
    texts_[join("OPSHORTDESC ", isc)] = join("out ", isc);
    texts_[join("OPDESCRIPTION ", isc)] = join("output variable ", isc);
    texts_[join("OPFILENAME ", isc)] = join("out", isc, ".csv");
  }
}

std::set<int>* FakeHost::used_by(const std::string& keyword) {
  static const std::map<std::string, std::set<int> FakeHost::*> lists = {{"NUMCONST", &FakeHost::constants_},
                                                                         {"CONSTISC", &FakeHost::constants_},
                                                                         {"CONSTVALUE", &FakeHost::constants_},
                                                                         {"CONSTDESC", &FakeHost::constants_},
                                                                         {"NOPAM", &FakeHost::parameters_},
                                                                         {"ISCPARAM", &FakeHost::parameters_},
                                                                         {"SCALEPARAM", &FakeHost::parameters_},
                                                                         {"DESCPARAM", &FakeHost::parameters_},
                                                                         {"CONSTPARAM", &FakeHost::parameters_},
                                                                         {"NUMTF", &FakeHost::functions_},
                                                                         {"TFISC", &FakeHost::functions_},
                                                                         {"TFDESC", &FakeHost::functions_},
                                                                         {"NBRKTF", &FakeHost::functions_},
                                                                         {"BRKTF", &FakeHost::functions_},
                                                                         {"NUMOP", &FakeHost::outputs_},
                                                                         {"OPISC", &FakeHost::outputs_},
                                                                         {"OPENABLED", &FakeHost::outputs_},
                                                                         {"OPUNITS", &FakeHost::outputs_},
                                                                         {"OPSHORTDESC", &FakeHost::outputs_},
                                                                         {"OPDESCRIPTION", &FakeHost::outputs_},
                                                                         {"NUMCSVOP", &FakeHost::csv_outputs_},
                                                                         {"CSVOPISC", &FakeHost::csv_outputs_},
                                                                         {"CSVOPENABLED", &FakeHost::csv_outputs_},
                                                                         {"CSVOPUNITS", &FakeHost::csv_outputs_},
                                                                         {"CSVOPSHORTDESC", &FakeHost::csv_outputs_},
                                                                         {"CSVOPDESCRIPTION", &FakeHost::csv_outputs_},
                                                                         {"CSVOPFILENAME", &FakeHost::csv_outputs_}};
  const auto found = lists.find(keyword);
  return found == lists.end() ? nullptr : &(this->*found->second);
}

// The key of a value: positions of a GET are converted to ISC numbers; CSV texts are those of the output.
std::string FakeHost::key_of(bool get, const std::string& keyword, void* const* arguments, int indices) const {
  const std::set<int>* used = const_cast<FakeHost*>(this)->used_by(keyword);
  const int numbered = keyword == "CONSTPARAM" ? 1 : 0;
  std::string key = keyword.starts_with("CSVOP") && keyword != "CSVOPENABLED" ? keyword.substr(3) : keyword;
  for (int k = 0; k < indices; ++k) {
    int index = integer(arguments[k]);
    if (get && used != nullptr && k == numbered) {
      if (index < 1 || index > static_cast<int>(used->size())) return {};
      index = *std::next(used->begin(), index - 1);
    }
    key += ' ' + std::to_string(index);
  }
  return key;
}

bool FakeHost::count_or_isc(const std::string& keyword, void* const* arguments, const Signature& signature) {
  static const std::set<std::string> counts = {"NUMCONST", "NUMTF", "NOPAM", "NUMOP", "NUMCSVOP"};
  static const std::set<std::string> numbers = {"CONSTISC", "TFISC", "ISCPARAM", "OPISC", "CSVOPISC"};
  std::set<int>* used = used_by(keyword);
  if (counts.contains(keyword)) {
    integer(arguments[signature.indices]) = static_cast<std::int32_t>(used->size());
  } else if (numbers.contains(keyword)) {
    const int position = integer(arguments[signature.indices - 1]);
    if (position >= 1 && position <= static_cast<int>(used->size()))
      integer(arguments[signature.indices]) = *std::next(used->begin(), position - 1);
  } else {
    return false;
  }
  return true;
}

bool FakeHost::serve_special(bool get, const std::string& keyword, void* const* arguments) {
  if (keyword == "INFO")
    infos.emplace_back(static_cast<char*>(arguments[0]));
  else if (keyword == "ICONINFO")
    (integer(arguments[0]) == 2 ? failures : warnings).emplace_back(static_cast<char*>(arguments[1]));
  else if (keyword == "RETURNCODE")
    return_code = integer(arguments[0]);
  else if (keyword == "PROGRESS")
    last_progress = integer(arguments[0]);
  else if (keyword == "CANCEL")
    integer(arguments[0]) = ++cancel_polls >= cancel_at_poll && cancel_at_poll >= 0;
  else if (keyword == "FINDBOUND")
    bound_found = true;
  else if (keyword == "STATUS")
    statuses.emplace_back(static_cast<char*>(arguments[0]));
  else if (keyword == "DAYS")
    evaluate(real(arguments[0]));
  else if (get && keyword == "ALLBRKTF")
    all_points(join(' ', *std::next(functions_.begin(), integer(arguments[0]) - 1)), "NBRKTF", "BRKTF", &arguments[1]);
  else if (get && (keyword == "ALLLOADFUNC" || keyword == "ALLBOUNDFUNC"))
    all_points(join(' ', integer(arguments[0]), ' ', integer(arguments[1])), keyword == "ALLLOADFUNC" ? "NBWK" : "NBFP",
               keyword.substr(3), &arguments[2]);
  else if (keyword == "PRINTTIMEFUNC" || keyword.starts_with("ALL"))
    cursors_.clear(), arrays_[keyword] = static_cast<float*>(arguments[0]); // a job begins
  else if (keyword.starts_with("MAX") && keyword != "MAXDT")
    limits[keyword] = integer(arguments[0]);
  else if (keyword == "GRIDINIT") {
    const int size = integer(arguments[1]);
    grid_columns = integer(arguments[2]), grid_rows = integer(arguments[3]);
    for (int k = 0; k < grid_columns; ++k)
      grid_labels += join(k == 0 ? "" : "|", static_cast<char*>(arguments[0]) + k * size);
  } else if (keyword == "GRIDDATA") {
    grid_ = static_cast<const float*>(arguments[0]);
    grid_lent = true;
  } else if (keyword == "GRIDUPDATE") {
    ++grid_updates;
    last_grid.assign(grid_, grid_ + grid_columns * grid_rows);
  } else if (keyword == "DONE") {
    grid_lent = false;
  } else if (keyword == "JMAS") { // put from 1, read back from 0; the number of systems for none
    const int systems = static_cast<int>(number("NUMSYS"));
    if (get) {
      int& position = integer(arguments[0]) = 0;
      while (position < systems && number(join("JMASS ", position + 1)) == 0) ++position;
    } else {
      for (int s = 1; s <= systems; ++s) numbers_[join("JMASS ", s)] = {integer(arguments[0]) == s ? 1.0 : 0.0};
    }
  } else {
    return false;
  }
  return true;
}

void FakeHost::serve(char mode, const std::string& keyword, void* const* arguments) {
  const bool get = mode == 'G';
  if (serve_special(get, keyword, arguments)) return;
  const auto found = signatures().find(keyword);
  if (found == signatures().end()) return wrong_calls.push_back(mode + keyword);
  const auto& [indices, values] = found->second;
  if (get && count_or_isc(keyword, arguments, found->second)) return;
  if (!get && keyword == "MODELTYPE" && integer(arguments[0]) != number("MODELTYPE"))
    return choose_model(integer(arguments[0]));
  const std::string key = key_of(get, keyword, arguments, indices);
  if (key.empty()) return wrong_calls.push_back(mode + keyword);
  std::vector<double>& kept = numbers_[key];
  kept.resize(values.size(), ones.contains(keyword) ? 1.0 : 0.0);
  for (std::size_t k = 0; k < values.size(); ++k) {
    void* const argument = arguments[static_cast<std::size_t>(indices) + k];
    if (values[k] == 's')
      get ? void(std::strcpy(static_cast<char*>(argument), texts_[key].c_str()))
          : void(texts_[key] = static_cast<char*>(argument));
    else if (values[k] == 'i')
      get ? void(integer(argument) = static_cast<std::int32_t>(kept[k])) : void(kept[k] = integer(argument));
    else
      get ? void(real(argument) = static_cast<float>(kept[k])) : void(kept[k] = real(argument));
  }
  if (get) return;
  if (keyword == "HYDROFILE") ++hydro_file_puts;
  if (keyword == "CONSTVALUE" || keyword == "SCALEPARAM" || keyword == "BRKTF")
    used_by(keyword)->insert(integer(arguments[0]));
  if (keyword == "OPENABLED" || keyword == "CSVOPENABLED") {
    if (kept[0] != 0)
      used_by(keyword)->insert(integer(arguments[0]));
    else
      used_by(keyword)->erase(integer(arguments[0]));
  }
}

double FakeHost::number(const std::string& key) const {
  const auto found = numbers_.find(key);
  return found == numbers_.end() || found->second.empty() ? 0 : found->second[0];
}

std::string FakeHost::text(const std::string& key) const {
  const auto found = texts_.find(key);
  return found == texts_.end() ? std::string() : found->second;
}

void FakeHost::load(const std::string& script) {
  std::istringstream lines(script);
  for (std::string line, keyword; std::getline(lines, line);) {
    std::istringstream words(line);
    if (!(words >> keyword)) continue;
    if (keyword == "step" || keyword == "unused") {
      std::string rest;
      std::getline(words >> std::ws, rest);
      (keyword == "step" ? steps_ : unused_).insert(rest);
      continue;
    }
    const std::string kinds = keyword == "JMAS"
                                  ? "i"
                                  : std::string(static_cast<std::size_t>(signatures().at(keyword).indices), 'i') +
                                        signatures().at(keyword).values;
    std::int32_t integers[5] = {};
    float reals[5] = {};
    std::string value;
    void* arguments[5] = {};
    for (std::size_t k = 0; k < kinds.size(); ++k) {
      if (kinds[k] == 'i')
        words >> integers[k], arguments[k] = &integers[k];
      else if (kinds[k] == 'r')
        words >> value, reals[k] = std::strtof(value.c_str(), nullptr), arguments[k] = &reals[k]; // inf and nan too
      else
        value = line.substr(line.find('"') + 1), value.pop_back(), arguments[k] = value.data();
    }
    serve('P', keyword, arguments);
  }
}

void FakeHost::all_points(const std::string& indices, const std::string& count, const std::string& point,
                          void* const* arrays) {
  for (int k = 0; k < number(count + indices); ++k) {
    const auto& values = numbers_.at(join(point, indices, ' ', k + 1));
    static_cast<float*>(arrays[0])[k] = static_cast<float>(values[0]);
    static_cast<float*>(arrays[1])[k] = static_cast<float>(values[1]);
  }
}

// Like the front end: once found, a bracket only moves forward, so an earlier time is answered from the wrong points.
float FakeHost::series_value(const std::string& points, const std::string& point, const std::string& indices,
                             double now) {
  const int count = static_cast<int>(number(points + indices));
  const auto at = [&](int k) { return numbers_.at(join(point, indices, ' ', k)); };
  if (count == 0) return 0;
  int& cursor = cursors_[point + indices];
  if (cursor == 0 && now < at(1)[0]) return static_cast<float>(at(1)[1]);
  for (int k = std::max(cursor, 2); k <= count; ++k) {
    const auto before = at(k - 1), after = at(k);
    if (now >= after[0]) continue;
    cursor = k;
    if (point == "PRINTFUNC" || steps_.contains(point + indices)) return static_cast<float>(before[1]);
    return static_cast<float>(before[1] + (after[1] - before[1]) * (now - before[0]) / (after[0] - before[0]));
  }
  return static_cast<float>(at(count)[1]);
}

void FakeHost::evaluate(float now) {
  days.push_back(now);
  if (at_days) at_days();
  const int systems = static_cast<int>(number("NUMSYS"));
  if (float* values = arrays_["ALLTFDATA"])
    for (const int isc : functions_) values[isc - 1] = series_value("NBRKTF", "BRKTF", join(' ', isc), now);
  const auto records = [&](const char* array, const char* count, const char* segment, const char* points,
                           const char* point) {
    float* values = arrays_[array];
    for (int s = 1; values != nullptr && s <= systems; ++s)
      for (int k = 1; k <= number(join(count, ' ', s)); ++k)
        values[(static_cast<int>(number(join(segment, ' ', s, ' ', k))) - 1) * systems + s - 1] =
            series_value(points, point, join(' ', s, ' ', k), now);
  };
  records("ALLLOADDATA", "NOWK", "IWK", "NBWK", "LOADFUNC");
  records("ALLBCDATA", "NOBC", "IBC", "NBFP", "BOUNDFUNC");
  const auto fields = [&](const char* array, const char* count, const char* points, const char* point) {
    float* values = arrays_[array];
    for (int field = 1; values != nullptr && field <= 6; ++field)
      for (int k = 1; k <= number(join(count, ' ', field)); ++k)
        if (!unused_.contains(join(count, ' ', field)))
          values[(k - 1) * 6 + field - 1] = series_value(points, point, join(' ', field, ' ', k), now);
  };
  fields("ALLFLOWDATA", "NINQ", "NBRKQ", "NOQFUNC");
  fields("ALLEXCHANGEDATA", "NTEX", "NOBRKS", "NORFUNC");
  if (float* interval = arrays_["PRINTTIMEFUNC"]) *interval = series_value("NPRINT", "PRINTFUNC", "", now);
}
