// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
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

/// One opened bus and everybody who uses it. Frames that the adapter has no room for wait here, in their
/// order: an interface of Linux takes ten of them. A bus that was lost is opened anew, again and again, until
/// it is back or closed.
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
    /// None of its frames waits for room in the adapter any more: they are taken, or forgotten with the bus.
    std::function<void()> on_taken = [] {};
    /// A full queue is the trouble of the listener whose frame was dropped.
    std::function<void(const Trouble&)> on_trouble = [](const Trouble&) {};
    /// The bus has become ready.
    std::function<void()> on_ready = [] {};
    /// How long its frames wait while the adapter takes none (N_As of ISO 15765-2, whose limit this is).
    std::chrono::microseconds patience = kPatience;
  };

  static constexpr std::chrono::milliseconds kPatience{1000};
  /// A queue of ten frames is not empty before 1.1 ms have passed, even at 1 Mbit/s.
  static constexpr std::chrono::milliseconds kRetryInterval{1};
  static constexpr char kStayedFull[] =
      "the transmit queue of the CAN interface stayed full (check wiring, bit rate and that another node "
      "acknowledges, and who fills the bus)";
  /// Frames that wait at most: more than one command can bring.
  static constexpr std::size_t kMostWaiting = 8192;
  /// How long after a loss, and after each failed attempt, the bus is opened anew.
  static constexpr std::chrono::milliseconds kReopenInterval{250};

  /// Raises what `open` raises.
  SharedCanBus(const std::shared_ptr<base::EventLoop>& loop, Open open);
  SharedCanBus(const SharedCanBus&) = delete;
  SharedCanBus& operator=(const SharedCanBus&) = delete;

  /// The listener hears the bus as long as its owner holds it.
  void Listen(const std::shared_ptr<const Listener>& listener);
  /// Sends in the name of `sender`, which may be null. Drops the frame while the bus is lost.
  void Send(const CanFrame& frame, const std::shared_ptr<const Listener>& sender);
  /// Whether frames of `sender` wait for room in the adapter.
  bool IsWaiting(const std::shared_ptr<const Listener>& sender) const;
  /// Drops the frames of `sender` that wait, and says whether there were some.
  bool Withdraw(const std::shared_ptr<const Listener>& sender);
  /// Why the bus is off or gone; none when it is there or connecting for the first time.
  const std::optional<Trouble>& Loss() const { return loss_; }
  bool IsReady() const { return !loss_ && bus_->IsReady(); }

  /// Leaves the bus and opens it in another way. Does not raise: a failure is the trouble.
  void Reopen(Open open);
  /// Leaves the bus for good.
  void Close();

 private:
  struct Waiting {
    CanFrame frame;
    std::weak_ptr<const Listener> sender;
    std::chrono::microseconds patience;
    base::TimePoint since;
  };

  void Attach(std::unique_ptr<CanBus> bus);
  void TryToOpen();
  void FrameArrived(const CanFrame& frame);
  bool HandOver(const CanFrame& frame, const std::weak_ptr<const Listener>& sender);
  void Wait(const CanFrame& frame, const std::shared_ptr<const Listener>& sender);
  void Retry();
  void DropOverdue();
  void ForgetFrames();
  void Sent();
  void Confirm();
  void FrameDropped(const Trouble& trouble);
  void Failed(CanBus::Error error, const std::string& text);
  void Recovered();
  void Tell(const std::function<void(const Listener&)>& event);

  std::shared_ptr<base::EventLoop> loop_;
  Open open_;
  std::unique_ptr<CanBus> bus_;
  bool was_ready_ = false;
  bool unplugged_ = false;  // the bus is one of the past, what still comes from it does not count
  std::optional<Trouble> loss_;
  std::vector<std::weak_ptr<const Listener>> listeners_;
  std::deque<std::weak_ptr<const Listener>> unconfirmed_;  // who sent the frames that are not on the bus yet
  std::deque<Waiting> waiting_;                            // for room in the adapter
  base::TimePoint last_taken_{};
  bool handing_over_ = false;
  std::size_t early_ = 0;  // confirmations that came from inside a hand-over
  std::unique_ptr<base::Timer> retry_timer_;
  std::unique_ptr<base::Timer> reopen_timer_;
};

}  // namespace korval::ecu
