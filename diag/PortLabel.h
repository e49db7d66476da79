// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace korval::diag {

/// The seam to the label that shows the diagnostic interface in use (`lbPort`).
class PortLabel {
 public:
  static constexpr std::int32_t kBlack = 0;
  static constexpr std::int32_t kRed = 255;

  virtual ~PortLabel() = default;
  virtual void SetCaption(const std::string& caption) = 0;
  /// "" shows none.
  virtual void SetToolTip(const std::string& text) = 0;
  virtual void SetForeColour(std::int32_t colour) = 0;
};

}  // namespace korval::diag
