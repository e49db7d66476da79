// SPDX-License-Identifier: MIT
#include "ecu/kline/LineAgreement.h"

#include <chrono>

#include "ecu/kline/HeaderChoice.h"
#include "ecu/kline/SessionSpeed.h"

namespace korval::ecu {
namespace {

constexpr std::uint8_t kAccessTiming = 0x83;
constexpr std::uint8_t kTimesToDefault = 0x01;
constexpr std::uint8_t kTimesToGiven = 0x03;
constexpr std::size_t kBitsPerByte = 10;  // with start and stop bit

}  // namespace

LineAgreement::LineAgreement(const FunctionDescription& function)
    : function_(function),
      timing_(KLineTiming::Of(function.timing, key_bytes_)),
      baud_(function.KLine().baud) {}

void LineAgreement::Announced(const KeyBytes& key_bytes) {
  key_bytes_ = key_bytes;
  timing_ = KLineTiming::Of(function_.timing, key_bytes_);
  baud_ = function_.KLine().baud;
}

void LineAgreement::Granted(base::ByteView request) {
  baud_ = SpeedAfter(request, function_.KLine().baud, baud_);
  if (request[0] != kAccessTiming || request.size() < 2) return;
  if (request[1] == kTimesToDefault) timing_ = KLineTiming::Of(function_.timing, key_bytes_);
  if (request[1] == kTimesToGiven) timing_.Change(request.subspan(2));
}

std::optional<HeaderForm> LineAgreement::FormFor(std::size_t message_length) const {
  return ChooseHeader(function_.KLine().header, key_bytes_, message_length);
}

base::Duration LineAgreement::ByteTime() const {
  return std::chrono::ceil<std::chrono::microseconds>(
      std::chrono::duration<double>(static_cast<double>(kBitsPerByte) / baud_));
}

}  // namespace korval::ecu
