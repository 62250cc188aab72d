#include "ui/fields_dialog.h"

#include "ui/entry_edit.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/mnemonics.h"
#include "ui/texts.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QShowEvent>
#include <QVBoxLayout>

namespace vesk {

fields_dialog::fields_dialog(QWidget* parent, form& shown_form, std::string_view group,
                             std::span<entry_field* const> fields, std::string_view explanation,
                             std::function<std::string()> message)
    : QDialog(parent), form_(shown_form), message_label_(new QLabel), message_(std::move(message)) {
  setObjectName(shown(form_.class_name().substr(1)));
  setWindowTitle(shown(form_.caption()));
  auto* text = new QLabel(shown(explanation));
  text->setTextFormat(Qt::PlainText);
  text->setWordWrap(true);
  QWidget* around = group.empty() ? new QWidget : new QGroupBox(shown(group));
  auto* rows = new QFormLayout(around);
  for (entry_field* field : fields) {
    auto* edit = new entry_edit(*field);
    rows->addRow(shown(field->label) + ":", edit);
    for (const auto news : {&entry_edit::entered, &entry_edit::given_up})
      connect(edit, news, this, [this] { show_message(); });
    entries_.push_back(edit);
  }
  message_label_->setTextFormat(Qt::PlainText);
  message_label_->setWordWrap(true);
  auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addWidget(text);
  column->addWidget(around);
  column->addWidget(message_label_);
  column->addWidget(box);
  give_mnemonics(*this);
  setMinimumWidth(scaled(380, *this));
}

void fields_dialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  attempt([this] { form_.FormShow(); });
  for (entry_edit* edit : entries_) edit->show_field();
  message_label_->clear();
  entries_.front()->setFocus();
  entries_.front()->selectAll();
}

void fields_dialog::show_message() {
  message_label_->setText(message_ ? shown(message_()) : QString());
}

void fields_dialog::done(int result) {
  bool all_taken = true;
  if (result == Accepted)
    for (entry_edit* edit : entries_) {
      if (edit->take()) continue;
      if (all_taken) edit->setFocus();
      all_taken = false;
    }
  bool may_close = result != Accepted; // entries are not lost if OK fails
  attempt([&] { may_close = form_.FormCloseQuery(result == Accepted) && all_taken; });
  show_message();
  if (may_close) QDialog::done(result);
}

} // namespace vesk
