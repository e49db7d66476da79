// SPDX-License-Identifier: MIT
#include "ui/RowModel.h"

#include <algorithm>
#include <utility>

#include "base/VisibleText.h"

namespace korval::ui {

RowModel::RowModel(QStringList headers, QObject* parent)
    : QAbstractTableModel(parent), headers_(std::move(headers)) {}

void RowModel::Clear() {
  rows_.clear();
  rebuilt_ = true;
}

void RowModel::AddRow(const std::vector<std::string>& cells) {
  rows_.push_back(cells);
  rows_.back().resize(static_cast<std::size_t>(headers_.size()));
  rebuilt_ = true;
}

void RowModel::SetCell(std::size_t row, std::size_t column, const std::string& text) {
  if (row >= rows_.size() || column >= rows_[row].size() || rows_[row][column] == text) return;
  rows_[row][column] = text;
  if (rebuilt_ || is_changed_[row]) return;
  is_changed_[row] = true;
  changed_.push_back(row);
}

// Rows that only follow those shown are added to them: a long list costs what is new in it, and keeps its
// selection and its place.
void RowModel::ShowRebuilt() {
  rebuilt_ = false;
  const bool begins_alike =
      shown_.size() <= rows_.size() && std::equal(shown_.begin(), shown_.end(), rows_.begin());
  if (!begins_alike) {
    beginResetModel();
    shown_ = rows_;
    endResetModel();
  } else if (shown_.size() < rows_.size()) {
    const auto known = static_cast<std::ptrdiff_t>(shown_.size());
    beginInsertRows({}, static_cast<int>(known), static_cast<int>(rows_.size()) - 1);
    shown_.insert(shown_.end(), rows_.begin() + known, rows_.end());
    endInsertRows();
  }
}

void RowModel::Show() {
  if (rebuilt_) {
    ShowRebuilt();
  } else if (!changed_.empty()) {
    for (const std::size_t row : changed_) shown_[row] = rows_[row];
    const auto [first, last] = std::minmax_element(changed_.begin(), changed_.end());
    emit dataChanged(index(static_cast<int>(*first), 0), index(static_cast<int>(*last), columnCount() - 1),
                     {Qt::DisplayRole});
  }
  changed_.clear();
  is_changed_.assign(rows_.size(), false);
}

int RowModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

int RowModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(headers_.size());
}

QVariant RowModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  const std::string& cell =
      shown_[static_cast<std::size_t>(index.row())][static_cast<std::size_t>(index.column())];
  return QString::fromStdString(base::VisibleText(cell));
}

QVariant RowModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role == Qt::TextAlignmentRole) return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return headers_.value(section);
}

}  // namespace korval::ui
