// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "base/EventLoop.h"
#include "ecu/can/SharedCanBus.h"
#include "ecu/isotp/IsoTpEndpoint.h"
#include "ecu/link/MessageLink.h"

namespace korval::ecu {

/// The number of ErrorNumbers.h for what is wrong with a bus.
std::int32_t NumberOf(CanBus::Error error);

/// Diagnostics on CAN: the messages of one ECU by ISO 15765-2 on a bus that others use too. There is nothing
/// to initialise: the link is connected when the bus is ready.
class IsoTpLink : public MessageLink {
 public:
  IsoTpLink(const std::shared_ptr<base::EventLoop>& loop, std::shared_ptr<SharedCanBus> bus,
            const IsoTpParameters& parameters);
  IsoTpLink(const IsoTpLink&) = delete;
  IsoTpLink& operator=(const IsoTpLink&) = delete;

  void SetEvents(Events events) override { events_ = std::move(events); }
  void Connect() override;
  void Send(base::ByteView message) override;
  void Rest() override;
  void Close() override;
  LinkOffer Offer() const override;

 private:
  enum class State { kClosed, kConnecting, kConnected };

  IsoTpEndpoint::Events EndpointEvents();
  std::shared_ptr<const SharedCanBus::Listener> MakeListener();
  void BusReady();
  void Stop();
  void Fail(const SharedCanBus::Trouble& trouble);

  std::shared_ptr<SharedCanBus> bus_;
  Events events_;
  IsoTpEndpoint endpoint_;
  std::shared_ptr<const SharedCanBus::Listener> listener_;
  State state_ = State::kClosed;
  bool resting_ = true;
};

}  // namespace korval::ecu
