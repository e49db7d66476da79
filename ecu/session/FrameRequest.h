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
#include "ecu/session/DataItem.h"

namespace korval::ecu {

/// A cyclic CAN frame as a request that nobody sends: executing it takes the last frame that came in.
class FrameRequest : public viator3::Request {
 public:
  /// A frame that has a cycle and was not heard for this many of them, and for this long, has gone.
  static constexpr int kMissedCycles = 5;
  static constexpr std::chrono::milliseconds kShortestPatience{1000};

  static std::shared_ptr<FrameRequest> Create(MessagingFile::Frame frame, CyclicFrames& frames,
                                              std::shared_ptr<const base::EventLoop> loop,
                                              std::shared_ptr<const ErrorTable> errors);

  const std::string& Name() const override { return frame_.name; }
  /// Raises 2000 when no frame has come in, or none lately.
  void Execute() override;
  const Items& Data() const override { return items_; }
  const Items& Parameters() const override { return no_items_; }

 private:
  FrameRequest(MessagingFile::Frame frame, CyclicFrames& frames, std::shared_ptr<const base::EventLoop> loop,
               std::shared_ptr<const ErrorTable> errors);

  MessagingFile::Frame frame_;
  std::shared_ptr<const base::EventLoop> loop_;
  std::shared_ptr<const ErrorTable> errors_;
  std::shared_ptr<const CyclicFrames::Watch> watch_;
  std::shared_ptr<RequestMessages> messages_ = std::make_shared<RequestMessages>();
  Items items_;
  Items no_items_;
};

}  // namespace korval::ecu
