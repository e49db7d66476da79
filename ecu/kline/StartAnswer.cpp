// SPDX-License-Identifier: MIT
#include "ecu/kline/StartAnswer.h"

#include <array>
#include <cstddef>

#include "ecu/link/AnswerBytes.h"

namespace korval::ecu {

StartAnswer StartAnswer::Of(base::ByteView answer, const ServiceNames& names) {
  static constexpr std::size_t kLength = 3;
  if (IsNegativeTo(kStartCommunication, answer)) {
    return {std::nullopt, names.RefusalText(kStartCommunication, answer[2])};
  }
  if (answer.size() < kLength) return {std::nullopt, "an answer without key bytes"};
  return Of(answer[1], answer[2]);
}

StartAnswer StartAnswer::Of(std::uint8_t first_key_byte, std::uint8_t second_key_byte) {
  const std::string text = "key bytes " + base::HexText(std::array{first_key_byte, second_key_byte});
  const auto key_bytes = KeyBytes::Read(first_key_byte, second_key_byte);
  if (!key_bytes) return {std::nullopt, text + " are not those of ISO 14230"};
  if (key_bytes->HasRightParity()) return {key_bytes, ""};
  return {key_bytes, text + " have a wrong parity, which is overlooked"};
}

}  // namespace korval::ecu
