// The upper part of the main window: the start page without a data set, its summary with one. It scrolls where there is
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
  int wanted_height() const; // of the page in front

private:
  TPreveskMainForm& form_;
  QStackedWidget* pages_;
  start_page* start_;
  summary_page* summary_;
};

} // namespace vesk
