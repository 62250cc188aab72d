#include "ui/front_page.h"

#include "app/main_form.h"
#include "ui/start_page.h"
#include "ui/summary_page.h"

#include <QStackedWidget>
#include <algorithm>

namespace vesk {

front_page::front_page(QWidget* parent, TPreveskMainForm& form)
    : QScrollArea(parent), form_(form), pages_(new QStackedWidget), start_(new start_page(pages_, form)),
      summary_(new summary_page(pages_, form)) {
  setObjectName("FrontPage");
  setAccessibleName("Start and summary");
  setFrameShape(QFrame::NoFrame);
  setWidgetResizable(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);
  pages_->addWidget(start_);
  pages_->addWidget(summary_);
  setWidget(pages_);
}

void front_page::refresh() {
  start_->show_recent_files(form_.settings.recent_files());
  summary_->refresh();
  QWidget* const front = form_.current_data_set ? static_cast<QWidget*>(summary_) : start_;
  for (QWidget* page : {static_cast<QWidget*>(start_), static_cast<QWidget*>(summary_)}) {
    const auto policy = page == front ? QSizePolicy::Preferred : QSizePolicy::Ignored; // the hidden page takes no room
    page->setSizePolicy(policy, policy);
  }
  pages_->setCurrentWidget(front);
}

int front_page::wanted_height() const {
  const QWidget* page = pages_->currentWidget();
  const int width = std::max(viewport()->width(), 1);
  return page->hasHeightForWidth() ? page->heightForWidth(width) : page->sizeHint().height();
}

} // namespace vesk
