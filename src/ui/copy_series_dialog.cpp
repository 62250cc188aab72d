#include "ui/copy_series_dialog.h"

#include "editors/copy_series_form.h"
#include "ui/check_list.h"
#include "ui/guard.h"
#include "ui/plain_label.h"
#include "ui/texts.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QShowEvent>
#include <QVBoxLayout>

namespace vesk {

copy_series_dialog::copy_series_dialog(QWidget* parent, TCopySeriesForm& shown_form)
    : QDialog(parent), form_(shown_form), source_(plain_label("SourceLabel")), message_(plain_label("MessageLabel")) {
  setObjectName(shown(form_.class_name().substr(1)));
  setWindowTitle(shown(form_.caption()));
  const auto changed = [this] { show_message(); };
  systems_ = new check_list(
      "SystemCheckListBox",
      "S&ystems (Space switches all selected):", [this](std::size_t system) { return form_.system_text(system); },
      form_.SystemCheckListBox, changed);
  segments_ = new check_list(
      "SegmentCheckListBox",
      "&Segments (Space switches all selected):", [this](std::size_t row) { return form_.segment_text(row); },
      form_.SegmentCheckListBox, changed);
  with_query_ = new QCheckBox("Copy the &interpolation and the stored query as well");
  with_query_->setObjectName("WithQueryCheckBox");
  connect(with_query_, &QCheckBox::toggled, this, [this](bool on) { form_.with_query = on; });
  auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* lists = new QHBoxLayout;
  lists->addWidget(systems_);
  lists->addWidget(segments_);
  auto* column = new QVBoxLayout(this);
  column->addWidget(source_);
  column->addLayout(lists, 1);
  column->addWidget(with_query_);
  column->addWidget(message_);
  column->addWidget(box);
}

void copy_series_dialog::show_message() {
  message_->setText(shown(form_.message()));
}

void copy_series_dialog::reload() {
  attempt([this] {
    form_.data_set_replaced();
    show_message();
  });
}

void copy_series_dialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  attempt([this] {
    form_.FormShow();
    source_->setText(shown("From " + form_.source + " to:"));
    with_query_->setChecked(form_.with_query);
    systems_->reload();
    segments_->reload();
    show_message();
  });
  segments_->start();
}

} // namespace vesk
