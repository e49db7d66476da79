// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korval::diag {

/// Numbers of the diagnostic-session library on which the server acts.
inline constexpr std::int32_t kSessionLost = 1000;
inline constexpr std::int32_t kNoInterface = 1001;
inline constexpr std::int32_t kCanNetworkError = 1015;
inline constexpr std::int32_t kNoAnswer = 2000;
inline constexpr std::int32_t kNegativeAnswer = 2001;
inline constexpr std::int32_t kAnswerTooShort = 2002;
inline constexpr std::int32_t kReadOnly = 2011;
inline constexpr std::int32_t kValueRefused = 2012;
inline constexpr std::int32_t kInitialisationLost = 2042;
inline constexpr std::int32_t kCommunicationEnded = 2045;
inline constexpr std::int32_t kTesterPresentUnanswered = 2046;

/// The protocols whose ECUs answer diagnostic services.
inline constexpr char kKwp2000[] = "KWP2000";
inline constexpr char kDiagOnCan[] = "DiagOnCAN";
/// The function that stands for the CAN messaging, which has no ECU to initialise.
inline constexpr char kCanFunction[] = "CAN";

}  // namespace korval::diag
