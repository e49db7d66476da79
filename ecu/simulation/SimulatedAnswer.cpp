// SPDX-License-Identifier: MIT
#include "ecu/simulation/SimulatedAnswer.h"

#include <algorithm>

#include "ecu/description/ItemEncoding.h"
#include "ecu/link/AnswerBytes.h"
#include "ecu/simulation/SignalValue.h"

namespace korval::ecu {
namespace {

// Services 22, 2E and 2F name their data in two bytes, the others in one.
std::size_t IdentifierLength(std::uint8_t service) {
  return service == 0x22 || service == 0x2E || service == 0x2F ? 2 : 1;
}

std::size_t LengthOf(const RequestDescription& request) {
  std::size_t length = request.min_bytes;
  for (const ItemDescription& item : request.Received()) length = std::max(length, item.BytesNeeded());
  return length;
}

}  // namespace

base::ByteView SimulatedAnswer::At(base::Duration time, const SimulatedValues& values) {
  if (prepared_for_ != values.HoldCount()) Prepare(values);
  for (const MovingItem& moving : moving_) {
    EncodeClamped(*moving.item, SignalValue(*moving.signal, time), bytes_);
  }
  return bytes_.View();
}

void SimulatedAnswer::Prepare(const SimulatedValues& values) {
  prepared_for_ = values.HoldCount();
  const std::uint8_t service = request_.sent.At(0);
  const std::size_t repeated = std::min(IdentifierLength(service), request_.sent.Length() - 1);
  bytes_.Clear();
  bytes_.SetLength(std::max(LengthOf(request_), 1 + repeated));
  moving_.clear();
  for (const ItemDescription& item : request_.Received()) {
    if (const SignalDescription* signal = values.MovingSignal(item)) {
      moving_.push_back({&item, signal});
    } else {
      values.Put(item, bytes_);
    }
  }
  // Last, so that no item can spoil them.
  bytes_.SetAt(0, static_cast<std::uint8_t>(service + kPositiveOffset));
  for (std::size_t i = 1; i <= repeated; ++i) bytes_.SetAt(i, request_.sent.At(i));
}

}  // namespace korval::ecu
