// A small network for the tests of the editors that show it.
#pragma once

#include "editing_host.h"
#include "editors/editor.h"

#include <gtest/gtest.h>

namespace vesk {

// Three segments, two parameters, two systems, the model's catalogue, a ten-day run.
struct NetworkForms : testing::Test {
  NetworkForms() {
    model_catalogue catalogue;
    catalogue_model model{};
    model.parameters = {{1, 0, 30, 0, "Temperature"}, {2, 0, 0, 0, "Depth"}};
    model.systems = {{1, "Ammonium"}, {2, "Oxygen"}};
    model.segment_types = {{7, "Surface"}, {9, "Bed"}};
    catalogue.models.push_back(model);
    prevesk_dataset_data_type& data = host.data;
    data.set_catalogue(std::make_shared<const model_catalogue>(catalogue));
    data.refresh_from_catalogue(false);
    data.seed_date = 41183; // 1 October 2012
    data.end_date = data.seed_date + 10;
    data.seed_time = data.end_time = 0;
    data.apply_thread_defaults();
    data.resize_segments(3);
    const char* names[] = {"Weldon", "Halifax", "Oak City"};
    for (std::size_t i = 0; i < 3; ++i) data.segments.edit(i).name = names[i];
  }
  ~NetworkForms() override { moment_type::moment_seed_is_set = false; }

  template <class Form>
  TFillCalcTable& shown(Form& form, std::size_t panel = 0) {
    host.open = &form;
    form.FormShow();
    return form.panels()[panel]->table;
  }

  editing_host host;
};

} // namespace vesk
