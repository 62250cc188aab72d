#include "ui/fill_calculate_dialog.h"

#include "ui/measures.h"
#include "ui/texts.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QShowEvent>
#include <QVBoxLayout>

namespace vesk {

fill_calculate_dialog::fill_calculate_dialog(QWidget* parent, TFillCalculateForm& form)
    : QDialog(parent), form_(form), FillCalculateEdit(new QLineEdit) {
  setObjectName("FillCalculateForm");
  setWindowTitle(shown(form.caption()));
  FillCalculateEdit->setObjectName("FillCalculateEdit");
  FillCalculateEdit->setMinimumWidth(scaled(360, *this));
  auto* label = new QLabel("&" + shown(TFillCalculateForm::label));
  label->setBuddy(FillCalculateEdit);
  auto* help = new QLabel(shown(TFillCalculateForm::help));
  help->setWordWrap(true);
  FillCalculateEdit->setAccessibleDescription(help->text());
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addWidget(label);
  column->addWidget(FillCalculateEdit);
  column->addWidget(help);
  column->addWidget(buttons);
}

void fill_calculate_dialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  FillCalculateEdit->setText(shown(form_.FillCalculateEdit));
  FillCalculateEdit->selectAll();
  FillCalculateEdit->setFocus();
}

void fill_calculate_dialog::done(int result) {
  form_.FillCalculateEdit = stored(FillCalculateEdit->text());
  QDialog::done(result);
}

} // namespace vesk
