// The window of TParametersForm.
#pragma once

#include "editors/parameters_form.h"

#include <QDialog>
#include <vector>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;

namespace vesk {

class entry_edit;

class parameters_dialog final : public QDialog {
public:
  parameters_dialog(QWidget* parent, TParametersForm& form);

  void reload(); // a job has replaced the data set
  void enable(); // which controls are enabled, and the message
  void done(int result) override;

protected:
  void showEvent(QShowEvent* event) override;

private:
  QWidget* general_page();
  QWidget* steps_page();
  QWidget* flows_page();
  entry_edit* entry(entry_field& field);
  QWidget* moment(entry_field& date, entry_field& time);
  QWidget* file_row(QLineEdit* edit, QPushButton* browse, void (TParametersForm::*command)());
  QGroupBox* choice(const char* caption, QButtonGroup* group,
                    std::initializer_list<std::pair<const char*, const char*>> buttons);
  void show_all();              // from the form to the controls
  void take_all();              // from the controls to the form, except the entry fields
  void go_to(entry_edit& edit); // on its page

  TParametersForm& form_;
  QTabWidget* pages_;
  QLineEdit *DatasetNameEdit, *NpsFileNameEdit, *HydrodynamicLinkageFileEdit;
  QPlainTextEdit* CommentsMemo;
  QComboBox *ModelTypeComboBox, *SolutionTypeComboBox;
  QCheckBox *NegativeSolutionAllowedCheckBox, *UseNpsFileCheckBox;
  QButtonGroup *bed_, *flow_, *restart_, *linkage_;
  QPushButton *BrowseHydButton, *BrowseNpsButton, *LoadRestartFileButton, *ok_;
  QLabel* message_;
  std::vector<entry_edit*> entries_;
};

} // namespace vesk
