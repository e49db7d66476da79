// SPDX-License-Identifier: MIT
#include "ui/TerminalBox.h"

#include <QContextMenuEvent>
#include <QEvent>
#include <QFileDialog>
#include <QFontDatabase>
#include <QMenu>
#include <QMessageBox>
#include <QSaveFile>
#include <QScrollBar>
#include <QTextCursor>
#include <QTextDocument>

#include "ui/Colours.h"

namespace korval::ui {

TerminalBox::TerminalBox(QWidget* parent) : QPlainTextEdit(parent) {
  setObjectName("txtTerm");
  setAccessibleName(tr("Trace"));
  setReadOnly(true);
  // Selecting and copying by keyboard.
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setUndoRedoEnabled(false);
  setLineWrapMode(NoWrap);
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  ApplyColour();
}

void TerminalBox::ShowText(const QString& text, qsizetype dropped) {
  QScrollBar& bar = *verticalScrollBar();
  const bool follows = bar.value() == bar.maximum();
  if (RemoveFirst(dropped) && text.startsWith(shown_)) {
    AppendText(text.mid(shown_.size()));
  } else {
    setPlainText(text);
  }
  shown_ = text;
  if (follows) bar.setValue(bar.maximum());
}

// False when nothing of the text shown is left.
bool TerminalBox::RemoveFirst(qsizetype count) {
  if (count >= shown_.size()) return shown_.isEmpty();
  if (count == 0) return true;
  QTextCursor cursor(document());
  cursor.setPosition(static_cast<int>(count), QTextCursor::KeepAnchor);
  cursor.removeSelectedText();
  shown_.remove(0, count);
  return true;
}

void TerminalBox::AppendText(const QString& text) {
  QTextCursor cursor(document());
  cursor.movePosition(QTextCursor::End);
  cursor.insertText(text);
}

void TerminalBox::ApplyColour() {
  QPalette colours = palette();
  const QColor blue = Blue(colours);
  if (colours.color(QPalette::Text) == blue) return;
  colours.setColor(QPalette::Text, blue);
  setPalette(colours);
}

void TerminalBox::changeEvent(QEvent* event) {
  QPlainTextEdit::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) ApplyColour();
}

void TerminalBox::contextMenuEvent(QContextMenuEvent* event) {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addAction(tr("&Copy"), QKeySequence::Copy, this, &QPlainTextEdit::copy)
      ->setEnabled(textCursor().hasSelection());
  menu->addAction(tr("Select &all"), QKeySequence::SelectAll, this, &QPlainTextEdit::selectAll);
  menu->addSeparator();
  menu->addAction(tr("&Find..."), QKeySequence::Find, this, &TerminalBox::FindAsked);
  menu->addAction(tr("&Save as text..."), QKeySequence::Save, this, &TerminalBox::SaveAs);
  menu->popup(event->globalPos());
}

void TerminalBox::SaveAs() {
  auto* dialog =
      new QFileDialog(this, tr("Save the trace"), QString(), tr("Text files (*.txt);;All files (*)"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  dialog->setDefaultSuffix("txt");
  connect(dialog, &QFileDialog::fileSelected, this, &TerminalBox::WriteFile);
  dialog->show();
}

void TerminalBox::WriteFile(const QString& path) {
  QSaveFile file(path);
  if (file.open(QIODevice::WriteOnly | QIODevice::Text)) {
    file.write(shown_.toUtf8());
    if (file.commit()) return;
  }
  auto* box = new QMessageBox(QMessageBox::Warning, tr("Save the trace"),
                              tr("The trace could not be saved as %1: %2").arg(path, file.errorString()),
                              QMessageBox::Ok, this);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setModal(false);
  box->show();
}

}  // namespace korval::ui
