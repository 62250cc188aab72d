// The results grid's rows and columns as the toolkit wants them.
#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vesk {

class results_model final : public QAbstractTableModel {
public:
  // The element at a row and column, both from 0; nothing leaves the cell empty.
  using reader = std::function<std::optional<double>(int row, int column)>;

  explicit results_model(reader read) : read_(std::move(read)) {}

  void initialize_grid(const std::vector<std::string>& column_labels, int rows);
  void set_picture(const std::string& picture) { picture_ = picture; } // see numeric_picture.h

  int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : rows_; }
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
  const reader read_;
  QStringList labels_;
  int rows_ = 0;
  std::string picture_;
};

} // namespace vesk
