// The window of a TGraphForm. It stays open beside the dialog that opened it and is freed when it closes.
#pragma once

#include "charts/graph_form.h"
#include "ui/picture_output.h"

#include <QWidget>
#include <functional>
#include <memory>

class QAction;

namespace vesk {

class chart_view;

class graph_window final : public QWidget {
public:
  graph_window(QWidget* owner, std::shared_ptr<TGraphForm> graph);

private:
  void refresh();
  picture_output picture() const;

  const std::shared_ptr<TGraphForm> graph_;
  chart_view* chart_;
  QAction* unzoom_ = nullptr;
  QAction* unzoom_all_ = nullptr;
};

} // namespace vesk
