// A list of names with check boxes, and a search line above it.
//
// The texts are made when they are drawn, and the boxes are the form's own flags, so that 1e5 names open at once.
#pragma once

#include <QAbstractListModel>
#include <QListView>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

class QLabel;
class QLineEdit;

namespace vesk {

class check_list_model final : public QAbstractListModel {
  Q_OBJECT

public:
  using text_of = std::function<std::string(std::size_t)>;

  // `checked` must outlive the model; its size is the number of names.
  check_list_model(text_of text, std::vector<bool>& checked, QObject* parent);

  void reload(); // `checked` and the names have been replaced
  void check(const QModelIndexList& rows, bool on);
  std::string text(int row) const { return text_(static_cast<std::size_t>(row)); }

  int rowCount(const QModelIndex& parent = {}) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

signals:
  void changed(); // a box, by the user

private:
  text_of text_;
  std::vector<bool>& checked_;
  int rows_ = 0; // as of the last `reload`
};

class check_list_view final : public QListView {
public:
  explicit check_list_view(check_list_model& model);
  QSize sizeHint() const override;

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  check_list_model& model_;
};

// The list with its caption and search line.
class check_list final : public QWidget {
public:
  // `name`: the object name of the list's view. The caption has its mnemonic.
  check_list(const QString& name, const QString& caption, check_list_model::text_of text, std::vector<bool>& checked,
             std::function<void()> changed);

  void reload(); // and scrolls to the top
  void start();  // focuses the search line

private:
  void find(bool next);

  check_list_model* model_;
  check_list_view* view_;
  QLineEdit* wanted_;
  QLabel* answer_;
};

} // namespace vesk
