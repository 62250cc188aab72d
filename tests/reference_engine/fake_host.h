// A front end in memory, for tests of the engine library through its six functions. It knows the keywords' arguments,
// stores values by keyword and indices, translates positions and ISC numbers, and evaluates series at each DAYS.
#ifndef TESTS_REFERENCE_ENGINE_FAKE_HOST_H
#define TESTS_REFERENCE_ENGINE_FAKE_HOST_H

#include "vesk_engine.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

class FakeHost {
public:
  FakeHost(); // becomes the host used by `callback`
  ~FakeHost();
  static void callback(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5);

  // Puts lines of "KEYWORD indices value"; a text is in quotes, without escapes. Lines "step SERIES indices" and
  // "unused COUNT field" set things that have no keyword.
  void load(const std::string& script);
  double number(const std::string& key) const; // "VOLUME 3"
  std::string text(const std::string& key) const;

  std::vector<std::string> infos, statuses, warnings, failures, wrong_calls;
  int return_code = -1, last_progress = -1, grid_updates = 0, hydro_file_puts = 0;
  int cancel_at_poll = -1; // answers 1 from this CANCEL on; -1: never
  int cancel_polls = 0;
  std::vector<float> days;       // of every DAYS
  std::function<void()> at_days; // called at each DAYS
  bool grid_lent = false, bound_found = false;
  std::string grid_labels; // joined with '|'
  int grid_columns = 0, grid_rows = 0;
  std::vector<float> last_grid; // as at the last GRIDUPDATE
  std::map<std::string, int> limits;

private:
  struct Signature {
    int indices;
    std::string values; // one of i, r, s for each
  };
  static const std::map<std::string, Signature>& signatures();

  void serve(char mode, const std::string& keyword, void* const* arguments);
  bool serve_special(bool get, const std::string& keyword, void* const* arguments);
  bool count_or_isc(const std::string& keyword, void* const* arguments, const Signature& signature);
  std::string key_of(bool get, const std::string& keyword, void* const* arguments, int indices) const;
  std::set<int>* used_by(const std::string& keyword);
  void choose_model(int model);
  void all_points(const std::string& indices, const std::string& count, const std::string& point, void* const* arrays);
  void evaluate(float now);
  float series_value(const std::string& points, const std::string& point, const std::string& indices, double now);

  std::map<std::string, std::vector<double>> numbers_; // by key
  std::map<std::string, std::string> texts_;
  std::set<std::string> steps_, unused_;
  std::set<int> constants_, parameters_, functions_, outputs_, csv_outputs_; // ISC numbers of those in use
  std::map<std::string, float*> arrays_;
  std::map<std::string, int> cursors_; // of the series: the next point; 0: none yet
  const float* grid_ = nullptr;
};

#endif
