// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>

#include "host/trace/TextTerminal.h"
#include "ui/Refresh.h"
#include "ui/TerminalBox.h"

namespace korval::ui {

/// The trace terminal on its box. Positions and lengths are those of the text kept here, where a line end
/// counts as two characters; the box follows by a timer, so that a burst of traces costs no repainting.
class TerminalView : public host::Terminal {
 public:
  /// The box may go before the terminal does.
  explicit TerminalView(TerminalBox* box);

  std::size_t Length() const override { return text_.Length(); }
  void DropFirst(std::size_t count) override;
  void Select(std::size_t start, std::size_t length) override { text_.Select(start, length); }
  void ReplaceSelection(std::string_view text) override;

  /// The whole text, in UTF-8.
  std::string Text() const { return text_.Text(); }
  /// Brings the box up to date at once.
  void ShowNow();

 private:
  host::TextTerminal text_;
  QPointer<TerminalBox> box_;
  QString shown_;            // what the box was filled from
  std::size_t dropped_ = 0;  // how many characters have gone from its start since
  Refresh refresh_;
};

}  // namespace korval::ui
