// SPDX-License-Identifier: MIT
#include "ecu/kline/SessionSpeed.h"

#include <array>

namespace korval::ecu {
namespace {

constexpr std::uint8_t kStartDiagnosticSession = 0x10;
constexpr std::uint8_t kStopDiagnosticSession = 0x20;
constexpr std::array<std::int32_t, 6> kNamedSpeeds{0, 9600, 19200, 38400, 57600, 115200};
constexpr std::int32_t kUnit = 200;
constexpr unsigned kMantissaBits = 5;
constexpr unsigned kMantissa = 0x1F;
constexpr std::int32_t kLeadingBit = 32;

}  // namespace

std::optional<std::int32_t> BitsPerSecond(std::uint8_t speed) {
  if (speed == 0) return std::nullopt;
  if (speed < kNamedSpeeds.size()) return kNamedSpeeds.at(speed);
  const auto mantissa = static_cast<std::int32_t>(speed & kMantissa);
  return kUnit * (kLeadingBit + mantissa) * (std::int32_t{1} << (speed >> kMantissaBits));
}

std::int32_t SpeedAfter(base::ByteView request, std::int32_t usual, std::int32_t current) {
  static constexpr std::size_t kSpeedPlace = 2;
  if (request[0] == kStopDiagnosticSession) return usual;
  if (request[0] != kStartDiagnosticSession) return current;
  if (request.size() <= kSpeedPlace) return usual;
  return BitsPerSecond(request[kSpeedPlace]).value_or(usual);
}

}  // namespace korval::ecu
