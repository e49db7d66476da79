// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/ByteBuffer.h"
#include "ecu/description/Milliseconds.h"

namespace korval::ecu {

struct SignalDescription {
  enum class Wave { kConstant, kRamp, kSine, kSquare, kNoise };

  std::string item;
  Wave wave = Wave::kConstant;
  std::string value;  ///< of a constant, as text
  double min = 0;
  double max = 0;
  Milliseconds period{1000};
};

/// What goes wrong with one answer on its way over a real line or bus.
enum class WireFault {
  kLate,     ///< it comes after the tester has given up
  kMissing,  ///< it does not come
  kDamaged,  ///< its bytes are not what the ECU sent
  kPending,  ///< "response pending" comes first
  kForeign   ///< another ECU's message comes first
};

struct SimulationDescription {
  struct Dtc {
    std::uint16_t code = 0;
    std::uint8_t status = 0;
  };
  struct Answer {
    base::ByteBuffer request;
    base::ByteBuffer response;  ///< empty: none, the link times out
  };
  struct Fault {
    std::string request;  ///< name of a request; "" for the initialisation
    std::int32_t number = 0;
    std::int32_t times = 1;
    std::optional<WireFault> wire;  ///< a fault of the wire; the number has no meaning then
  };

  Milliseconds latency{0};
  std::size_t dtc_per_answer = 80;
  std::array<std::uint8_t, 2> key_bytes{0xEF, 0x8F};  ///< of the K-line; all header forms, normal times
  std::vector<SignalDescription> signals;
  std::vector<Dtc> dtcs;
  std::vector<Answer> answers;
  std::vector<Fault> faults;
};

}  // namespace korval::ecu
