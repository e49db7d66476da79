// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "base/Signal.h"
#include "ecu/can/CanFrame.h"

namespace korval::ecu {

/// The last frame of each identifier that somebody watches; the others cost a look-up.
class CyclicFrames {
 public:
  /// Which frames of one identifier are meant, by their bytes. Empty: all.
  using Selector = std::function<bool(base::ByteView)>;

  /// What came in last.
  class Watch {
   public:
    explicit Watch(Selector selector) : selector_(std::move(selector)) {}
    /// None before the first frame, and after Forget.
    const std::optional<CanFrame>& Last() const { return last_; }
    base::TimePoint Arrival() const { return arrival_; }
    /// How often the bus was left so far.
    unsigned TimesLeft() const { return times_left_; }

   private:
    friend class CyclicFrames;
    bool Selects(const CanFrame& frame) const { return !selector_ || selector_(frame.Bytes()); }
    Selector selector_;
    std::optional<CanFrame> last_;
    base::TimePoint arrival_{};
    unsigned times_left_ = 0;
  };

  explicit CyclicFrames(std::shared_ptr<base::EventLoop> loop)
      : changed_(std::make_shared<base::Signal>(std::move(loop))) {}

  /// A watched frame came in, or the bus was left.
  const std::shared_ptr<base::Signal>& Changed() const { return changed_; }
  /// Watches for as long as somebody holds the result, which begins with what another watch of the identifier
  /// has seen.
  std::shared_ptr<const Watch> Add(CanIdentifier identifier, Selector selector);
  void FrameArrived(const CanFrame& frame, base::TimePoint now);
  /// The bus was left: what it said does not hold any more.
  void Forget();

 private:
  std::map<CanIdentifier, std::vector<std::weak_ptr<Watch>>> watches_;
  std::shared_ptr<base::Signal> changed_;
};

}  // namespace korval::ecu
