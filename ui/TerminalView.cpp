// SPDX-License-Identifier: MIT
#include "ui/TerminalView.h"

namespace korval::ui {

TerminalView::TerminalView(TerminalBox* box) : box_(box), refresh_(box, [this] { ShowNow(); }) {}

void TerminalView::DropFirst(std::size_t count) {
  // Once nothing of the box is left it is filled anew, and counting on would only cost time.
  const bool count_on = dropped_ < shown_;
  const qsizetype before = count_on ? Displayed().size() : 0;
  text_.DropFirst(count);
  if (count_on) dropped_ += before - Displayed().size();
  refresh_.Ask();
}

void TerminalView::ReplaceSelection(std::string_view text) {
  text_.ReplaceSelection(text);
  refresh_.Ask();
}

void TerminalView::ShowNow() {
  if (!box_) return;
  const QString text = Displayed();
  box_->ShowText(text, dropped_);
  shown_ = text.size();
  dropped_ = 0;
}

// As the box has it, with one character for a line end.
QString TerminalView::Displayed() const {
  return QString::fromStdString(text_.Text()).remove(QLatin1Char('\r'));
}

}  // namespace korval::ui
