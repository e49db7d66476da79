// SPDX-License-Identifier: MIT
#include "apps/asap3/TroubleCodes.h"

#include <cmath>
#include <variant>

#include "base/ByteBuffer.h"
#include "client/ClientErrors.h"

namespace korval::apps {
namespace {

/// The extended get of a special name that answers a whole number.
std::uint16_t Fetch(client::Asap3Client& client, std::uint16_t lun, const std::string& name,
                    std::uint16_t highest) {
  const client::ExtendedAnswer answer = client.ExtendedGet(lun, name);
  const auto* const number = std::get_if<client::Parameter<float>>(&answer);
  const bool is_valid = number != nullptr && number->value >= 0 &&
                        number->value <= static_cast<float>(highest) &&
                        number->value == std::trunc(number->value);
  if (!is_valid) throw client::LinkError("The server's answer to '" + name + "' is no number that fits");
  return static_cast<std::uint16_t>(number->value);
}

}  // namespace

std::vector<TroubleCode> ReadTroubleCodes(client::Asap3Client& client, std::uint16_t lun) {
  std::vector<TroubleCode> codes(Fetch(client, lun, "readdtc", 0xFF));
  for (TroubleCode& code : codes) {
    code.code = Fetch(client, lun, "dtccode", 0xFFFF);
    code.status = static_cast<std::uint8_t>(Fetch(client, lun, "dtcstatus", 0xFF));
    // Behind the last record the cursor has nowhere to go.
    if (&code != &codes.back()) Fetch(client, lun, "nextdtc", 0xFF);
  }
  return codes;
}

std::string CodeText(std::uint16_t code) {
  const char system = "PCBU"[code >> 14];
  const auto rest = static_cast<std::uint16_t>(code & 0x3FFF);
  const base::ByteBuffer digits{static_cast<std::uint8_t>(rest >> 8), static_cast<std::uint8_t>(rest)};
  return system + digits.ToHex();
}

}  // namespace korval::apps
