// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korval {

// The numbers of failures, as clients see them in the first word of an error record. They are part of what
// test benches are written against: none is ever given another meaning.

/// The server's own failures that have no number of their own.
inline constexpr std::int32_t kOwnFailure = 1;
/// An index beyond what is there.
inline constexpr std::int32_t kOutOfRange = 9;

// The diagnostic session.

inline constexpr std::int32_t kLinkLost = 1000;          ///< link lost, or session closed
inline constexpr std::int32_t kNoInterface = 1001;       ///< no interface configured
inline constexpr std::int32_t kInterfaceRefused = 1002;  ///< the interface cannot be opened
inline constexpr std::int32_t kCanNetworkError = 1015;
inline constexpr std::int32_t kNoAnswer = 2000;
inline constexpr std::int32_t kNegativeAnswer = 2001;
inline constexpr std::int32_t kAnswerTooShort = 2002;
inline constexpr std::int32_t kForeignAnswer = 2003;  ///< an answer to another request
inline constexpr std::int32_t kUnknownName = 2010;
inline constexpr std::int32_t kReadOnly = 2011;
inline constexpr std::int32_t kValueRefused = 2012;
inline constexpr std::int32_t kNoEcuFile = 2020;              ///< for the function
inline constexpr std::int32_t kInitialisationRefused = 2042;  ///< or lost
inline constexpr std::int32_t kCommunicationEnded = 2045;     ///< by the ECU
inline constexpr std::int32_t kTesterPresentUnanswered = 2046;

// Access by name.

inline constexpr std::int32_t kCreateObjectFailed = 10010;
inline constexpr std::int32_t kSetProtocolFailed = 10011;
inline constexpr std::int32_t kAccessFailed = 10012;

// The commands.

inline constexpr std::int32_t kScriptError = 11001;
inline constexpr std::int32_t kBadCanFrame = 11001;
inline constexpr std::int32_t kBadString = 11002;
inline constexpr std::int32_t kBadWord = 11003;
inline constexpr std::int32_t kBadReal = 11004;
inline constexpr std::int32_t kBadReal8 = 11005;
inline constexpr std::int32_t kUnknownLun = 12000;
inline constexpr std::int32_t kUnknownDataType = 12001;
inline constexpr std::int32_t kUnknownData = 12003;

}  // namespace korval
