// The window of TKeptWorkForm.
#pragma once

#include <QDialog>

class QPushButton;
class QTreeWidget;

namespace vesk {

class TKeptWorkForm;

class kept_work_dialog final : public QDialog {
public:
  kept_work_dialog(QWidget* parent, TKeptWorkForm& form);

protected:
  void showEvent(QShowEvent* event) override;

private:
  TKeptWorkForm& form_;
  QTreeWidget* KeptFilesList;
  QPushButton* open_;
};

} // namespace vesk
