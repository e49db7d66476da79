// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "diag/PortLabel.h"

namespace korval::tests {

/// Keeps what is shown.
class FakePortLabel : public diag::PortLabel {
 public:
  void SetCaption(const std::string& new_caption) override { caption = new_caption; }
  void SetToolTip(const std::string& text) override { tool_tip = text; }
  void SetForeColour(std::int32_t colour) override { fore_colour = colour; }

  std::string caption;
  std::string tool_tip;
  std::int32_t fore_colour = kBlack;
};

}  // namespace korval::tests
