#include "ui/kept_work_dialog.h"

#include "app/kept_work_form.h"
#include "ui/measures.h"
#include "ui/plain_label.h"
#include "ui/texts.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace vesk {

kept_work_dialog::kept_work_dialog(QWidget* parent, TKeptWorkForm& form)
    : QDialog(parent), form_(form), KeptFilesList(new QTreeWidget) {
  setObjectName(shown(form_.class_name().substr(1)));
  setWindowTitle(shown(form_.caption()));
  KeptFilesList->setObjectName("KeptFilesList");
  KeptFilesList->setAccessibleName("Kept files");
  KeptFilesList->setRootIsDecorated(false);
  KeptFilesList->setUniformRowHeights(true);
  QStringList captions;
  for (const std::string_view column : TKeptWorkForm::columns) captions << shown(column);
  KeptFilesList->setHeaderLabels(captions);
  auto* explanation = plain_label("ExplanationLabel");
  explanation->setText(shown(TKeptWorkForm::explanation));
  auto* box = new QDialogButtonBox(QDialogButtonBox::Cancel);
  open_ = box->addButton("&Open", QDialogButtonBox::AcceptRole);
  connect(KeptFilesList, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    if (item) form_.selected = static_cast<std::size_t>(KeptFilesList->indexOfTopLevelItem(item));
    open_->setEnabled(item && !form_.files.empty());
  });
  connect(KeptFilesList, &QTreeWidget::itemActivated, open_, &QPushButton::click); // Enter or a double click
  connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addWidget(explanation);
  column->addWidget(KeptFilesList, 1);
  column->addWidget(box);
  resize(scaled(720, *this), scaled(360, *this));
}

void kept_work_dialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  KeptFilesList->clear();
  for (std::size_t file = 0; file < form_.files.size(); ++file) {
    auto* item = new QTreeWidgetItem(KeptFilesList);
    const auto texts = form_.row(file);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      item->setText(static_cast<int>(i), shown(texts[i]));
      item->setToolTip(static_cast<int>(i), tool_tip(shown(texts[i])));
    }
  }
  open_->setEnabled(!form_.files.empty());
  if (form_.files.empty()) {
    auto* hint = new QTreeWidgetItem(KeptFilesList, {shown(TKeptWorkForm::empty_hint)});
    hint->setFlags(Qt::NoItemFlags);
    hint->setFirstColumnSpanned(true);
  } else {
    KeptFilesList->setCurrentItem(KeptFilesList->topLevelItem(0));
  }
  for (int i = 0; i + 1 < KeptFilesList->columnCount(); ++i) KeptFilesList->resizeColumnToContents(i);
  KeptFilesList->setFocus();
}

} // namespace vesk
