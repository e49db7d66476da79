// SPDX-License-Identifier: MIT
#include "ecu/simulation/SimulatedLink.h"

#include <utility>

#include "base/ErrorNumbers.h"

namespace korval::ecu {
namespace {

constexpr char kNotDescribed[] =
    "its ECU file has no Simulation element, so nobody answers for it on port SIM; add one (an empty "
    "<Simulation/> answers zeros), or choose the port of a real interface";

}  // namespace

SimulatedLink::SimulatedLink(std::shared_ptr<base::EventLoop> loop, std::shared_ptr<SimulatedEcu> ecu)
    : loop_(std::move(loop)), ecu_(std::move(ecu)) {}

LinkOffer SimulatedLink::Offer() const {
  LinkOffer offer;
  offer.latency = ecu_->Latency();
  return offer;
}

void SimulatedLink::Connect() {
  if (!ecu_->IsDescribed()) return events_.on_failure(kNoAnswer, kNotDescribed);
  if (const auto fault = ecu_->TakeInitFault()) return events_.on_failure(*fault, "");
  events_.on_connected();
}

void SimulatedLink::Send(base::ByteView message) {
  const SimulatedEcu::Reaction reaction = ecu_->React(message, loop_->Now());
  if (!reaction.fault && reaction.answer.empty()) return events_.on_sent();
  if (ecu_->Latency().count() == 0) {
    if (reaction.fault) return events_.on_failure(*reaction.fault, "");
    return events_.on_message(reaction.answer);
  }
  Deliver([this, fault = reaction.fault, answer = base::ByteBuffer(reaction.answer)] {
    if (fault) return events_.on_failure(*fault, "");
    events_.on_message(answer.View());
  });
}

void SimulatedLink::Close() { timer_.reset(); }

void SimulatedLink::Deliver(std::function<void()> event) {
  timer_ = loop_->CreateTimer(std::move(event));
  timer_->Start(ecu_->Latency());
}

}  // namespace korval::ecu
