// SPDX-License-Identifier: MIT
#include "ecu/simulation/IsoTpEcu.h"

#include <array>
#include <utility>

#include "ecu/link/AnswerBytes.h"

namespace korval::ecu {
namespace {

constexpr std::uint8_t kTypeOfPdu = 0xF0;
constexpr std::uint8_t kSingleFrame = 0x00;
constexpr std::uint8_t kConsecutiveFrame = 0x20;
// Makes a single frame longer than it is and a consecutive frame one that is not due.
constexpr std::uint8_t kDamage = 0x08;

}  // namespace

IsoTpEcu::IsoTpEcu(const std::shared_ptr<base::EventLoop>& loop, std::shared_ptr<SimulatedEcu> ecu,
                   const IsoTpParameters& parameters, SendFrame send)
    : loop_(loop),
      ecu_(std::move(ecu)),
      send_(std::move(send)),
      endpoint_(loop, parameters, EndpointEvents()),
      latency_timer_(loop->CreateTimer([this] { SendAnswer(); })) {}

IsoTpEndpoint::Events IsoTpEcu::EndpointEvents() {
  IsoTpEndpoint::Events events;
  events.send_frame = [this](const CanFrame& frame) { SendFrameOfAnswer(frame); };
  events.on_message = [this](base::ByteView request) { RequestArrived(request); };
  events.on_error = [](const IsoTpError&) {};  // an ECU drops what it does not get
  events.on_busy = [](base::TimePoint) {};
  return events;
}

void IsoTpEcu::SendFrameOfAnswer(CanFrame frame) {
  std::uint8_t& control = frame.data[endpoint_.Parameters().transmit_target ? 1 : 0];
  const int type = control & kTypeOfPdu;
  if (damage_ && (type == kSingleFrame || type == kConsecutiveFrame)) {
    control ^= kDamage;
    damage_ = false;
  }
  send_(frame);
}

void IsoTpEcu::SendForeignFrame() {
  CanIdentifier neighbour = endpoint_.Parameters().transmit;
  neighbour.number ^= 1;
  send_(CanFrame(neighbour, std::array<std::uint8_t, 4>{0x03, 0x7F, 0x00, 0x10}));
}

// A request that fails inside the ECU is one that it does not answer.
void IsoTpEcu::RequestArrived(base::ByteView request) {
  latency_timer_->Stop();
  const auto fault = ecu_->TakeWireFault(request);
  const SimulatedEcu::Reaction reaction = ecu_->React(request, loop_->Now());
  if (reaction.fault || reaction.answer.empty() || fault == WireFault::kMissing) return;
  answer_ = base::ByteBuffer(reaction.answer);
  damage_ = fault == WireFault::kDamaged;
  if (fault == WireFault::kForeign) SendForeignFrame();
  if (fault == WireFault::kPending) {
    endpoint_.Send(std::array{kNegativeResponse, request[0], kResponsePending});
  }
  const Milliseconds delay = DelayOf(fault);
  if (delay.count() == 0) return SendAnswer();
  latency_timer_->Start(delay);
}

Milliseconds IsoTpEcu::DelayOf(std::optional<WireFault> fault) const {
  if (fault == WireFault::kLate) return ecu_->Latency() + kLate;
  return fault == WireFault::kPending ? ecu_->Latency() + kPending : ecu_->Latency();
}

void IsoTpEcu::SendAnswer() { endpoint_.Send(answer_.View()); }

}  // namespace korval::ecu
