// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace korval::host {

enum class MessageStyle { kPlain = 0, kExclamation = 48 };

/// Tells the person at the console something. Returns at once: frames go on being answered.
class MessageBox {
 public:
  virtual ~MessageBox() = default;
  virtual void Show(const std::string& text, MessageStyle style) = 0;
};

}  // namespace korval::host
