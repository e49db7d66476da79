// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "base/Failure.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/link/MessageLink.h"
#include "ecu/service/Exchange.h"

namespace korval::ecu {

/// A request on a link and what becomes of it.
struct PendingRequest {
  base::ByteBuffer request;
  Exchange exchange;
  std::function<void(PendingRequest&)> on_done;  ///< none for one that somebody waits for
  std::optional<base::Failure> failure = {};     ///< of the link
  bool done = false;
};

/// Carries one exchange at a time over a link that stands: sends the request, once more where it has to be,
/// and ends it by an answer, by a failure of the link, or by its deadline.
class Requester {
 public:
  /// The link outlives it. `on_end` is told of every exchange that has ended.
  Requester(std::shared_ptr<base::EventLoop> loop, MessageLink& link,
            std::shared_ptr<const ErrorTable> errors, std::function<void(PendingRequest&)> on_end);

  /// None is under way.
  std::shared_ptr<PendingRequest> Start(PendingRequest request);
  bool IsBusy() const { return current_ != nullptr; }
  /// Forgets what is under way: nobody is told.
  void Drop();

  /// Events of the link. What nobody asked for is ignored.
  void MessageArrived(base::ByteView message);
  void Sent();
  void LinkBusy(base::TimePoint until);
  void Receiving(std::optional<base::TimePoint> until);
  /// Ends the exchange that is under way, or sends its request once more where only its answer is damaged or
  /// missing.
  void LinkFailed(base::Failure failure, bool of_the_answer);

 private:
  void Transmit(const std::shared_ptr<PendingRequest>& pending);
  void Settle();
  void Finish();
  void DeadlinePassed();

  std::shared_ptr<base::EventLoop> loop_;
  MessageLink& link_;
  std::shared_ptr<const ErrorTable> errors_;
  std::function<void(PendingRequest&)> on_end_;
  std::shared_ptr<PendingRequest> current_;
  std::unique_ptr<base::Deadline> deadline_;
};

}  // namespace korval::ecu
