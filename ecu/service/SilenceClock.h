// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/EventLoop.h"

namespace korval::ecu {

/// Notices when an ECU was not spoken to for some time. An exchange costs it no timer: when its own fires, it
/// looks how long the silence has been.
class SilenceClock {
 public:
  struct Events {
    std::function<bool()> is_wanted;   ///< false: it stops until the next Start
    std::function<bool()> is_talking;  ///< an exchange is under way
    std::function<void()> on_silence;  ///< once: it goes on with the next Start
  };

  SilenceClock(std::shared_ptr<base::EventLoop> loop, Events events);

  /// Notices a silence of that length from now on; 0: none.
  void Start(base::Duration silence);
  void Stop() { timer_.reset(); }
  /// An exchange has ended.
  void Talked() { last_ = loop_->Now(); }

  /// The length of the silence that is noticed.
  base::Duration Length() const { return length_; }
  base::Duration SinceLast() const { return loop_->Now() - last_; }

 private:
  void Look();

  std::shared_ptr<base::EventLoop> loop_;
  Events events_;
  base::Duration length_{};
  base::TimePoint last_{};
  std::unique_ptr<base::Timer> timer_;
};

}  // namespace korval::ecu
