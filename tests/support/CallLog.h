// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace korval::tests {

/// What the fakes of one test were asked to do, in the order across all of them.
using CallLog = std::vector<std::string>;

}  // namespace korval::tests
