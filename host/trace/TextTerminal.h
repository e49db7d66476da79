// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "host/trace/Terminal.h"

namespace korval::host {

/// A terminal without a window: keeps the text, and hands every piece to `sink` as it is appended.
class TextTerminal : public Terminal {
 public:
  using Sink = std::function<void(std::string_view)>;

  explicit TextTerminal(Sink sink = {}) : sink_(std::move(sink)) {}

  std::size_t Length() const override { return text_.size(); }
  void DropFirst(std::size_t count) override;
  void Select(std::size_t start, std::size_t length) override;
  void ReplaceSelection(std::string_view text) override;

  /// The whole text, in UTF-8.
  std::string Text() const;
  std::size_t SelectionStart() const { return start_; }
  std::size_t SelectionLength() const { return length_; }

 private:
  std::u32string text_;  // one element a character, so that positions are plain indexes
  std::size_t start_ = 0;
  std::size_t length_ = 0;
  Sink sink_;
};

}  // namespace korval::host
