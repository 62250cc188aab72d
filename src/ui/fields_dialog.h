// The window of a form that consists of entry fields and an explanation.
#pragma once

#include "editors/entry_field.h"
#include "editors/form.h"

#include <QDialog>
#include <functional>
#include <span>
#include <string>
#include <vector>

class QLabel;

namespace vesk {

class entry_edit;

class fields_dialog final : public QDialog {
public:
  // `group`: the caption of a box around the fields; empty: none. `message`: shows why entries are refused.
  fields_dialog(QWidget* parent, form& shown_form, std::string_view group, std::span<entry_field* const> fields,
                std::string_view explanation, std::function<std::string()> message);

  void done(int result) override;

protected:
  void showEvent(QShowEvent* event) override;

private:
  void show_message();

  form& form_;
  std::vector<entry_edit*> entries_;
  QLabel* message_label_;
  std::function<std::string()> message_;
};

} // namespace vesk
