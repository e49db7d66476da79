// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "diag/viator3.h"

namespace korval::parameters {

/// The CAN frames of a value text: frames separated by ";", each an identifier of eight hexadecimal digits
/// and two digits a data byte.
std::vector<std::string_view> SplitFrames(std::string_view text);

/// One of them; none for a frame whose length is wrong. The identifier is read up to the first character that
/// is no hexadecimal digit, eight digits as a signed number; the data is taken over unread.
std::optional<viator3::CanFrame> ReadFrame(std::string_view frame);

/// The document in which frames are traced:
///   <can><x i="0"><i>291</i><s><d>01020304</d></s> ...</x></can>
std::string CanDocumentText(std::span<const viator3::CanFrame> frames);

}  // namespace korval::parameters
