// The open results, one line each, and the commands on them.
#pragma once

#include "viewer/results_session.h"

#include <QWidget>
#include <functional>

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace vesk {

class scenario_list final : public QWidget {
public:
  // `open`: asks for files and opens them.
  scenario_list(results_session& session, std::function<void()> open, QWidget* parent);

  void show_results();

private:
  void rename(QTreeWidgetItem* item);
  std::size_t active() const;

  results_session& session_;
  QTreeWidget* list_;
  QPushButton* close_;
  QPushButton* rename_;
  QPushButton* baseline_;
};

} // namespace vesk
