// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/EventLoop.h"
#include "ecu/link/MessageLink.h"
#include "ecu/simulation/SimulatedEcu.h"

namespace korval::ecu {

/// A link to a simulated ECU. An answer comes after the ECU's latency, or at once, from inside Send, when it
/// has none. The ECU keeps what was written to it over links that come and go.
class SimulatedLink : public MessageLink {
 public:
  SimulatedLink(std::shared_ptr<base::EventLoop> loop, std::shared_ptr<SimulatedEcu> ecu);

  void SetEvents(Events events) override { events_ = std::move(events); }
  void Connect() override;
  void Send(base::ByteView message) override;
  void Close() override;
  LinkOffer Offer() const override;

 private:
  void Deliver(std::function<void()> event);

  std::shared_ptr<base::EventLoop> loop_;
  std::shared_ptr<SimulatedEcu> ecu_;
  Events events_;
  std::unique_ptr<base::Timer> timer_;
};

}  // namespace korval::ecu
