#include "ui/network_watch.h"

namespace vesk {

namespace {

// A shared list is copied before a change, so the same memory means an unchanged list.
template <class List>
bool is_unchanged(const List& then, const List& now) {
  return then.size() == now.size() && (then.empty() || then.shares_with(now));
}

} // namespace

network_watch::shown_lists::shown_lists(const prevesk_dataset_data_type& data)
    : segments(data.segments), flow_fields(data.flow_fields), exchange_fields(data.exchange_fields),
      systems(data.systems), start(data.start_date_time()), end(data.end_date_time()) {}

bool network_watch::shown_lists::are_of(const prevesk_dataset_data_type& data) const {
  return is_unchanged(segments, data.segments) && is_unchanged(flow_fields, data.flow_fields) &&
         is_unchanged(exchange_fields, data.exchange_fields) && is_unchanged(systems, data.systems) &&
         start == data.start_date_time() && end == data.end_date_time();
}

network_watch::network_watch(data_source data, std::function<void()> changed)
    : data_(std::move(data)), changed_(std::move(changed)), layout_([this](std::shared_ptr<const drawn_network> drawn) {
        network_ = std::move(drawn);
        changed_();
      }) {}

void network_watch::look() {
  const prevesk_dataset_data_type* data = data_();
  if (data && (!lists_ || !lists_->are_of(*data))) return draw(*data);
  if (data || !network_) return;
  lists_.reset();
  network_.reset();
  changed_();
}

void network_watch::set_centre(std::optional<std::size_t> segment) {
  if (!segment || centre_ == *segment) return;
  centre_ = static_cast<segment_number>(*segment);
  if (network_ && network_->picture.centre && data_()) draw(*data_());
}

void network_watch::draw(const prevesk_dataset_data_type& data) {
  lists_.emplace(data);
  const bool is_part = data.segments.size() > most_boxes;
  if (is_part && (!centre_ || *centre_ >= data.segments.size())) centre_ = 0;
  layout_.ask(data, is_part ? centre_ : std::nullopt, network_);
}

} // namespace vesk
