// The window of TSelectSegmentsForm.
#pragma once

#include <QDialog>

class QLabel;

namespace vesk {

class check_list;
class TSelectSegmentsForm;

class select_segments_dialog final : public QDialog {
public:
  select_segments_dialog(QWidget* parent, TSelectSegmentsForm& shown_form);

  void reload(); // the data set was replaced

protected:
  void showEvent(QShowEvent* event) override;

private:
  void show_all();
  void show_message();

  TSelectSegmentsForm& form_;
  check_list* segments_;
  QLabel* message_;
};

} // namespace vesk
