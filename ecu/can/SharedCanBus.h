// SPDX-License-Identifier: MIT
#pragma once

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
    std::function<void(const CanFrame&)> on_frame;
    std::function<void()> on_sent;
    std::function<void(const Trouble&)> on_trouble;
  };

  /// How long after a loss, and after each failed attempt, the bus is opened anew.
  static constexpr std::chrono::milliseconds kReopenInterval{250};

  /// Raises what `open` raises.
  SharedCanBus(const std::shared_ptr<base::EventLoop>& loop, Open open);
  SharedCanBus(const SharedCanBus&) = delete;
  SharedCanBus& operator=(const SharedCanBus&) = delete;

  /// The listener hears the bus as long as its owner holds it.
  void Listen(const std::shared_ptr<const Listener>& listener);
  /// Drops the frame while the bus is lost.
  void Send(const CanFrame& frame);
  /// Why the bus is off or gone; none when it is there.
  const std::optional<Trouble>& Loss() const { return loss_; }

  /// Leaves the bus and opens it in another way. Does not raise: a failure is the trouble.
  void Reopen(Open open);
  /// Leaves the bus for good.
  void Close();

 private:
  void Attach(std::unique_ptr<CanBus> bus);
  void TryToOpen();
  void FrameArrived(const CanFrame& frame);
  void Sent();
  void Failed(CanBus::Error error, const std::string& text);
  void Recovered();
  void Tell(const std::function<void(const Listener&)>& event);

  Open open_;
  std::unique_ptr<CanBus> bus_;
  std::optional<Trouble> loss_;
  std::vector<std::weak_ptr<const Listener>> listeners_;
  std::unique_ptr<base::Timer> reopen_timer_;
};

}  // namespace korval::ecu
