// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/simulation/DtcMemory.h"
#include "ecu/simulation/SimulatedAnswer.h"
#include "ecu/simulation/SimulatedValues.h"

namespace korval::ecu {

/// The ECU that an ECU file's Simulation element describes. It works on the bytes of requests and answers;
/// time comes from outside. It answers, in this order:
///   a request that has a fixed Answer; services 14, 17 and 18 on its trouble codes; a request of the file,
///   recognised by its bytes up to its first Sent item; services 10 and 3E; what else it knows the service
///   of with 7F ss 31; the rest with 7F ss 11.
class SimulatedEcu {
 public:
  struct Reaction {
    /// The request fails with this number instead.
    std::optional<std::int32_t> fault;
    /// Empty: no answer. Valid until the next request.
    base::ByteView answer;
  };

  SimulatedEcu(std::shared_ptr<const EcuDescription> description, base::TimePoint now);

  /// The number with which the start of the communication fails this time.
  std::optional<std::int32_t> TakeInitFault();
  /// Whether its file describes it: a file may be for real links alone.
  bool IsDescribed() const { return description_->HasSimulation(); }
  /// What goes wrong this time with the answer to `request`, or, when that is empty, with the start of the
  /// communication. A link without a wire has no use for it.
  std::optional<WireFault> TakeWireFault(base::ByteView request);
  /// `request` is not empty.
  Reaction React(base::ByteView request, base::TimePoint now);
  /// Puts what the items stand at into `message`, which is long enough for them.
  void Fill(const std::vector<ItemDescription>& items, base::TimePoint now, base::ByteBuffer& message) const;
  Milliseconds Latency() const { return simulation_.latency; }
  /// What it says of itself when it is initialised on a K-line.
  const std::array<std::uint8_t, 2>& KeyBytes() const { return simulation_.key_bytes; }

 private:
  // Bytes of a request as a key of a table.
  using Key = std::string;

  void IndexRequests();
  const RequestDescription* FindRequest(base::ByteView request) const;
  SimulationDescription::Fault* TakeFault(const std::string& request, bool of_the_wire);
  base::ByteView AnswerTo(base::ByteView request, const RequestDescription* described, base::TimePoint now);
  base::ByteView TroubleCodes(base::ByteView request);
  base::ByteView Acknowledge(base::ByteView request, std::size_t repeated);
  base::ByteView Refuse(std::uint8_t service, std::uint8_t code);
  bool Knows(std::uint8_t service) const;

  std::shared_ptr<const EcuDescription> description_;
  const SimulationDescription& simulation_;
  base::TimePoint start_;
  SimulatedValues values_;
  DtcMemory dtcs_;
  std::unordered_map<std::string, std::vector<SimulationDescription::Fault>> faults_;
  std::unordered_map<Key, base::ByteView> fixed_answers_;
  std::unordered_map<Key, const RequestDescription*> requests_;
  std::vector<std::size_t> key_lengths_;  // of requests_, longest first
  std::unordered_map<const RequestDescription*, SimulatedAnswer> answers_;
  std::vector<bool> described_services_ = std::vector<bool>(256);
  base::ByteBuffer answer_;
};

}  // namespace korval::ecu
