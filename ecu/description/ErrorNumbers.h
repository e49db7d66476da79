// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korval::ecu {

/// The numbers of this library's failures.
inline constexpr std::int32_t kLinkLost = 1000;
inline constexpr std::int32_t kNoInterface = 1001;
inline constexpr std::int32_t kInterfaceRefused = 1002;
inline constexpr std::int32_t kCanNetworkError = 1015;
inline constexpr std::int32_t kNoAnswer = 2000;
inline constexpr std::int32_t kNegativeAnswer = 2001;
inline constexpr std::int32_t kAnswerTooShort = 2002;
inline constexpr std::int32_t kForeignAnswer = 2003;
inline constexpr std::int32_t kUnknownName = 2010;
inline constexpr std::int32_t kReadOnly = 2011;
inline constexpr std::int32_t kValueRefused = 2012;
inline constexpr std::int32_t kNoEcuFile = 2020;
inline constexpr std::int32_t kInitialisationRefused = 2042;
inline constexpr std::int32_t kCommunicationEnded = 2045;
inline constexpr std::int32_t kTesterPresentUnanswered = 2046;

}  // namespace korval::ecu
