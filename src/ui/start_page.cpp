#include "ui/start_page.h"

#include "app/file_names.h"
#include "app/main_form.h"
#include "ui/elided_text.h"
#include "ui/guard.h"
#include "ui/images.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>

namespace vesk {

namespace {

constexpr int width_of_two_columns = 620;

struct first_step {
  const char *name, *text, *hint;
  int image; // index of the tool bar image
  void (TPreveskMainForm::*handler)();
};

constexpr int new_image = 0, open_image = 1, flows_image = 11, data_set_image = 5;

constexpr first_step steps[] = {
    {"StartOpenButton", "Open...", "A data file or a project (Ctrl+O)", open_image, &TPreveskMainForm::OpenItemClick},
    {"StartSampleButton", "Open the sample river",
     "The Roanoke River over a year, with measured flow, temperature and oxygen. It is copied to your documents.",
     flows_image, &TPreveskMainForm::open_sample},
    {"StartNewButton", "New", "An empty data set for the first model of the catalogue (Ctrl+N)", new_image,
     &TPreveskMainForm::NewItemClick},
    {"StartGuideButton", "User guide", "How to build a model, run it and read its results (F1)", data_set_image,
     &TPreveskMainForm::ContentsItemClick},
};

QLabel* heading(const QString& text) {
  auto* label = new QLabel(text);
  QFont font = label->font();
  font.setPointSizeF(font.pointSizeF() * 1.25);
  font.setBold(true);
  label->setFont(font);
  return label;
}

QVBoxLayout* column_under(const QString& text, QBoxLayout& row) {
  auto* column = new QVBoxLayout;
  column->setSpacing(2);
  column->addWidget(heading(text));
  row.addLayout(column, 1);
  return column;
}

} // namespace

start_page::start_page(QWidget* parent, TPreveskMainForm& form)
    : QWidget(parent), form_(form), columns_(new QBoxLayout(QBoxLayout::LeftToRight, this)) {
  setObjectName("StartPage");
  const int margin = scaled(16, *this);
  columns_->setContentsMargins(margin, margin, margin, margin);
  columns_->setSpacing(margin);
  QVBoxLayout* begin = column_under("Start", *columns_);
  for (const first_step& step : steps) {
    auto* button = new elided_button(step.text);
    button->setObjectName(step.name);
    button->setIcon(tool_image(step.image));
    button->setToolTip(step.hint);
    button->setAccessibleDescription(step.hint);
    connect(button, &QPushButton::clicked, this,
            [this, handler = step.handler] { attempt([=, this] { (form_.*handler)(); }); });
    begin->addWidget(button);
  }
  begin->addStretch(1);
  QVBoxLayout* recent = column_under("Recent files", *columns_);
  files_ = new QVBoxLayout;
  files_->setSpacing(2);
  recent->addLayout(files_);
  recent->addStretch(1);
  show_recent_files({});
}

void start_page::show_recent_files(const std::vector<std::string>& names) {
  if (names == shown_ && files_->count() > 0) return;
  shown_ = names;
  while (QLayoutItem* item = files_->takeAt(0)) {
    if (item->widget()) item->widget()->deleteLater(); // it may be the button being pressed
    delete item;
  }
  for (const std::string& name : names) {
    const QString folder = shown(split_file_name(name).folder);
    auto* button = new elided_button(shown(leaf_of(name)) + "  \u2013  " + folder);
    button->setObjectName("RecentFileButton");
    button->setToolTip(tool_tip(shown(name)));
    connect(
        button, &QPushButton::clicked, this, [this, name] { attempt([this, &name] { form_.open_recent(name); }); },
        Qt::QueuedConnection);
    files_->addWidget(button);
  }
  if (!names.empty()) return;
  auto* hint = new QLabel("Files that you open or save are listed here.");
  hint->setWordWrap(true);
  files_->addWidget(hint);
}

void start_page::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  const bool wide = event->size().width() >= scaled(width_of_two_columns, *this);
  columns_->setDirection(wide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

} // namespace vesk
