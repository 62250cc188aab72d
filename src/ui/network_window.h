// The window "Network": a schematic of the data set's network, open beside other windows.
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
  // `go_to`: called with the segment the user selects.
  network_window(QWidget* owner, editor_host& host, std::function<void(std::size_t)> go_to);

  // The modal window during which this one stays usable; null: none.
  void follow(QWidget* dialog);
  void select(std::optional<std::size_t> segment);

protected:
  void showEvent(QShowEvent* event) override;

private:
  void look(); // checks whether the data set has changed
  void take(); // takes the new layout
  void chosen(std::size_t segment);
  void show_texts();

  editor_host& host_;
  const std::function<void(std::size_t)> go_to_;
  schematic_view* view_;
  QLabel* details_;
  QLabel* remark_;
  QWidget* followed_ = nullptr;
  std::optional<std::size_t> wanted_; // selected when it has been drawn
  network_watch watch_;               // last member: its work ends before the others are destroyed
};

} // namespace vesk
