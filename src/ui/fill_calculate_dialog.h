// The window of TFillCalculateForm.
#pragma once

#include "editors/fill_calculate_form.h"

#include <QDialog>

class QLineEdit;

namespace vesk {

class fill_calculate_dialog final : public QDialog {
public:
  fill_calculate_dialog(QWidget* parent, TFillCalculateForm& form);
  void done(int result) override;

protected:
  void showEvent(QShowEvent* event) override;

private:
  TFillCalculateForm& form_;
  QLineEdit* FillCalculateEdit;
};

} // namespace vesk
