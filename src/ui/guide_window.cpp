#include "ui/guide_window.h"

#include "ui/measures.h"

#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

namespace vesk {

namespace {

// HTML that Qt's reader would show as text or misplace.
QString readable(QString page) {
  for (const char* part : {"<svg[\\s\\S]*?</svg>", "<style[\\s\\S]*?</style>", "<script[\\s\\S]*?</script>"})
    page.remove(QRegularExpression(part));
  return page;
}

class guide_window final : public QWidget {
public:
  explicit guide_window(QWidget& parent) : QWidget(&parent, Qt::Window), page_(new QTextBrowser) {
    setObjectName("GuideWindow");
    setWindowTitle("User guide");
    page_->setObjectName("GuidePage");
    page_->setAccessibleName("User guide");
    page_->setOpenLinks(false);
    connect(page_, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) {
      if (link.path().isEmpty() || link.hasFragment()) page_->scrollToAnchor(link.fragment());
    });
    find_->setObjectName("FindInGuide");
    find_->setPlaceholderText("Find");
    find_->setAccessibleName("Find in the user guide");
    find_->setClearButtonEnabled(true);
    connect(find_, &QLineEdit::returnPressed, this, [this] { find_next(); });
    auto* next = new QPushButton("Next");
    next->setAutoDefault(false);
    connect(next, &QPushButton::clicked, this, [this] { find_next(); });
    auto* row = new QHBoxLayout;
    row->addWidget(find_, 1);
    row->addWidget(next);
    auto* column = new QVBoxLayout(this);
    column->addLayout(row);
    column->addWidget(page_, 1);
    resize(scaled(860, *this), scaled(640, *this));
  }

  void read(const QString& file) {
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly)) return page_->setPlainText("Cannot open " + file + ".");
    page_->setSearchPaths({QFileInfo(file).absolutePath()});
    page_->setHtml(readable(QString::fromUtf8(source.readAll())));
  }

private:
  // Wraps around to the top.
  void find_next() {
    if (page_->find(find_->text())) return;
    page_->moveCursor(QTextCursor::Start);
    page_->find(find_->text());
  }

  QTextBrowser* page_;
  QLineEdit* find_ = new QLineEdit;
};

} // namespace

void show_guide(QWidget& parent, const QString& file) {
  QWidget* window = parent.findChild<QWidget*>("GuideWindow", Qt::FindDirectChildrenOnly);
  if (!window) {
    auto* made = new guide_window(parent);
    made->read(file);
    window = made;
  }
  window->show();
  window->raise();
  window->activateWindow();
}

} // namespace vesk
