// SPDX-License-Identifier: MIT
#include "ecu/kline/KLineFrame.h"

#include <numeric>

namespace korval::ecu {
namespace {

constexpr unsigned kPhysicalAddresses = 0x80;
constexpr unsigned kFunctionalAddresses = 0xC0;

unsigned AddressMode(HeaderForm form) {
  if (!form.addresses) return 0;
  return form.functional ? kFunctionalAddresses : kPhysicalAddresses;
}

}  // namespace

base::ByteBuffer BuildFrame(HeaderForm form, std::uint8_t target, std::uint8_t source,
                            base::ByteView message) {
  const auto length = static_cast<std::uint8_t>(message.size());
  base::ByteBuffer frame;
  frame.Append(static_cast<std::uint8_t>(AddressMode(form) | (form.length_byte ? 0U : length)));
  if (form.addresses) {
    frame.Append(target);
    frame.Append(source);
  }
  if (form.length_byte) frame.Append(length);
  frame.Append(message);
  const base::ByteView bytes = frame.View();
  frame.Append(static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0U)));
  return frame;
}

}  // namespace korval::ecu
