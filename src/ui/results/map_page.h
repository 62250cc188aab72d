// The page "Map": the schematic of the network, coloured by a variable at the cursor time.
#pragma once

#include "ui/network_watch.h"
#include "ui/results/results_view.h"
#include "viewer/profile_store.h"

class QLabel;

namespace vesk {

struct picture_output;
class schematic_view;
class variable_box;

class map_page final : public results_view {
public:
  map_page(results_session& session, network_watch::data_source data_set); // both must outlive it

  void set_results() override;
  void set_cursor() override;
  void print() override;
  void save() override;

private:
  void show_all();
  picture_output picture() const;

  results_session& session_;
  variable_box* variable_;
  schematic_view* view_;
  QLabel* note_;
  profile_store store_;
  network_watch watch_;
};

} // namespace vesk
