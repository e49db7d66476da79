// SPDX-License-Identifier: MIT
#include "ui/FindBar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTextCursor>
#include <QToolButton>

#include "ui/Colours.h"

namespace korval::ui {
namespace {

QToolButton* AddButton(QHBoxLayout& row, const QString& text, const QString& tool_tip) {
  auto* button = new QToolButton;
  button->setText(text);
  button->setToolTip(tool_tip);
  button->setAccessibleName(tool_tip);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  row.addWidget(button);
  return button;
}

}  // namespace

FindBar::FindBar(QPlainTextEdit* box, QWidget* parent) : QWidget(parent), box_(box), text_(new QLineEdit) {
  setObjectName("findBar");
  text_->setObjectName("findText");
  text_->setClearButtonEnabled(true);
  auto* label = new QLabel(tr("F&ind:"));
  label->setBuddy(text_);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(label);
  row->addWidget(text_, 1);
  connect(AddButton(*row, tr("Previous"), tr("Find previous (Shift+F3)")), &QToolButton::clicked, this,
          &FindBar::FindPrevious);
  connect(AddButton(*row, tr("Next"), tr("Find next (F3)")), &QToolButton::clicked, this, &FindBar::FindNext);
  connect(AddButton(*row, tr("Close"), tr("Close the find bar (Esc)")), &QToolButton::clicked, this,
          &FindBar::Close);
  connect(text_, &QLineEdit::textChanged, this, &FindBar::FindTyped);
  hide();
}

void FindBar::Open() {
  const QString selected = box_->textCursor().selectedText();
  if (!selected.isEmpty() && !selected.contains(QChar::ParagraphSeparator)) text_->setText(selected);
  show();
  text_->setFocus();
  text_->selectAll();
}

void FindBar::Close() {
  hide();
  box_->setFocus();
}

void FindBar::FindPrevious() { Find(QTextDocument::FindBackward); }

// What is typed is sought from where the match so far begins.
void FindBar::FindTyped() {
  QTextCursor cursor = box_->textCursor();
  cursor.setPosition(cursor.selectionStart());
  box_->setTextCursor(cursor);
  Find({});
}

void FindBar::Find(QTextDocument::FindFlags flags) {
  if (text_->text().isEmpty()) {
    Mark(true);
    return;
  }
  bool found = box_->find(text_->text(), flags);
  if (!found) {
    const QTextCursor before = box_->textCursor();
    QTextCursor cursor = before;
    cursor.movePosition(flags.testFlag(QTextDocument::FindBackward) ? QTextCursor::End : QTextCursor::Start);
    box_->setTextCursor(cursor);
    found = box_->find(text_->text(), flags);
    if (!found) box_->setTextCursor(before);
  }
  Mark(found);
}

void FindBar::Mark(bool found) {
  QPalette colours;
  if (!found) colours.setColor(QPalette::Text, Red(palette()));
  text_->setPalette(colours);
  text_->setToolTip(found ? QString() : tr("Not found"));
}

void FindBar::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
      Close();
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      event->modifiers().testFlag(Qt::ShiftModifier) ? FindPrevious() : FindNext();
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

}  // namespace korval::ui
