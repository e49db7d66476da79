// SPDX-License-Identifier: MIT
#include "ui/RowList.h"

#include <algorithm>

#include <QClipboard>
#include <QCollator>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QSortFilterProxyModel>
#include <QStyledItemDelegate>

namespace korval::ui {
namespace {

// Sorts numbers by value and all else as people do.
class ByValue : public QSortFilterProxyModel {
 public:
  explicit ByValue(QObject* parent) : QSortFilterProxyModel(parent) { collator_.setNumericMode(true); }

 protected:
  bool lessThan(const QModelIndex& left, const QModelIndex& right) const override {
    const QString left_text = left.data().toString();
    const QString right_text = right.data().toString();
    bool left_is_number = false;
    bool right_is_number = false;
    const double left_number = left_text.toDouble(&left_is_number);
    const double right_number = right_text.toDouble(&right_is_number);
    if (left_is_number && right_is_number) return left_number < right_number;
    return collator_.compare(left_text, right_text) < 0;
  }

 private:
  QCollator collator_;
};

// Rows with some air between them.
class AiryRows : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, option.fontMetrics.height() / 3);
  }
};

}  // namespace

RowList::RowList(const QString& name, const QString& accessible_name, const QStringList& headers,
                 QWidget* parent)
    : QTreeView(parent), rows_(new RowModel(headers, this)) {
  setObjectName(name);
  setAccessibleName(accessible_name);
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAlternatingRowColors(true);
  setAllColumnsShowFocus(true);
  setSelectionMode(ExtendedSelection);
  setTextElideMode(Qt::ElideMiddle);
  setItemDelegate(new AiryRows(this));
  auto* sorted = new ByValue(this);
  sorted->setSourceModel(rows_);
  setModel(sorted);
  header()->setSortIndicatorClearable(true);
  header()->setSortIndicator(-1, Qt::AscendingOrder);
  setSortingEnabled(true);
}

QString RowList::Columns() const { return QString::fromLatin1(header()->saveState().toBase64()); }

void RowList::SetColumns(const QString& text) {
  if (!text.isEmpty()) header()->restoreState(QByteArray::fromBase64(text.toLatin1()));
}

void RowList::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    CopySelection();
    return;
  }
  QTreeView::keyPressEvent(event);
}

// Rows as lines, cells separated by tabs, as spreadsheets take them.
void RowList::CopySelection() const {
  QModelIndexList rows = selectionModel()->selectedRows();
  std::sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.row() < b.row(); });
  QStringList lines;
  for (const QModelIndex& row : rows) {
    QStringList cells;
    for (int column = 0; column < model()->columnCount(); ++column) {
      cells.append(row.siblingAtColumn(column).data().toString());
    }
    lines.append(cells.join(QLatin1Char('\t')));
  }
  if (!lines.isEmpty()) QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

}  // namespace korval::ui
