// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "host/trace/Terminal.h"

namespace korval::fuzz {

/// A terminal that keeps no text, only its length, and checks what a text box relies on: selections inside
/// the text, and line ends that are CR LF.
class CheckedTerminal : public host::Terminal {
 public:
  std::size_t Length() const override { return length_; }
  void DropFirst(std::size_t count) override;
  void Select(std::size_t start, std::size_t length) override;
  void ReplaceSelection(std::string_view text) override;

 private:
  std::size_t length_ = 0;
  std::size_t start_ = 0;
  std::size_t selected_ = 0;
};

}  // namespace korval::fuzz
