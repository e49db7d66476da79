// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ecu/can/CanBus.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::tests {

/// A CAN bus in model time. A frame takes as long as its bits without stuff bits, 3 bits of gap included;
/// then its sender is told and every other node has it.
class ModelCanBus {
 public:
  explicit ModelCanBus(std::shared_ptr<ManualEventLoop> loop, std::int32_t bitrate = 500000)
      : loop_(std::move(loop)), bitrate_(bitrate) {}

  /// A node. Raises Failure while the adapter is unplugged.
  std::unique_ptr<ecu::CanBus> Open();
  base::Duration TimeOf(const ecu::CanFrame& frame) const;

  /// A frame of a node that is not there, at once.
  void Inject(const ecu::CanFrame& frame);
  void InjectHex(std::uint32_t identifier, const std::string& hex);

  /// All nodes hear of it. Frames under way are lost.
  void RaiseError(ecu::CanBus::Error error);
  void RaiseRecovered();
  /// Every opened node is unplugged and no other can be opened until Plug.
  void Unplug();
  void Plug() { plugged_ = true; }
  /// Frames are neither confirmed nor delivered.
  void SetSilent(bool silent) { silent_ = silent; }
  /// Nodes are still connecting, or bus off as they were opened, until RaiseRecovered.
  void SetNotReady() { ready_ = false; }
  /// Every node takes so many frames that are not on the bus yet, has no room for more, and confirms a frame
  /// when it takes it, as a network interface of Linux does.
  void SetQueue(std::size_t frames) { room_ = frames; }
  /// The next so many frames of any node are confirmed, but lost.
  void LoseNext(int frames) { to_lose_ = frames; }
  /// What passes the bus may be changed; false: it is lost.
  std::function<bool(ecu::CanFrame&)> filter;

  /// Frames of the nodes as "7E0#021080", in their order.
  std::vector<std::string> log;
  std::vector<base::TimePoint> times;  ///< when each of them was complete
  int opened = 0;                      ///< nodes ever opened

 private:
  class Node;
  struct Queued {
    Node* sender;
    ecu::CanFrame frame;
  };

  bool Enqueue(Node& sender, const ecu::CanFrame& frame);
  void Transmit();
  void Complete();
  void Deliver(const ecu::CanFrame& frame, const Node* sender);

  std::shared_ptr<ManualEventLoop> loop_;
  std::int32_t bitrate_;
  std::vector<Node*> nodes_;
  std::deque<Queued> queue_;
  std::unique_ptr<base::Timer> timer_ = loop_->CreateTimer([this] { Complete(); });
  bool plugged_ = true;
  bool silent_ = false;
  bool ready_ = true;
  std::optional<std::size_t> room_;
  int to_lose_ = 0;
};

/// "7E0#021080", an extended identifier with 8 digits.
std::string FrameText(const ecu::CanFrame& frame);

}  // namespace korval::tests
