#include "ui/summary_page.h"

#include "app/data_set_summary.h"
#include "app/file_names.h"
#include "app/main_form.h"
#include "ui/elided_text.h"
#include "ui/measures.h"
#include "ui/plain_label.h"
#include "ui/texts.h"

#include <QCoreApplication>
#include <QFormLayout>
#include <QThreadPool>
#include <QVBoxLayout>

namespace vesk {

namespace {

constexpr auto after_the_last_change = std::chrono::milliseconds(150);

} // namespace

struct summary_page::answer_place {
  summary_page* page; // null when it is gone or no longer wants the answer
};

summary_page::summary_page(QWidget* parent, TPreveskMainForm& form)
    : QWidget(parent), form_(form), title_(new elided_label), file_(new elided_label(nullptr, Qt::ElideMiddle)),
      rows_(new QFormLayout) {
  setObjectName("SummaryPage");
  title_->setObjectName("SummaryTitle");
  file_->setObjectName("SummaryFile");
  QFont font = title_->font();
  font.setPointSizeF(font.pointSizeF() * 1.25);
  font.setBold(true);
  title_->setFont(font);
  const int margin = scaled(12, *this);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(margin, margin, margin, margin);
  column->setSpacing(scaled(4, *this));
  column->addWidget(title_);
  column->addWidget(file_);
  rows_->setHorizontalSpacing(scaled(16, *this));
  rows_->setVerticalSpacing(scaled(3, *this));
  rows_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  column->addLayout(rows_);
  column->addStretch(1);
  compare_soon_.setSingleShot(true);
  compare_soon_.setInterval(after_the_last_change);
  connect(&compare_soon_, &QTimer::timeout, this, [this] { compare(); });
}

summary_page::~summary_page() {
  if (running_) running_->page = nullptr;
}

void summary_page::refresh() {
  if (running_) running_->page = nullptr;
  running_.reset();
  state_.reset();
  if (!form_.current_data_set) return compare_soon_.stop();
  show_rows();
  compare_soon_.start();
}

void summary_page::show_rows() {
  const prevesk_dataset_data_type& open = *form_.current_data_set;
  const QString description = shown(open.description).simplified();
  title_->setText(description.isEmpty() ? "No description" : description);
  file_->setText(form_.file_name.empty() ? "Not saved yet" : shown(form_.file_name));
  std::vector<summary_row> rows = summary_of(open);
  std::ranges::move(summary_of_runs(open, state_ ? &*state_ : nullptr), std::back_inserter(rows));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (static_cast<int>(i) == rows_->rowCount()) {
      QLabel* text = plain_label("Summary" + rows[i].caption);
      text->setTextInteractionFlags(Qt::TextSelectableByMouse);
      rows_->addRow(shown(rows[i].caption), text);
    }
    auto* text = qobject_cast<QLabel*>(rows_->itemAt(static_cast<int>(i), QFormLayout::FieldRole)->widget());
    if (const QString now = shown(rows[i].text); text->text() != now) text->setText(now);
  }
}

// On a copy, in another thread. An answer that is out of date is dropped.
void summary_page::compare() {
  if (!form_.current_data_set) return;
  const auto place = running_ = std::make_shared<answer_place>(answer_place{this});
  std::error_code ignored;
  const std::filesystem::path base =
      form_.file_name.empty() ? std::filesystem::path() : std::filesystem::absolute(form_.results_base(), ignored);
  QThreadPool::globalInstance()->start([place, base, copy = *form_.current_data_set] {
    const results_state state = state_of_results(copy, base);
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [place, state] {
          if (!place->page) return;
          place->page->state_ = state;
          place->page->running_.reset();
          place->page->show_rows();
        },
        Qt::QueuedConnection);
  });
}

} // namespace vesk
