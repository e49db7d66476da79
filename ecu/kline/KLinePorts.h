// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "base/EventLoop.h"
#include "ecu/kline/KLineWire.h"
#include "ecu/kline/SharedKLine.h"

namespace korval::ecu {

/// The K-lines that are in use, by their ports. A device can be opened only once, and a session may begin
/// while the one before still takes its leave of the ECUs: then both are on the same line.
class KLinePorts : public std::enable_shared_from_this<KLinePorts> {
 public:
  using OpenWire = std::function<std::unique_ptr<KLineWire>()>;

  /// The line on `port`, opened by `open` unless it is in use. It is closed when the last one to whom it was
  /// given lets go of it; links on it hold its shared_from_this(), which does not keep it open. Raises what
  /// opening raises.
  std::shared_ptr<SharedKLine> Open(const std::shared_ptr<base::EventLoop>& loop, const std::string& port,
                                    const OpenWire& open);
  /// Keeps a line open, for a second at most, until what ends the communications on it has gone out.
  void TakeLeave(const std::shared_ptr<base::EventLoop>& loop, std::shared_ptr<SharedKLine> line);
  /// Whether leave is still being taken of a line.
  bool IsTakingLeave() const { return !leaving_.empty(); }

 private:
  struct Leaving {
    std::shared_ptr<SharedKLine> line;
    std::unique_ptr<base::Deadline> limit;
  };

  std::map<const SharedKLine*, Leaving> leaving_;
  std::map<std::string, std::weak_ptr<SharedKLine>> lines_;
  std::map<std::string, std::shared_ptr<StoppedEcus>> stopped_;  // outlives the lines
};

}  // namespace korval::ecu
