// The upper part of the main window: the start page without a data set, the summary with one. Scrolls if it has too
// little room.
#pragma once

#include <QScrollArea>

class QStackedWidget;

namespace vesk {

class TPreveskMainForm;
class start_page;
class summary_page;

class front_page final : public QScrollArea {
public:
  front_page(QWidget* parent, TPreveskMainForm& form); // the form must outlive it

  void refresh();            // after any change of the data set, its file, its results or the recent files
  int wanted_height() const; // of the visible page

private:
  TPreveskMainForm& form_;
  QStackedWidget* pages_;
  start_page* start_;
  summary_page* summary_;
};

} // namespace vesk
