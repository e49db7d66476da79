// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/EventLoop.h"
#include "ecu/can/CanBus.h"
#include "ecu/can/CanFrame.h"

namespace korval::ecu {

/// One opened bus and everybody who uses it. A bus that was lost is opened anew, again and again, until it is
/// back or closed.
class SharedCanBus {
 public:
  using Open = std::function<std::unique_ptr<CanBus>()>;

  struct Trouble {
    CanBus::Error error;
    std::string text;
  };
  struct Listener {
    std::function<void(const CanFrame&)> on_frame = [](const CanFrame&) {};
    /// Every frame that this listener sent so far is on the bus.
    std::function<void()> on_sent = [] {};
    /// A full queue is the trouble of the listener whose frame was dropped.
    std::function<void(const Trouble&)> on_trouble = [](const Trouble&) {};
    /// The bus has become ready.
    std::function<void()> on_ready = [] {};
  };

  /// How long after a loss, and after each failed attempt, the bus is opened anew.
  static constexpr std::chrono::milliseconds kReopenInterval{250};

  /// Raises what `open` raises.
  SharedCanBus(const std::shared_ptr<base::EventLoop>& loop, Open open);
  SharedCanBus(const SharedCanBus&) = delete;
  SharedCanBus& operator=(const SharedCanBus&) = delete;

  /// The listener hears the bus as long as its owner holds it.
  void Listen(const std::shared_ptr<const Listener>& listener);
  /// Sends in the name of `sender`. Drops the frame while the bus is lost.
  void Send(const CanFrame& frame, const std::shared_ptr<const Listener>& sender);
  /// Why the bus is off or gone; none when it is there or connecting for the first time.
  const std::optional<Trouble>& Loss() const { return loss_; }
  bool IsReady() const { return !loss_ && bus_->IsReady(); }

  /// Leaves the bus and opens it in another way. Does not raise: a failure is the trouble.
  void Reopen(Open open);
  /// Leaves the bus for good.
  void Close();

 private:
  void Attach(std::unique_ptr<CanBus> bus);
  void TryToOpen();
  void FrameArrived(const CanFrame& frame);
  void Sent();
  void FrameDropped(const Trouble& trouble);
  void Failed(CanBus::Error error, const std::string& text);
  void Recovered();
  void Tell(const std::function<void(const Listener&)>& event);

  Open open_;
  std::unique_ptr<CanBus> bus_;
  bool unplugged_ = false;  // the bus is one of the past, what still comes from it does not count
  std::optional<Trouble> loss_;
  std::vector<std::weak_ptr<const Listener>> listeners_;
  std::deque<std::weak_ptr<const Listener>> unconfirmed_;  // who sent the frames that are not on the bus yet
  std::unique_ptr<base::Timer> reopen_timer_;
};

}  // namespace korval::ecu
