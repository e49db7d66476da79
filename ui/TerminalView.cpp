// SPDX-License-Identifier: MIT
#include "ui/TerminalView.h"

#include <algorithm>

namespace korval::ui {
namespace {

// As the box has it, with one character for a line end.
QString Displayed(QString text) { return text.remove(QLatin1Char('\r')); }

// The first `count` characters, of which some are two in a QString.
QString First(const QString& text, std::size_t count) {
  qsizetype end = 0;
  for (; count > 0 && end < text.size(); --count) end += text[end].isHighSurrogate() ? 2 : 1;
  return text.left(end);
}

}  // namespace

TerminalView::TerminalView(TerminalBox* box) : box_(box), refresh_(box, [this] { ShowNow(); }) {}

void TerminalView::DropFirst(std::size_t count) {
  dropped_ += std::min(count, text_.Length());
  text_.DropFirst(count);
  refresh_.Ask();
}

void TerminalView::ReplaceSelection(std::string_view text) {
  text_.ReplaceSelection(text);
  refresh_.Ask();
}

void TerminalView::ShowNow() {
  if (!box_) return;
  const qsizetype dropped = Displayed(First(shown_, dropped_)).size();
  shown_ = QString::fromStdString(text_.Text());
  dropped_ = 0;
  box_->ShowText(Displayed(shown_), dropped);
}

}  // namespace korval::ui
