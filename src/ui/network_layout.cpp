#include "ui/network_layout.h"

#include "ui/guard.h"

#include <QMetaObject>

namespace vesk {

namespace {

// Runs on the worker thread. Null: cancelled.
std::shared_ptr<const drawn_network> draw(const prevesk_dataset_data_type& data, std::optional<segment_number> centre,
                                          const drawn_network* known, const std::atomic<bool>& is_cancelled) {
  drawn_network made;
  made.network = make_network(data);
  if (known && known->picture.centre == centre && known->network.has_shape_of(made.network)) {
    made.picture = known->picture;
  } else {
    auto picture = make_schematic(made.network, centre, find_graphviz(), [&] { return is_cancelled.load(); });
    if (!picture) return nullptr;
    made.picture = *std::move(picture);
  }
  return std::make_shared<const drawn_network>(std::move(made));
}

} // namespace

network_layout::~network_layout() {
  if (!worker_.joinable()) return;
  *is_cancelled_ = true;
  worker_.join();
}

void network_layout::ask(prevesk_dataset_data_type data, std::optional<segment_number> centre,
                         std::shared_ptr<const drawn_network> known) {
  question wanted{std::move(data), centre, std::move(known)};
  if (!is_busy()) return start(std::move(wanted));
  *is_cancelled_ = true;
  next_ = std::move(wanted);
}

void network_layout::start(question next) {
  is_cancelled_ = std::make_shared<std::atomic<bool>>(false);
  worker_ = std::thread([this, asked = std::move(next), is_cancelled = is_cancelled_] {
    std::shared_ptr<const drawn_network> made;
    try {
      made = draw(asked.data, asked.centre, asked.known.get(), *is_cancelled);
    } catch (const std::exception&) { // out of memory: the view stays as it is
    }
    QMetaObject::invokeMethod(
        this, [this, made] { attempt([&] { finish(made); }); }, Qt::QueuedConnection);
  });
}

void network_layout::finish(std::shared_ptr<const drawn_network> made) {
  worker_.join();
  if (next_) {
    question next = *std::exchange(next_, std::nullopt);
    return start(std::move(next));
  }
  if (made) ready_(std::move(made));
}

} // namespace vesk
