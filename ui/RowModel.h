// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <QAbstractTableModel>
#include <QStringList>

namespace korval::ui {

/// The rows of a list view. Changes gather until Show brings them to whoever looks.
class RowModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  using Rows = std::vector<std::vector<std::string>>;

  explicit RowModel(QStringList headers, QObject* parent = nullptr);

  void Clear();
  void AddRow(const std::vector<std::string>& cells);
  /// Does nothing for a cell that does not exist.
  void SetCell(std::size_t row, std::size_t column, const std::string& text);
  /// Shows the changes gathered so far.
  void Show();

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  void ShowRebuilt();

  QStringList headers_;
  Rows rows_;   // as they are
  Rows shown_;  // as they were last shown
  std::vector<std::size_t> changed_;
  std::vector<bool> is_changed_;
  bool rebuilt_ = false;
};

}  // namespace korval::ui
