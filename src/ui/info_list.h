// The list of messages of the main window, InfoListView.
#pragma once

#include <QAbstractListModel>
#include <QIcon>
#include <QTreeView>
#include <array>
#include <string>
#include <vector>

namespace vesk {

// The lines as they came, with the number of their picture.
class info_lines final : public QAbstractListModel {
public:
  info_lines();

  void append(const std::string& text, int icon);
  void clear();

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

private:
  struct line {
    QString text;
    int icon;
  };
  std::vector<line> lines_;
  const std::array<QIcon, 3> icons_;
};

// Read-only; lines can be selected and copied. The newest line is in sight unless the user has scrolled away from the
// end.
class info_list final : public QTreeView {
public:
  explicit info_list(QWidget* parent);

  void append(const std::string& text, int icon);
  void select_last();
  void clear();
  void copy_selected() const;

protected:
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  void fit_column();
  void note_scrolling();
  void show_newest();

  info_lines lines_;
  int longest_ = 0;     // width of the longest line
  bool follows_ = true; // the user has not scrolled away from the end
};

} // namespace vesk
