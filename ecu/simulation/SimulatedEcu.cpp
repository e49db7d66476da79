// SPDX-License-Identifier: MIT
#include "ecu/simulation/SimulatedEcu.h"

#include <algorithm>
#include <array>
#include <functional>
#include <set>
#include <string_view>
#include <utility>

#include "ecu/description/ItemEncoding.h"
#include "ecu/kwp2000/Services.h"
#include "ecu/link/AnswerBytes.h"
#include "ecu/simulation/SignalValue.h"

namespace korval::ecu {
namespace {

constexpr std::uint8_t kStartSession = 0x10;
constexpr std::uint8_t kStopSession = 0x20;
constexpr std::uint8_t kClearDtcs = 0x14;
constexpr std::uint8_t kReadDtcStatus = 0x17;
constexpr std::uint8_t kReadDtcsByStatus = 0x18;
constexpr std::uint8_t kTesterPresent = 0x3E;
constexpr std::array<std::uint8_t, 10> kServices{
    kStartSession, kClearDtcs, kReadDtcStatus, kReadDtcsByStatus, 0x1A, kStopSession,
    0x21,          0x30,       0x3B,           kTesterPresent};

constexpr std::uint8_t kServiceNotSupported = 0x11;
constexpr std::uint8_t kRequestOutOfRange = 0x31;

std::string KeyOf(base::ByteView bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// What recognises a request: its length, and the bytes in front of its first Sent item.
std::string KeyOf(base::ByteView fixed, std::size_t length) {
  std::string key = KeyOf(fixed);
  for (int byte = 0; byte < 4; ++byte) key += static_cast<char>(length >> (8 * byte));
  return key;
}

std::size_t FixedLength(const RequestDescription& request) {
  std::size_t length = request.sent.Length();
  for (const ItemDescription& item : request.sent_items) length = std::min(length, item.FirstByte());
  return length == 0 ? request.sent.Length() : length;
}

bool IsAboutDtcs(std::uint8_t service) {
  return service == kClearDtcs || service == kReadDtcStatus || service == kReadDtcsByStatus;
}

}  // namespace

SimulatedEcu::SimulatedEcu(std::shared_ptr<const EcuDescription> description, base::TimePoint now)
    : description_(std::move(description)),
      simulation_(description_->Simulation()),
      start_(now),
      values_(simulation_),
      dtcs_(simulation_.dtcs, simulation_.dtc_per_answer) {
  for (const auto& fault : simulation_.faults) faults_[fault.request].push_back(fault);
  for (const auto& answer : simulation_.answers) {
    fixed_answers_.emplace(KeyOf(answer.request.View()), answer.response.View());
  }
  IndexRequests();
}

void SimulatedEcu::IndexRequests() {
  std::set<std::size_t, std::greater<>> lengths;
  for (const RequestDescription& request : description_->Requests()) {
    if (request.sent.Empty()) continue;
    const base::ByteView key = request.sent.View(0, FixedLength(request));
    requests_.emplace(KeyOf(key, request.sent.Length()), &request);  // the first in the file keeps its bytes
    lengths.insert(key.size());
    described_services_[request.sent.At(0)] = true;
  }
  key_lengths_.assign(lengths.begin(), lengths.end());
}

std::optional<std::int32_t> SimulatedEcu::TakeInitFault() {
  const auto* fault = TakeFault({}, false);
  return fault == nullptr ? std::nullopt : std::optional(fault->number);
}

std::optional<WireFault> SimulatedEcu::TakeWireFault(base::ByteView request) {
  if (faults_.empty()) return std::nullopt;
  const RequestDescription* described = FindRequest(request);
  if (!request.empty() && described == nullptr) return std::nullopt;
  const auto* fault = TakeFault(described == nullptr ? std::string() : described->name, true);
  return fault == nullptr ? std::nullopt : fault->wire;
}

SimulationDescription::Fault* SimulatedEcu::TakeFault(const std::string& request, bool of_the_wire) {
  const auto found = faults_.find(request);
  if (found == faults_.end()) return nullptr;
  for (auto& fault : found->second) {
    if (fault.times == 0 || fault.wire.has_value() != of_the_wire) continue;
    --fault.times;
    return &fault;
  }
  return nullptr;
}

SimulatedEcu::Reaction SimulatedEcu::React(base::ByteView request, base::TimePoint now) {
  const RequestDescription* described = FindRequest(request);
  if (described != nullptr && !faults_.empty()) {
    if (const auto* fault = TakeFault(described->name, false)) return {fault->number, {}};
  }
  return {std::nullopt, AnswerTo(request, described, now)};
}

void SimulatedEcu::Fill(const std::vector<ItemDescription>& items, base::TimePoint now,
                        base::ByteBuffer& message) const {
  for (const ItemDescription& item : items) {
    if (const SignalDescription* signal = values_.MovingSignal(item)) {
      EncodeClamped(item, SignalValue(*signal, now - start_), message);
    } else {
      values_.Put(item, message);
    }
  }
}

const RequestDescription* SimulatedEcu::FindRequest(base::ByteView request) const {
  for (const std::size_t length : key_lengths_) {
    if (length > request.size()) continue;
    const auto found = requests_.find(KeyOf(request.first(length), request.size()));
    if (found != requests_.end()) return found->second;
  }
  return nullptr;
}

base::ByteView SimulatedEcu::AnswerTo(base::ByteView request, const RequestDescription* described,
                                      base::TimePoint now) {
  const std::uint8_t service = request[0];
  if (!fixed_answers_.empty()) {
    const auto fixed = fixed_answers_.find(KeyOf(request));
    if (fixed != fixed_answers_.end()) return fixed->second;
  }
  if (!IsAnswered(request)) return {};
  if (IsAboutDtcs(service)) return TroubleCodes(request);
  if (described != nullptr) {
    values_.Hold(described->sent_items, request);
    if (described->no_answer) return {};
    return answers_.try_emplace(described, *described).first->second.At(now - start_, values_);
  }
  const bool starts_session = service == kStartSession && (request.size() == 2 || request.size() == 3);
  if (starts_session) return Acknowledge(request, request.size() - 1);
  if (service == kStopSession && request.size() == 1) return Acknowledge(request, 0);
  if (service == kTesterPresent && request.size() <= 2) return Acknowledge(request, 0);
  return Refuse(service, Knows(service) ? kRequestOutOfRange : kServiceNotSupported);
}

// The group of codes stands in the last two bytes: FF00 all of them, FFFF the rest of what was asked before.
base::ByteView SimulatedEcu::TroubleCodes(base::ByteView request) {
  const std::size_t expected = request[0] == kReadDtcsByStatus ? 4 : 3;
  const bool all =
      request.size() == expected && request[expected - 2] == 0xFF && request[expected - 1] == 0x00;
  const bool rest =
      request.size() == expected && request[expected - 2] == 0xFF && request[expected - 1] == 0xFF;
  if (request[0] == kClearDtcs && all) {
    dtcs_.Clear();
    return Acknowledge(request, 2);
  }
  if (request[0] == kClearDtcs || (!all && !rest)) return Refuse(request[0], kRequestOutOfRange);
  Acknowledge(request, 0);
  dtcs_.AppendRecords(rest, answer_);
  return answer_.View();
}

base::ByteView SimulatedEcu::Acknowledge(base::ByteView request, std::size_t repeated) {
  answer_ = base::ByteBuffer(request.first(1 + repeated));
  answer_.SetAt(0, static_cast<std::uint8_t>(request[0] + kPositiveOffset));
  return answer_.View();
}

base::ByteView SimulatedEcu::Refuse(std::uint8_t service, std::uint8_t code) {
  answer_ = {kNegativeResponse, service, code};
  return answer_.View();
}

bool SimulatedEcu::Knows(std::uint8_t service) const {
  return described_services_[service] ||
         std::find(kServices.begin(), kServices.end(), service) != kServices.end();
}

}  // namespace korval::ecu
