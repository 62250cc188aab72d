#include "ui/questions.h"

#include "ui/measures.h"
#include "ui/texts.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTreeView>
#include <QUrl>
#include <algorithm>

namespace vesk {

namespace {

QString last_folder; // of the file dialogs; main thread

QMessageBox::Icon icon_of(const std::string& title, box_buttons buttons) {
  if (buttons != box_buttons::ok) return QMessageBox::Question;
  const bool good = title == "Complete" || title == "Validity check passed";
  return good ? QMessageBox::Information : QMessageBox::Warning;
}

// The first pattern of a filter as the toolkit has it, such as "vki" of "Files (*.vki *.vkp)".
QString suffix_of(const QString& name_filter) {
  static const QRegularExpression first_pattern("\\(\\*\\.([^ )*]+)");
  return first_pattern.match(name_filter).captured(1);
}

QWidget* window_in_front() {
  if (QWidget* modal = QApplication::activeModalWidget()) return modal;
  if (QWidget* active = QApplication::activeWindow()) return active;
  for (QWidget* window : QApplication::topLevelWidgets()) // another program's is active
    if (window->isVisible() && qobject_cast<QMainWindow*>(window)) return window;
  return nullptr;
}

// Wide enough for the sentences of a text, within bounds.
void widen(QMessageBox& box) {
  auto* label = box.findChild<QLabel*>("qt_msgbox_label");
  if (!label) return;
  int width = 0;
  for (const QString& line : box.text().split('\n'))
    width = std::max(width, label->fontMetrics().horizontalAdvance(line));
  label->setMinimumWidth(std::min(width + scaled(8, box), scaled(560, box)));
}

void arrange(QFileDialog& box) {
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
  case box_buttons::yes_no: box.setStandardButtons(QMessageBox::Yes | QMessageBox::No); break;
  case box_buttons::yes_no_cancel:
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    break;
  }
  if (buttons == box_buttons::yes_no) {
    box.setDefaultButton(QMessageBox::No); // what is asked cannot be undone
    box.setEscapeButton(QMessageBox::No);
  }
  widen(box);
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
    description.remove(pattern_at_end); // the toolkit takes the patterns from there
    filters << description + " (" + patterns.replace(';', ' ') + ")";
  }
  return filters;
}

std::optional<std::string> ask_for_file(const file_dialog& dialog, const QString& fallback) {
  const bool save = dialog.kind == file_dialog::kind::save;
  QFileDialog box(window_in_front());
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
  box.setDirectory(last_folder.isEmpty() ? fallback : last_folder);
  if (box.exec() != QDialog::Accepted || box.selectedFiles().isEmpty()) return {};
  const QString name = box.selectedFiles().first();
  last_folder = QFileInfo(name).absolutePath();
  return stored(name);
}

std::optional<std::string> ask_for_folder(const std::string& title, const std::string& start) {
  // With the files in sight, so that the user sees what he chooses.
  const QString folder =
      QFileDialog::getExistingDirectory(window_in_front(), shown(title), shown(start), QFileDialog::Options());
  if (folder.isEmpty()) return {};
  return stored(folder);
}

} // namespace vesk
