// Lays out networks in the background.
#pragma once

#include "dataset/dataset.h"
#include "ui/schematic_view.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace vesk {

// Main thread only.
class network_layout final : public QObject {
public:
  using receiver = std::function<void(std::shared_ptr<const drawn_network>)>;
  explicit network_layout(receiver ready) : ready_(std::move(ready)) {}
  ~network_layout() override; // cancels the work and waits briefly for it to end

  // Lays out the data set's network; the receiver gets it later, unless another layout is requested first. Of a large
  // network it lays out the neighbourhood of `centre`. `known`: may be null; its layout is kept if the shape is the
  // same.
  void ask(prevesk_dataset_data_type data, std::optional<segment_number> centre,
           std::shared_ptr<const drawn_network> known);
  bool is_busy() const { return worker_.joinable(); }

private:
  struct question {
    prevesk_dataset_data_type data;
    std::optional<segment_number> centre;
    std::shared_ptr<const drawn_network> known;
  };
  void start(question next);
  void finish(std::shared_ptr<const drawn_network> made);

  const receiver ready_;
  std::shared_ptr<std::atomic<bool>> is_cancelled_; // of the work in progress
  std::optional<question> next_;
  std::thread worker_;
};

} // namespace vesk
