// The window "Network": the schematic of the data set's network, beside the other windows.
#pragma once

#include "editors/editor_host.h"
#include "ui/network_watch.h"
#include "ui/schematic_view.h"

#include <QWidget>
#include <functional>

class QLabel;

namespace vesk {

class network_window final : public QWidget {
public:
  // `go_to`: called with the segment that the user chooses.
  network_window(QWidget* owner, editor_host& host, std::function<void(std::size_t)> go_to);

  // The modal window that it works with, so that it can be used while that is open; null: none.
  void follow(QWidget* dialog);
  void select(std::optional<std::size_t> segment);

protected:
  void showEvent(QShowEvent* event) override;

private:
  void look(); // whether the data set has changed
  void take(); // what was drawn
  void chosen(std::size_t segment);
  void show_texts();

  editor_host& host_;
  const std::function<void(std::size_t)> go_to_;
  schematic_view* view_;
  QLabel* details_;
  QLabel* remark_;
  QWidget* followed_ = nullptr;
  std::optional<std::size_t> wanted_; // to be selected once it is drawn
  network_watch watch_;               // the last member: its work ends before the others
};

} // namespace vesk
