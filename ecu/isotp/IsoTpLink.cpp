// SPDX-License-Identifier: MIT
#include "ecu/isotp/IsoTpLink.h"

#include <utility>

#include "base/ErrorNumbers.h"

namespace korval::ecu {

std::int32_t NumberOf(CanBus::Error error) {
  return error == CanBus::Error::kUnplugged ? kLinkLost : kCanNetworkError;
}

IsoTpLink::IsoTpLink(const std::shared_ptr<base::EventLoop>& loop, std::shared_ptr<SharedCanBus> bus,
                     const IsoTpParameters& parameters)
    : bus_(std::move(bus)), endpoint_(loop, parameters, EndpointEvents()), listener_(MakeListener()) {
  bus_->Listen(listener_);
}

IsoTpEndpoint::Events IsoTpLink::EndpointEvents() {
  IsoTpEndpoint::Events events;
  events.send_frame = [this](const CanFrame& frame) { bus_->Send(frame, listener_); };
  events.on_message = [this](base::ByteView message) { events_.on_message(message); };
  events.on_error = [this](const IsoTpError& error) {
    const bool was_full = bus_->Withdraw(listener_);
    events_.on_failure(NumberOf(error.result),
                       was_full ? error.text + ": " + SharedCanBus::kStayedFull : error.text);
  };
  events.on_busy = [this](base::TimePoint until) { events_.on_busy(until); };
  events.on_sent = [this] { events_.on_sent(); };
  return events;
}

std::shared_ptr<const SharedCanBus::Listener> IsoTpLink::MakeListener() {
  SharedCanBus::Listener listener;
  listener.on_frame = [this](const CanFrame& frame) {
    if (state_ == State::kConnected && !resting_) endpoint_.FrameArrived(frame);
  };
  listener.on_sent = [this] {
    if (state_ == State::kConnected) endpoint_.FramesSent();
  };
  listener.on_trouble = [this](const SharedCanBus::Trouble& trouble) { Fail(trouble); };
  listener.on_ready = [this] { BusReady(); };
  listener.patience = endpoint_.Parameters().n_as;
  return std::make_shared<const SharedCanBus::Listener>(std::move(listener));
}

void IsoTpLink::Connect() {
  Stop();
  state_ = State::kConnecting;
  if (const auto& loss = bus_->Loss()) return Fail(*loss);
  if (bus_->IsReady()) BusReady();
}

void IsoTpLink::BusReady() {
  if (state_ != State::kConnecting) return;
  state_ = State::kConnected;
  events_.on_connected();
}

// What is left of an earlier exchange would fail this one.
void IsoTpLink::Send(base::ByteView message) {
  Stop();
  resting_ = false;
  endpoint_.Send(message);
}

// The answer to another tester has our identifier too, and a flow control from us would break into it.
void IsoTpLink::Rest() {
  resting_ = true;
  Stop();
}

void IsoTpLink::Stop() {
  endpoint_.Stop();
  bus_->Withdraw(listener_);
}

void IsoTpLink::Close() {
  state_ = State::kClosed;
  Stop();
}

LinkOffer IsoTpLink::Offer() const {
  LinkOffer offer;
  offer.longest_message = endpoint_.Parameters().longest_message;
  return offer;
}

void IsoTpLink::Fail(const SharedCanBus::Trouble& trouble) {
  if (state_ == State::kClosed) return;
  if (state_ == State::kConnecting) state_ = State::kClosed;
  Stop();
  events_.on_failure(NumberOf(trouble.error), trouble.text);
}

}  // namespace korval::ecu
