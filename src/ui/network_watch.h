// The drawn network of the open data set, kept up to date in the background.
#pragma once

#include "ui/network_layout.h"

#include <functional>
#include <memory>
#include <optional>

namespace vesk {

// Main thread only.
class network_watch {
public:
  using data_source = std::function<const prevesk_dataset_data_type*()>; // null: no open data set
  // `changed` is called after each change of network().
  network_watch(data_source data, std::function<void()> changed);

  // Null until the first layout is ready, and without a data set.
  const std::shared_ptr<const drawn_network>& network() const { return network_; }
  bool is_drawing() const { return layout_.is_busy(); }

  // Compares with the data set and starts a new layout if it has changed. Cheap; called by a timer while the network is
  // shown.
  void look();

  // The segment whose neighbourhood is drawn if the network is large.
  void set_centre(std::optional<std::size_t> segment);

private:
  // The lists of the data set that the drawing depends on.
  struct shown_lists {
    shared_list<segment_data_type> segments;
    shared_list<flow_field_data_type> flow_fields;
    shared_list<exchange_field_data_type> exchange_fields;
    shared_list<system_data_type> systems;
    double start = 0, end = 0;

    explicit shown_lists(const prevesk_dataset_data_type& data);
    bool are_of(const prevesk_dataset_data_type& data) const;
  };
  void draw(const prevesk_dataset_data_type& data);

  const data_source data_;
  const std::function<void()> changed_;
  std::shared_ptr<const drawn_network> network_;
  std::optional<shown_lists> lists_;
  std::optional<segment_number> centre_;
  network_layout layout_; // last member: its work ends before the others are destroyed
};

} // namespace vesk
