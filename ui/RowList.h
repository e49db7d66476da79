// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>
#include <QTreeView>

#include "ui/RowModel.h"

namespace korval::ui {

/// A list view (`LVfile`, `LVdata`): columns that a click on the header sorts, a third click puts back into
/// the list's own order, and that can be resized and moved.
class RowList : public QTreeView {
  Q_OBJECT

 public:
  RowList(const QString& name, const QString& accessible_name, const QStringList& headers,
          QWidget* parent = nullptr);

  RowModel& Rows() { return *rows_; }
  /// Widths, order and sorting of the columns as text, and back. A text that is none changes nothing.
  QString Columns() const;
  void SetColumns(const QString& text);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void CopySelection() const;

  RowModel* rows_;
};

}  // namespace korval::ui
