#include "ui/edit_project_dialog.h"

#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QAbstractItemDelegate>
#include <QAbstractTableModel>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

namespace vesk {

// The form's rows as the toolkit wants them.
class project_files_model final : public QAbstractTableModel {
public:
  explicit project_files_model(TEditProjectForm& form) : form_(form) {}

  void reset() {
    beginResetModel();
    endResetModel();
  }

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(form_.row_count());
  }
  int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : 1; }
  Qt::ItemFlags flags(const QModelIndex&) const override {
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
  }
  QVariant data(const QModelIndex& index, int role) const override {
    if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
    return shown(form_.cell(static_cast<std::size_t>(index.row())));
  }
  bool setData(const QModelIndex& index, const QVariant& value, int role) override {
    if (role != Qt::EditRole) return false;
    attempt([&] { form_.set_cell(static_cast<std::size_t>(index.row()), stored(value.toString())); });
    emit dataChanged(index, index);
    return true;
  }
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    if (role != Qt::DisplayRole) return {};
    return orientation == Qt::Horizontal ? QVariant(shown(TEditProjectForm::column_caption)) : QVariant(section + 1);
  }

private:
  TEditProjectForm& form_;
};

edit_project_dialog::edit_project_dialog(QWidget* parent, TPreveskMainForm& main_form, user_interface& ui)
    : QDialog(parent), form_(main_form, ui), model_(std::make_unique<project_files_model>(form_)),
      table_(new QTableView) {
  setObjectName("EditProjectForm");
  setWindowTitle(shown(TEditProjectForm::caption));
  table_->setObjectName("ProjectTable");
  table_->setAccessibleName("Files of the project");
  table_->setModel(model_.get());
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setTabKeyNavigation(false);
  table_->setMinimumSize(scaled(460, *this), scaled(220, *this));
  table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  table_->installEventFilter(this);

  auto* side = new QVBoxLayout;
  const auto add_button = [&](const char* text, const char* name, std::function<std::size_t(std::size_t)> change) {
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this,
            [this, change = std::move(change)] { attempt([&] { change_rows(change); }); });
    side->addWidget(button);
  };
  add_button("&Insert", "InsertRowButton", [this](std::size_t row) { return form_.InsertRowButtonClick(row); });
  add_button("&Delete", "DeleteRowButton", [this](std::size_t row) { return form_.DeleteRowButtonClick(row); });
  add_button("&Browse...", "BrowseButton", [this](std::size_t row) {
    form_.BrowseButtonClick(row);
    return row;
  });
  side->addStretch(1);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* row = new QHBoxLayout;
  row->addWidget(table_, 1);
  row->addLayout(side);
  auto* column = new QVBoxLayout(this);
  column->addLayout(row, 1);
  column->addWidget(buttons);
}

edit_project_dialog::~edit_project_dialog() {
  table_->setModel(nullptr);
}

std::size_t edit_project_dialog::selected_row() const {
  const int row = table_->currentIndex().row();
  return row < 0 ? 0 : static_cast<std::size_t>(row);
}

void edit_project_dialog::take_what_is_typed() {
  for (auto* editor : table_->findChildren<QLineEdit*>())
    if (editor->isVisible()) table_->itemDelegate()->setModelData(editor, model_.get(), table_->currentIndex());
}

void edit_project_dialog::change_rows(const std::function<std::size_t(std::size_t)>& change) {
  take_what_is_typed();
  const std::size_t row = change(selected_row());
  model_->reset();
  table_->setCurrentIndex(model_->index(static_cast<int>(row), 0));
  table_->setFocus();
}

void edit_project_dialog::reload() {
  model_->reset();
  table_->setCurrentIndex(model_->index(0, 0));
}

void edit_project_dialog::showEvent(QShowEvent* event) {
  reload();
  table_->setFocus();
  QDialog::showEvent(event);
}

bool edit_project_dialog::eventFilter(QObject* watched, QEvent* event) {
  const bool out_of_the_last_row = watched == table_ && event->type() == QEvent::KeyPress &&
                                   static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down &&
                                   selected_row() + 1 >= form_.row_count();
  if (!out_of_the_last_row) return QDialog::eventFilter(watched, event);
  attempt([this] { change_rows([this](std::size_t row) { return form_.move_down(row); }); });
  return true;
}

void edit_project_dialog::done(int result) {
  if (result == Accepted) take_what_is_typed();
  bool may_close = true;
  attempt([&] { may_close = form_.FormCloseQuery(result == Rejected); });
  if (may_close) QDialog::done(result);
}

} // namespace vesk
