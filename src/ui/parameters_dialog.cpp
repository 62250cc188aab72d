#include "ui/parameters_dialog.h"

#include "ui/entry_edit.h"
#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/mnemonics.h"
#include "ui/texts.h"
#include "ui/wheel_guard.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>
#include <limits>

namespace vesk {

namespace {

QLineEdit* line(const char* name) {
  auto* edit = new QLineEdit;
  edit->setMaxLength(std::numeric_limits<int>::max()); // Qt's default limit would truncate a longer text
  edit->setObjectName(name);
  return edit;
}

QComboBox* combo(const char* name) {
  auto* box = new QComboBox;
  box->setObjectName(name);
  ignore_wheel(*box);
  return box;
}

QPushButton* push_button(const char* text, const char* name) {
  auto* button = new QPushButton(text);
  button->setObjectName(name);
  button->setAutoDefault(false);
  return button;
}

QCheckBox* check(const char* text, const char* name) {
  auto* box = new QCheckBox(text);
  box->setObjectName(name);
  return box;
}

// Qt keeps one button of an exclusive group checked.
void choose(QButtonGroup& group, int id) {
  group.setExclusive(false);
  for (QAbstractButton* button : group.buttons()) button->setChecked(group.id(button) == id);
  group.setExclusive(true);
}

void fill(QComboBox& box, const std::vector<std::string>& items, int position) {
  const QSignalBlocker quiet(box);
  box.clear();
  for (const std::string& item : items) box.addItem(shown(item));
  box.setCurrentIndex(position);
}

} // namespace

parameters_dialog::parameters_dialog(QWidget* parent, TParametersForm& form)
    : QDialog(parent), form_(form), pages_(new QTabWidget), DatasetNameEdit(line("DatasetNameEdit")),
      NpsFileNameEdit(line("NpsFileNameEdit")), HydrodynamicLinkageFileEdit(line("HydrodynamicLinkageFileEdit")),
      CommentsMemo(new QPlainTextEdit), ModelTypeComboBox(combo("ModelTypeComboBox")),
      SolutionTypeComboBox(combo("SolutionTypeComboBox")),
      NegativeSolutionAllowedCheckBox(check("Negative solution allowed", "NegativeSolutionAllowedCheckBox")),
      UseNpsFileCheckBox(check("Use non point source file", "UseNpsFileCheckBox")), bed_(new QButtonGroup(this)),
      flow_(new QButtonGroup(this)), restart_(new QButtonGroup(this)), linkage_(new QButtonGroup(this)),
      BrowseHydButton(push_button("Browse...", "BrowseHydButton")),
      BrowseNpsButton(push_button("Browse...", "BrowseNpsButton")),
      LoadRestartFileButton(push_button("Load restart file now", "LoadRestartFileButton")), message_(new QLabel) {
  setObjectName("ParametersForm");
  setWindowTitle(shown(form.caption()));
  CommentsMemo->setObjectName("CommentsMemo");
  CommentsMemo->setTabChangesFocus(true);
  pages_->setAccessibleName("Pages of the settings");
  message_->setObjectName("MessageLabel");
  message_->setTextFormat(Qt::PlainText);
  message_->setWordWrap(true);
  pages_->addTab(general_page(), "&General");
  pages_->addTab(steps_page(), "&Time steps");
  pages_->addTab(flows_page(), "&Flows and restart");
  for (int page = 0; page < pages_->count(); ++page) give_mnemonics(*pages_->widget(page), "gtf"); // used by the tabs
  auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  ok_ = box->button(QDialogButtonBox::Ok);
  connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addWidget(pages_, 1);
  column->addWidget(message_);
  column->addWidget(box);
  const QSize usual(scaled(560, *this), scaled(480, *this));
  resize(usual.expandedTo(sizeHint()));
}

entry_edit* parameters_dialog::entry(entry_field& field) {
  auto* edit = new entry_edit(field);
  entries_.push_back(edit);
  connect(edit, &entry_edit::entered, this, [this, &field] {
    if (&field == &form_.StartDateField) form_.StartDateFieldChange();
    if (&field == &form_.StartTimeField) form_.StartTimeFieldChange();
    for (entry_edit* other : entries_) other->show_field();
    enable();
  });
  connect(edit, &entry_edit::given_up, this, [this] { enable(); });
  return edit;
}

QWidget* parameters_dialog::moment(entry_field& date, entry_field& time) {
  auto* content = new QWidget;
  auto* row = new QHBoxLayout(content);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(entry(date), 2);
  row->addWidget(new QLabel("MM/DD/YYYY"));
  auto* clock = entry(time);
  clock->setAccessibleName(shown(date.label + ", time of day"));
  row->addWidget(clock, 1);
  row->addWidget(new QLabel("HH:MM"));
  content->setFocusProxy(entries_[entries_.size() - 2]);
  return content;
}

QWidget* parameters_dialog::file_row(QLineEdit* edit, QPushButton* browse, void (TParametersForm::*command)()) {
  auto* content = new QWidget;
  auto* row = new QHBoxLayout(content);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(edit, 1);
  row->addWidget(browse);
  content->setFocusProxy(edit);
  connect(browse, &QPushButton::clicked, this, [this, command] {
    attempt([&] {
      take_all();
      (form_.*command)();
    });
    show_all();
  });
  return content;
}

QGroupBox* parameters_dialog::choice(const char* caption, QButtonGroup* group,
                                     std::initializer_list<std::pair<const char*, const char*>> names) {
  auto* box = new QGroupBox(caption);
  auto* column = new QVBoxLayout(box);
  int id = 0;
  for (const auto& [text, name] : names) {
    auto* button = new QRadioButton(text);
    button->setObjectName(name);
    group->addButton(button, id++);
    column->addWidget(button);
  }
  connect(group, &QButtonGroup::idClicked, this, [this] {
    take_all();
    enable();
  });
  return box;
}

QWidget* parameters_dialog::general_page() {
  auto* page = new QWidget;
  auto* rows = new QFormLayout(page);
  rows->addRow("Description:", DatasetNameEdit);
  rows->addRow("Comments:", CommentsMemo);
  rows->addRow("Model type:", ModelTypeComboBox);
  rows->addRow("Solution Technique:", SolutionTypeComboBox);
  rows->addRow("Start:", moment(form_.StartDateField, form_.StartTimeField));
  rows->addRow("End:", moment(form_.EndDateField, form_.EndTimeField));
  connect(CommentsMemo, &QPlainTextEdit::textChanged, this, [this] { form_.comments_edited(); });
  connect(ModelTypeComboBox, &QComboBox::activated, this, [this] {
    take_all();
    enable();
  });
  return page;
}

QWidget* parameters_dialog::steps_page() {
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  auto* rows = new QFormLayout;
  for (entry_field* field : {&form_.MaxTimeStepField, &form_.MinTimeStepField, &form_.FractionOfMaxTimeStepEdit})
    rows->addRow(shown(field->label) + ":", entry(*field));
  column->addLayout(rows);
  column->addWidget(NegativeSolutionAllowedCheckBox);
  QGroupBox* bed = choice("Bed volumes", bed_,
                          {{"Static", "StaticBedVolumeRadioButton"}, {"Dynamic", "DynamicBedVolumeRadioButton"}});
  auto* compaction = new QFormLayout;
  auto* label = new QLabel(shown(form_.BedCompactionTimeStepField.label) + ":");
  label->setObjectName("BedCompactionTimeStepLabel");
  compaction->addRow(label, entry(form_.BedCompactionTimeStepField));
  static_cast<QVBoxLayout*>(bed->layout())->addLayout(compaction);
  column->addWidget(bed);
  column->addStretch(1);
  return page;
}

QWidget* parameters_dialog::flows_page() {
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  QGroupBox* flows = choice("Flows", flow_,
                            {{"Net flows", "NetFlowsRadioButton"},
                             {"Gross flows", "GrossFlowsRadioButton"},
                             {"Hydrodynamic linkage", "HydrodynamicLinkageRadioButton"},
                             {"Kinematic wave", "KinematicWaveRadioButton"}});
  auto* rows = new QFormLayout;
  rows->addRow("Linkage file:",
               file_row(HydrodynamicLinkageFileEdit, BrowseHydButton, &TParametersForm::BrowseHydButtonClick));
  for (entry_field* field : {&form_.HydroSkipDateField, &form_.HydroSkipTimeField}) {
    entry_edit* edit = entry(*field);
    edit->set_hint(shown(TParametersForm::skip_hint));
    rows->addRow(shown(field->label) + ":", edit);
  }
  static_cast<QVBoxLayout*>(flows->layout())->addLayout(rows);
  HydrodynamicLinkageFileEdit->setAccessibleName("Hydrodynamic linkage file");
  column->addWidget(flows);
  auto* nps = new QHBoxLayout;
  nps->addWidget(UseNpsFileCheckBox);
  nps->addWidget(file_row(NpsFileNameEdit, BrowseNpsButton, &TParametersForm::BrowseNpsButtonClick), 1);
  NpsFileNameEdit->setAccessibleName("Non point source file");
  connect(UseNpsFileCheckBox, &QCheckBox::clicked, this, [this] {
    take_all();
    enable();
  });
  column->addLayout(nps);
  QGroupBox* restart = choice(
      "Restart file", restart_,
      {{"No restart file", "NoRestartFileRadioButton"}, {"Create Restart File", "CreateRestartFileRadioButton"}});
  restart->layout()->addWidget(LoadRestartFileButton);
  connect(LoadRestartFileButton, &QPushButton::clicked, this, [this] {
    attempt([this] { form_.LoadRestartFileButtonClick(); });
    enable();
  });
  auto* pair = new QHBoxLayout;
  pair->addWidget(restart);
  pair->addWidget(
      choice("Linkage between models", linkage_,
             {{"Disable", "DisableVeskToVeskLinkageRadioButton"}, {"Enable", "EnableVeskToVeskLinkageRadioButton"}}));
  column->addLayout(pair);
  column->addStretch(1);
  return page;
}

void parameters_dialog::show_all() {
  DatasetNameEdit->setText(shown(form_.DatasetNameEdit));
  {
    const QSignalBlocker quiet(CommentsMemo); // filling it is not an edit
    const QString comments = shown(form_.CommentsMemo);
    if (CommentsMemo->toPlainText() != comments) CommentsMemo->setPlainText(comments); // which moves the cursor
  }
  NpsFileNameEdit->setText(shown(form_.NpsFileNameEdit));
  HydrodynamicLinkageFileEdit->setText(shown(form_.HydrodynamicLinkageFileEdit));
  fill(*ModelTypeComboBox, form_.model_names, form_.ModelTypeComboBox);
  fill(*SolutionTypeComboBox, form_.solution_names, form_.SolutionTypeComboBox);
  NegativeSolutionAllowedCheckBox->setChecked(form_.NegativeSolutionAllowedCheckBox);
  UseNpsFileCheckBox->setChecked(form_.UseNpsFileCheckBox);
  choose(*bed_, form_.dynamic_bed_volume ? 1 : 0);
  choose(*flow_, static_cast<int>(form_.flow_option) - 1);
  choose(*restart_, static_cast<int>(form_.restart_option)); // 2: neither
  choose(*linkage_, form_.vesk_to_vesk_linkage ? 1 : 0);
  for (entry_edit* edit : entries_) edit->show_field();
  enable();
}

void parameters_dialog::take_all() {
  // Only edited texts are taken: the screen may not show all bytes of the others.
  const auto take = [](const QLineEdit& edit, std::string& text) {
    if (edit.text() != shown(text)) text = stored(edit.text());
  };
  take(*DatasetNameEdit, form_.DatasetNameEdit);
  take(*NpsFileNameEdit, form_.NpsFileNameEdit);
  take(*HydrodynamicLinkageFileEdit, form_.HydrodynamicLinkageFileEdit);
  if (CommentsMemo->toPlainText() != shown(form_.CommentsMemo))
    form_.CommentsMemo = stored(CommentsMemo->toPlainText());
  form_.ModelTypeComboBox = ModelTypeComboBox->currentIndex();
  form_.SolutionTypeComboBox = SolutionTypeComboBox->currentIndex();
  form_.NegativeSolutionAllowedCheckBox = NegativeSolutionAllowedCheckBox->isChecked();
  form_.UseNpsFileCheckBox = UseNpsFileCheckBox->isChecked();
  form_.dynamic_bed_volume = bed_->checkedId() == 1;
  form_.flow_option = flow_->checkedId() < 0 ? TParametersForm::hydrodynamic_linkage
                                             : static_cast<std::uint32_t>(flow_->checkedId()) + 1;
  form_.restart_option = restart_->checkedId() < 0 ? TParametersForm::neither_restart_button
                                                   : static_cast<std::uint32_t>(restart_->checkedId());
  form_.vesk_to_vesk_linkage = linkage_->checkedId() == 1;
}

void parameters_dialog::enable() {
  const TParametersForm::enabled_controls enabled = form_.enabled();
  BrowseNpsButton->setEnabled(enabled.nps_file);
  NpsFileNameEdit->setEnabled(enabled.nps_file);
  for (const char* name : {"BedCompactionTimeStepField", "BedCompactionTimeStepLabel"})
    findChild<QWidget*>(name)->setEnabled(enabled.bed_compaction_time_step);
  for (entry_edit* edit : entries_) // nobody could correct it
    if (!edit->isEnabled() && !edit->field().refusal().empty()) edit->give_up();
  BrowseHydButton->setEnabled(enabled.hydrodynamic_file);
  HydrodynamicLinkageFileEdit->setEnabled(enabled.hydrodynamic_file);
  ok_->setEnabled(enabled.ok);
  LoadRestartFileButton->setEnabled(enabled.ok);
  const std::string message = form_.message();
  message_->setText(shown(message));
  message_->setVisible(!message.empty());
}

void parameters_dialog::reload() {
  attempt([this] {
    for (entry_edit* edit : entries_)
      if (edit->isModified()) edit->take();
    take_all();
    form_.data_set_replaced();
  });
  show_all();
}

void parameters_dialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return; // it was minimised
  attempt([this] { form_.FormShow(); });
  pages_->setCurrentIndex(0);
  DatasetNameEdit->setFocus();
  show_all();
}

void parameters_dialog::go_to(entry_edit& edit) {
  for (int page = 0; page < pages_->count(); ++page)
    if (pages_->widget(page)->isAncestorOf(&edit)) pages_->setCurrentIndex(page);
  edit.setFocus();
}

void parameters_dialog::done(int result) {
  bool all_taken = true;
  if (result == Accepted) {
    for (entry_edit* edit : entries_) {
      if (edit->take()) continue;
      if (all_taken) go_to(*edit);
      all_taken = false;
    }
    take_all();
  }
  bool may_close = result != Accepted; // entries are not lost if OK fails
  attempt([&] { may_close = form_.FormCloseQuery(result == Accepted) && all_taken; });
  enable();
  if (may_close) QDialog::done(result);
}

} // namespace vesk
