// SPDX-License-Identifier: MIT
#include "ecu/kwp2000/Services.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace korval::ecu {
namespace {

constexpr std::uint8_t kTesterPresent = 0x3E;
constexpr std::uint8_t kNoResponseRequired = 0x02;

// Those of ISO 15031-5 below 10, then those of ISO 14230-3 and ISO 14229-1.
constexpr std::array<std::uint8_t, 21> kReadingServices{0x01, 0x02, 0x03, 0x05, 0x06, 0x07, 0x09,
                                                        0x0A, 0x12, 0x13, 0x17, 0x18, 0x19, 0x1A,
                                                        0x21, 0x22, 0x23, 0x24, 0x33, 0x3A, kTesterPresent};

// The rest of the trouble codes, from where the last answer ended: asked for once more it is another part.
bool GoesOnWithTroubleCodes(base::ByteView request) {
  const std::uint8_t service = request[0];
  const bool of_trouble_codes = service == 0x13 || service == 0x17 || service == 0x18;
  return of_trouble_codes && request.size() >= 3 && request[request.size() - 2] == 0xFF &&
         request.back() == 0xFF;
}

}  // namespace

std::size_t RepeatedBytes(std::uint8_t service) {
  switch (service) {
    case 0x21:  // local identifier
    case 0x30:
    case 0x3B:
      return 1;
    case 0x22:  // common identifier
    case 0x2E:
    case 0x2F:
      return 2;
    default:
      return 0;
  }
}

bool IsReading(base::ByteView request) {
  return std::find(kReadingServices.begin(), kReadingServices.end(), request[0]) != kReadingServices.end() &&
         !GoesOnWithTroubleCodes(request);
}

bool IsAnswered(base::ByteView request) {
  return request.size() != 2 || request[0] != kTesterPresent || request[1] != kNoResponseRequired;
}

}  // namespace korval::ecu
