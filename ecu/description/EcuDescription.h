// SPDX-License-Identifier: MIT
// The ECU file as this library reads it; docs/ecu-file.md is its reference. Loading reads the Function
// element alone; requests, reference data and simulation are read when they are first asked for, because
// a file may hold tens of thousands of items and be selected for a few of them. What cannot be used (an
// item without a name, a bit range that does not exist) is left out.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/XmlFile.h"
#include "ecu/description/ItemDescription.h"
#include "ecu/description/KLineDescription.h"
#include "ecu/description/RequestDescription.h"
#include "ecu/description/Timing.h"
#include "ecu/description/TransportDescription.h"

namespace korval::ecu {

struct FunctionDescription {
  enum class Init { kFast, kSlow, kNone };

  std::string name;
  std::string ecu;                   ///< the name shown to people
  std::string protocol = "KWP2000";  ///< KWP2000, DiagOnCAN, CAN, or another that is only shown
  std::uint8_t address = 0x10;
  std::uint8_t tester = 0xF1;
  Init init = Init::kFast;
  std::uint8_t init_address = 0x10;  ///< of the 5-baud initialisation
  KLineDescription kline;
  std::int32_t baud = 10400;
  TransportDescription transport;
  std::optional<std::uint8_t> session;  ///< diagnostic mode opened after the start
  Milliseconds keep_alive{2000};        ///< tester present after this much silence, 0: never
  std::optional<std::int32_t> repeats;  ///< of a reading request; none: as the link has it
  Timing timing;
};

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

/// One ECU file. Immutable to the outside.
class EcuDescription {
 public:
  /// Raises Failure 2020 when the file names no function.
  static std::shared_ptr<const EcuDescription> Load(base::XmlDocument document);

  explicit EcuDescription(base::XmlDocument document);

  const FunctionDescription& Function() const { return function_; }
  const std::vector<RequestDescription>& Requests() const;
  const std::vector<std::string>& ReferenceData() const;
  /// Whether the file says anything about the simulated ECU; without it, nothing answers on port SIM.
  bool HasSimulation() const;
  const SimulationDescription& Simulation() const;

 private:
  base::XmlDocument document_;
  FunctionDescription function_;
  mutable std::optional<std::vector<RequestDescription>> requests_;
  mutable std::optional<std::vector<std::string>> reference_data_;
  mutable std::optional<SimulationDescription> simulation_;
};

}  // namespace korval::ecu
