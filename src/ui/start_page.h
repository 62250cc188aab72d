// The main window without a data set: how to start, and recent files.
#pragma once

#include <QWidget>
#include <string>
#include <vector>

class QBoxLayout;
class QVBoxLayout;

namespace vesk {

class TPreveskMainForm;

class start_page final : public QWidget {
public:
  start_page(QWidget* parent, TPreveskMainForm& form); // the form must outlive it

  void show_recent_files(const std::vector<std::string>& names);

protected:
  void resizeEvent(QResizeEvent* event) override; // a narrow page has one column

private:
  TPreveskMainForm& form_;
  QBoxLayout* columns_;
  QVBoxLayout* files_;
  std::vector<std::string> shown_;
};

} // namespace vesk
