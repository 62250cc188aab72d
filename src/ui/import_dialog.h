// The window of TImportTimeSeriesForm.
#pragma once

#include "editors/import_time_series_form.h"

#include <QDialog>
#include <deque>
#include <functional>
#include <utility>
#include <vector>

class QBoxLayout;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace vesk {

class grid_view;

class import_dialog final : public QDialog {
public:
  import_dialog(QWidget* parent, TImportTimeSeriesForm& form);
  ~import_dialog() override;

  void reload(); // the data set was replaced
  void done(int result) override;

protected:
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  using command = void (TImportTimeSeriesForm::*)();

  QComboBox* list(const char* name, void (TImportTimeSeriesForm::*chosen)(std::size_t));
  QPushButton* button(const char* text, const char* name, const char* hint, command pressed);
  QWidget* source_rows();
  QBoxLayout* option_rows();
  QWidget* condition_part();
  QWidget* result_part();
  QBoxLayout* end_row();
  void run(const std::function<void()>& work); // after committing open entries, unless that fails
  void run_later(std::function<void()> work);  // after the current event, or before the next command
  bool take_what_is_typed();
  bool take_file_name();
  void show_all(); // as the form has it

  TImportTimeSeriesForm& form_;
  QLabel *series_, *value_note_, *results_note_, *message_;
  QLineEdit *NameEdit, *FileNameEdit;
  QComboBox *TableList, *DateTimeFieldList, *ValueFieldList;
  std::vector<std::pair<const import_option*, QCheckBox*>> options_;
  grid_view *conditions_, *results_;
  QPlainTextEdit* SqlMemo;
  std::deque<std::function<void()>> pending_; // queued by run_later
  bool is_taking_ = false;
};

} // namespace vesk
