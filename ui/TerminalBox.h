// SPDX-License-Identifier: MIT
#pragma once

#include <QPlainTextEdit>
#include <QString>

namespace korval::ui {

/// The box that shows the trace (`txtTerm`): read only, blue on any palette, in a font of fixed width. It
/// follows the newest text unless its reader has scrolled up.
class TerminalBox : public QPlainTextEdit {
  Q_OBJECT

 public:
  explicit TerminalBox(QWidget* parent = nullptr);

  /// Brings the box up to `text` (line ends LF). `dropped` characters went from the start of the text shown
  /// before; what the reader has selected stays selected as long as it is still there.
  void ShowText(const QString& text, qsizetype dropped);
  /// Offers to save the text as a file.
  void SaveAs();

 signals:
  /// The reader asks for the find bar.
  void FindAsked();

 protected:
  void changeEvent(QEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void ApplyColour();
  void WriteFile(const QString& path);
  bool RemoveFirst(qsizetype count);
  void AppendText(const QString& text);

  QString shown_;
};

}  // namespace korval::ui
