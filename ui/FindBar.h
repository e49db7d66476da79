// SPDX-License-Identifier: MIT
#pragma once

#include <QPlainTextEdit>
#include <QWidget>

class QLineEdit;

namespace korval::ui {

/// Finds text in a text box: as it is typed, then forwards and backwards, around the ends.
class FindBar : public QWidget {
  Q_OBJECT

 public:
  /// `box` outlives the bar.
  FindBar(QPlainTextEdit* box, QWidget* parent);

  /// Shows the bar with the box's selected text, ready to type.
  void Open();
  /// Hides the bar and goes back to the box.
  void Close();
  void FindNext() { Find({}); }
  void FindPrevious();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void FindTyped();
  void Find(QTextDocument::FindFlags flags);
  void Mark(bool found);

  QPlainTextEdit* box_;
  QLineEdit* text_;
};

}  // namespace korval::ui
