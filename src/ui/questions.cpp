#include "ui/questions.h"

#include "ui/measures.h"
#include "ui/texts.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTreeView>
#include <QUrl>
#include <algorithm>
#include <memory>
#include <optional>

namespace vesk {

namespace {

QString last_folder; // of the file dialogs; main thread

QMessageBox::Icon icon_of(const std::string& title, box_buttons buttons) {
  if (buttons != box_buttons::ok) return QMessageBox::Question;
  const bool good = title == "Complete" || title == "Validity check passed";
  return good ? QMessageBox::Information : QMessageBox::Warning;
}

// The first pattern of a Qt filter, such as "vki" of "Files (*.vki *.vkp)".
QString suffix_of(const QString& name_filter) {
  static const QRegularExpression first_pattern("\\(\\*\\.([^ )*]+)");
  return first_pattern.match(name_filter).captured(1);
}

// Wide enough for the sentences of a text, within limits.
void widen(QMessageBox& box) {
  auto* label = box.findChild<QLabel*>("qt_msgbox_label");
  if (!label) return;
  int width = 0;
  for (const QString& line : box.text().split('\n'))
    width = std::max(width, label->fontMetrics().horizontalAdvance(line));
  label->setMinimumWidth(std::min(width + scaled(8, box), scaled(560, box)));
}

// Identifies files by name. Qt's default reads each file, which can take long or never end.
class name_icon_provider final : public QFileIconProvider {
public:
  QIcon icon(const QFileInfo& file) const override { return QFileIconProvider::icon(file.isDir() ? Folder : File); }
  QString type(const QFileInfo& file) const override {
    if (file.isDir()) return "Folder";
    return file.suffix().isEmpty() ? QString("File") : file.suffix().toUpper() + " file";
  }
  using QFileIconProvider::icon;
};

// Appends the extension to the chosen name before Qt checks whether the file exists. Qt's default suffix skips names
// with a dot anywhere, such as "river v1.3".
class file_box final : public QFileDialog {
public:
  file_box(QWidget* parent, QString ending) : QFileDialog(parent), ending_(std::move(ending)) {}

  void accept() override {
    auto* edit = findChild<QLineEdit*>("fileNameEdit");
    const QStringList chosen = selectedFiles();
    if (edit && !ending_.isEmpty() && !edit->text().isEmpty() && chosen.size() == 1 && !QFileInfo(chosen[0]).isDir() &&
        !edit->text().endsWith(ending_, Qt::CaseInsensitive))
      edit->setText(edit->text() + ending_);
    QFileDialog::accept();
  }

private:
  const QString ending_;
};

// Shows an arrow instead of the hourglass during a question.
class arrow_cursor {
public:
  arrow_cursor() { QApplication::setOverrideCursor(Qt::ArrowCursor); }
  ~arrow_cursor() { QApplication::restoreOverrideCursor(); }
  arrow_cursor(const arrow_cursor&) = delete;
  arrow_cursor& operator=(const arrow_cursor&) = delete;
};

void arrange(QFileDialog& box) {
  static name_icon_provider icons;
  box.setIconProvider(&icons);
  box.resize(scaled(820, box), scaled(500, box));
  QList<QUrl> places;
  for (const auto place : {QStandardPaths::HomeLocation, QStandardPaths::DocumentsLocation})
    if (const QString folder = QStandardPaths::writableLocation(place); QFileInfo(folder).isDir())
      places << QUrl::fromLocalFile(folder);
  box.setSidebarUrls(places);
  if (auto* list = box.findChild<QTreeView*>("treeView"))
    for (int column = 1; column < 4; ++column)
      list->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
}

} // namespace

QWidget* window_in_front() {
  if (QWidget* modal = QApplication::activeModalWidget()) return modal;
  if (QWidget* active = QApplication::activeWindow()) return active;
  for (QWidget* window : QApplication::topLevelWidgets()) // the active window belongs to another program
    if (window->isVisible() && qobject_cast<QMainWindow*>(window)) return window;
  return nullptr;
}

box_answer ask_in_box(const std::string& title, const std::string& text, box_buttons buttons) {
  QMessageBox box(window_in_front());
  box.setObjectName("message_box");
  box.setWindowTitle(shown(title));
  box.setTextFormat(Qt::PlainText);
  box.setText(shown_lines(text));
  box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  box.setIcon(icon_of(title, buttons));
  switch (buttons) {
  case box_buttons::ok: box.setStandardButtons(QMessageBox::Ok); break;
  case box_buttons::ok_cancel: box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel); break;
  case box_buttons::yes_no: box.setStandardButtons(QMessageBox::Yes | QMessageBox::No); break;
  case box_buttons::yes_no_cancel:
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    break;
  }
  if (buttons == box_buttons::yes_no) {
    box.setDefaultButton(QMessageBox::No); // the safe answer
    box.setEscapeButton(QMessageBox::No);
  }
  widen(box);
  const auto arrow = QApplication::overrideCursor() ? std::make_optional<arrow_cursor>() : std::nullopt;
  switch (box.exec()) {
  case QMessageBox::Ok: return box_answer::ok;
  case QMessageBox::Yes: return box_answer::yes;
  case QMessageBox::No: return box_answer::no;
  default: return box_answer::cancel;
  }
}

QStringList name_filters(const std::string& filter) {
  const QStringList parts = shown(filter).split('|', Qt::SkipEmptyParts);
  static const QRegularExpression pattern_at_end("\\s*\\([^()]*\\)$");
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    QString description = parts[i], patterns = parts[i + 1];
    description.remove(pattern_at_end); // Qt takes the patterns from there
    filters << description + " (" + patterns.replace(';', ' ') + ")";
  }
  return filters;
}

std::optional<std::string> ask_for_file(const file_dialog& dialog, const QString& first_folder) {
  const bool save = dialog.kind == file_dialog::kind::save;
  file_box box(window_in_front(), shown(dialog.ending));
  box.setObjectName("file_dialog");
  box.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  box.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  if (!dialog.title.empty()) box.setWindowTitle(shown(dialog.title));
  box.setNameFilters(name_filters(dialog.filter));
  box.setDefaultSuffix(shown(dialog.default_extension));
  if (save)
    QObject::connect(&box, &QFileDialog::filterSelected, &box,
                     [&box](const QString& filter) { box.setDefaultSuffix(suffix_of(filter)); });
  arrange(box);
  const QString wanted = shown(dialog.folder);
  box.setDirectory(!wanted.isEmpty() && QFileInfo(wanted).isDir() ? wanted
                   : last_folder.isEmpty()                        ? first_folder
                                                                  : last_folder);
  while (box.exec() == QDialog::Accepted && !box.selectedFiles().isEmpty()) {
    const QString name = box.selectedFiles().first();
    const QString folder = QFileInfo(name).absolutePath();
    if (QFileInfo(folder).isDir()) {
      last_folder = folder;
      return stored(name);
    }
    ask_in_box("Error", "Folder " + stored(folder) + " does not exist. Choose another one.", box_buttons::ok);
  }
  return {};
}

void note_opened_file(const QString& file) {
  if (last_folder.isEmpty()) last_folder = QFileInfo(file).absolutePath();
}

std::optional<std::string> ask_for_folder(const std::string& title, const std::string& start) {
  QFileDialog box(window_in_front(), shown(title), shown(start));
  box.setObjectName("folder_dialog");
  box.setFileMode(QFileDialog::Directory); // lists files too, so that the user can recognise the folder
  arrange(box);
  const auto arrow = QApplication::overrideCursor() ? std::make_optional<arrow_cursor>() : std::nullopt;
  if (box.exec() != QDialog::Accepted || box.selectedFiles().isEmpty()) return {};
  return stored(box.selectedFiles().first());
}

} // namespace vesk
