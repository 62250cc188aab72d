// The window of TEditProjectForm.
#pragma once

#include "app/edit_project_form.h"

#include <QDialog>
#include <functional>
#include <memory>

class QAbstractTableModel;
class QTableView;

namespace vesk {

class project_files_model;

class edit_project_dialog final : public QDialog {
public:
  edit_project_dialog(QWidget* parent, TPreveskMainForm& main_form, user_interface& ui);
  ~edit_project_dialog() override;

  void reload();                  // the data set's list is another one
  void done(int result) override; // unless the form refuses

protected:
  void showEvent(QShowEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  std::size_t selected_row() const;
  void take_what_is_typed();                                               // of a cell that is still being edited
  void change_rows(const std::function<std::size_t(std::size_t)>& change); // and selects the row that it returns

  TEditProjectForm form_;
  std::unique_ptr<project_files_model> model_;
  QTableView* table_;
};

} // namespace vesk
