#include "ui/select_segments_dialog.h"

#include "editors/select_segments_form.h"
#include "ui/check_list.h"
#include "ui/guard.h"
#include "ui/plain_label.h"
#include "ui/texts.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QShowEvent>
#include <QVBoxLayout>

namespace vesk {

select_segments_dialog::select_segments_dialog(QWidget* parent, TSelectSegmentsForm& shown_form)
    : QDialog(parent), form_(shown_form), message_(plain_label("MessageLabel")) {
  setObjectName(shown(form_.class_name().substr(1)));
  segments_ = new check_list(
      "SegmentCheckListBox", "&Segments with a load (Space switches all selected):",
      [this](std::size_t segment) { return form_.segment_text(segment); }, form_.SegmentCheckListBox,
      [this] { show_message(); });
  auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addWidget(segments_, 1);
  column->addWidget(message_);
  column->addWidget(box);
}

void select_segments_dialog::show_all() {
  setWindowTitle(shown(form_.caption()));
  segments_->reload();
  show_message();
}

void select_segments_dialog::show_message() {
  message_->setText(shown(form_.message()));
}

void select_segments_dialog::reload() {
  attempt([this] {
    form_.data_set_replaced();
    show_all();
  });
}

void select_segments_dialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  attempt([this] {
    form_.FormShow();
    show_all();
  });
  segments_->start();
}

} // namespace vesk
