// The list of messages of the main window, InfoListView.
#pragma once

#include <QAbstractListModel>
#include <QIcon>
#include <QTimer>
#include <QTreeView>
#include <array>
#include <functional>
#include <string>
#include <vector>

namespace vesk {

// The lines in order of arrival, with icon numbers. Headings separate the jobs.
class info_lines final : public QAbstractListModel {
public:
  enum line_role : int {
    whole_text = Qt::UserRole, // with the icon's word
    is_heading,
    named_file // the file shown by a double click on the line; empty: none
  };

  info_lines();

  void append(const std::string& text, int icon);
  void begin_section(const std::string& heading);
  // Appends the outcome to the heading, or as a separate line if the heading was cleared.
  void end_section(const std::string& outcome);
  void set_file_of_newest(const QString& file);
  void clear();
  QString all_text() const; // one line each, with line ends

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

private:
  static constexpr int heading_icon = -1;
  struct line {
    QString text;
    int icon;
    QString file = {};
  };
  QString whole(const line& of) const;
  void push(line added);

  std::vector<line> lines_;
  int heading_ = -1;     // row of the running job's; -1: none
  QString heading_text_; // without an outcome
  const std::array<QIcon, 3> icons_;
};

// Read-only; lines can be selected and copied. The newest line is in sight, from its first character on, unless the
// user has scrolled away from the end. Lines that come within a few milliseconds are painted together.
class info_list final : public QTreeView {
public:
  explicit info_list(QWidget* parent);

  void append(const std::string& text, int icon);
  void begin_section(const std::string& heading);
  void end_section(const std::string& outcome);
  void select_last();
  // The newest line leads to this file, by a double click or Enter.
  void set_file_of_newest(const QString& file) { lines_.set_file_of_newest(file); }
  std::function<void(const QString& file)> OnFileChosen; // may be empty
  void clear();
  void copy_selected() const;
  QString all_text() const { return lines_.all_text(); }
  bool is_empty() const { return lines_.rowCount() == 0; }

  void wrap_lines(bool wanted); // otherwise long lines are read by scrolling sideways

protected:
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  void note_newest();
  void catch_up_later();
  void fit_column();
  void note_scrolling();
  void show_newest();
  void catch_up();

  info_lines lines_;
  QTimer catch_up_soon_;
  int longest_ = 0;                              // width of the longest line
  bool follows_ = true;                          // the user has not scrolled away from the end
  bool selects_last_ = false, is_wider_ = false; // pending work
};

} // namespace vesk
