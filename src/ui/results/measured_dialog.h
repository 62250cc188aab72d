// The dialog that describes a measured series.
#pragma once

#include "viewer/measured_form.h"
#include "viewer/results_session.h"

#include <QDialog>
#include <functional>
#include <vector>

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;

namespace vesk {

class measured_dialog final : public QDialog {
public:
  // On OK `form` gets the entries. `folder`: that of the measured file; tables below it are named relative to it.
  measured_dialog(QWidget* parent, measured_form& form, results_session& session, user_questions& questions,
                  std::filesystem::path folder);

protected:
  void accept() override;

private:
  QLineEdit* add_line(QFormLayout& rows, const char* caption, const char* name, const char* hint,
                      std::string measured_form::*member);
  QComboBox* add_list(QFormLayout& rows, const char* caption, const char* name, const QStringList& items);
  void choose_table();
  measured_form entries() const;

  measured_form& form_;
  query_host query_;
  std::vector<std::pair<QLineEdit*, std::string measured_form::*>> lines_;
  QComboBox* variable_ = nullptr;
  QComboBox* segment_ = nullptr;
  QComboBox* kind_ = nullptr;
  QComboBox* way_ = nullptr;
  QLabel* table_;
  QLabel* message_;
};

} // namespace vesk
