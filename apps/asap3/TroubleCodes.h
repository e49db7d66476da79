// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "client/Asap3Client.h"

namespace korval::apps {

struct TroubleCode {
  std::uint16_t code;
  std::uint8_t status;
};

/// Has the ECU's diagnostic trouble codes read and fetches them one by one. Raises what the client raises,
/// and LinkError when an answer is no code, status or count.
std::vector<TroubleCode> ReadTroubleCodes(client::Asap3Client& client, std::uint16_t lun);

/// A code as workshops write it (ISO 15031-6): system letter P, C, B or U from the two highest bits, a digit
/// from the next two, three hexadecimal digits. 0x1234 is P1234, 0xC100 is U0100.
std::string CodeText(std::uint16_t code);

}  // namespace korval::apps
