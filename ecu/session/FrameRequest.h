// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "base/EventLoop.h"
#include "diag/viator3.h"
#include "ecu/can/CyclicFrames.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/description/MessagingFile.h"

namespace korval::ecu {

/// A frame of the messaging file and what has come in of it.
struct WatchedFrame {
  /// A frame that has a cycle and was not heard for this many of them, and for this long, has gone.
  static constexpr int kMissedCycles = 5;
  static constexpr std::chrono::milliseconds kShortestPatience{1000};

  /// A frame came in, and another one since then if it is cyclic.
  bool IsThere() const { return watch->Last() && !HasStopped(); }
  bool HasStopped() const;
  /// Empty unless the frame is there.
  base::ByteView Bytes() const { return IsThere() ? watch->Last()->Bytes() : base::ByteView(); }

  MessagingFile::Frame frame;
  std::shared_ptr<const CyclicFrames::Watch> watch;
  std::shared_ptr<base::Signal> changed;
  std::shared_ptr<base::EventLoop> loop;
  std::shared_ptr<const ErrorTable> errors;
};

/// A cyclic CAN frame as a request that nobody sends. Its items have the values of the last frame that came
/// in, whether it is executed or not, and none when the frame is not there.
class FrameRequest : public viator3::Request {
 public:
  /// How long the first frame is waited for when its cycle is unknown; how much later than its cycle it may
  /// be.
  static constexpr std::chrono::milliseconds kUnknownCycle{1000};
  static constexpr std::chrono::milliseconds kJitter{50};

  static std::shared_ptr<FrameRequest> Create(MessagingFile::Frame frame, CyclicFrames& frames,
                                              std::shared_ptr<base::EventLoop> loop,
                                              std::shared_ptr<const ErrorTable> errors);

  const MessagingFile::Frame& Frame() const { return watched_->frame; }
  const std::string& Name() const override { return watched_->frame.name; }
  /// Raises 2000 when no frame has come in, or none lately. Never waits.
  base::Task<void> Execute() override;
  /// Waits for a frame that is not there, for as long as its cycle is. Raises 1000 when the bus is left
  /// meanwhile. The request may be destroyed in the wait.
  base::Task<void> Await();
  const Items& Data() const override { return items_; }
  const Items& Parameters() const override { return no_items_; }

 private:
  explicit FrameRequest(std::shared_ptr<const WatchedFrame> watched) : watched_(std::move(watched)) {}

  std::shared_ptr<const WatchedFrame> watched_;
  Items items_;
  Items no_items_;
};

}  // namespace korval::ecu
