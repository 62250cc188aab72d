// The window of TCopySeriesForm.
#pragma once

#include <QDialog>

class QCheckBox;
class QLabel;

namespace vesk {

class check_list;
class TCopySeriesForm;

class copy_series_dialog final : public QDialog {
public:
  copy_series_dialog(QWidget* parent, TCopySeriesForm& shown_form);

  void reload(); // the data set was replaced

protected:
  void showEvent(QShowEvent* event) override;

private:
  void show_message();

  TCopySeriesForm& form_;
  QLabel* source_;
  check_list* systems_;
  check_list* segments_;
  QCheckBox* with_query_;
  QLabel* message_;
};

} // namespace vesk
