// SPDX-License-Identifier: MIT
#include "ecu/kline/HeaderChoice.h"

namespace korval::ecu {

std::optional<HeaderForm> FixedHeader(KLineDescription::Header fixed) {
  using Header = KLineDescription::Header;
  switch (fixed) {
    case Header::kFormat:
      return HeaderForm{false, false};
    case Header::kFormatLength:
      return HeaderForm{false, true};
    case Header::kAddresses:
      return HeaderForm{true, false};
    case Header::kAddressesLength:
      return HeaderForm{true, true};
    case Header::kAutomatic:
      break;
  }
  return std::nullopt;
}

std::optional<HeaderForm> ChooseHeader(KLineDescription::Header fixed, const KeyBytes& key_bytes,
                                       std::size_t message_length) {
  const auto form = FixedHeader(fixed);
  if (!form) return key_bytes.FormFor(message_length);
  const std::size_t longest = form->length_byte ? kLongestKLineMessage : kLongestLengthInFormat;
  return message_length <= longest ? form : std::nullopt;
}

}  // namespace korval::ecu
