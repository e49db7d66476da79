// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/kline/KLineWire.h"

namespace korval::ecu {

/// How somebody wants the adapter to be while it talks.
struct KLineSettings {
  std::int32_t baud;
  std::optional<bool> rts = {};  ///< none: as it is
  std::optional<bool> dtr = {};
};

/// The ECUs on one line, by their addresses, whose communication was stopped in order and not started since.
using StoppedEcus = std::set<std::uint8_t>;

/// Somebody who talks on a K-line.
class KLineUser {
 public:
  virtual ~KLineUser() = default;
  /// The line is yours until you release it.
  virtual void Granted() = 0;
  virtual void BytesArrived(base::ByteView bytes) = 0;
  /// The adapter is gone; the line is no longer yours, nor do you wait for it.
  virtual void Lost(const std::string& why) = 0;
};

/// One opened K-line, which one user at a time talks on. It owns those who wait for it or have it. An adapter
/// that was lost is opened anew when somebody wants to talk.
class SharedKLine : public std::enable_shared_from_this<SharedKLine> {
 public:
  /// Raises what opening the wire raises. `stopped` is what is known of the line from before.
  SharedKLine(std::shared_ptr<base::EventLoop> loop, std::unique_ptr<KLineWire> wire,
              std::shared_ptr<StoppedEcus> stopped);
  ~SharedKLine() { Close(); }
  SharedKLine(const SharedKLine&) = delete;
  SharedKLine& operator=(const SharedKLine&) = delete;

  /// The user hears of a loss as long as somebody owns it.
  void Join(const std::weak_ptr<KLineUser>& user) { users_.push_back(user); }
  /// Grants the line, from inside the call when it is free.
  void Claim(const std::shared_ptr<KLineUser>& user);
  /// The user's turn is over, or it no longer waits for one. The line was last busy at `quiet_since`.
  void Release(const KLineUser* user, base::TimePoint quiet_since);
  bool IsFree() const { return !owner_; }
  /// Told, from inside the operation that frees it, when the line has become free.
  void SetOnFree(std::function<void()> on_free) { on_free_ = std::move(on_free); }
  /// When the line was last busy.
  base::TimePoint QuietSince() const { return quiet_since_; }

  /// Opens the line when it was lost: raises what that raises.
  void RequireOpen();
  /// For the owner. As RequireOpen, with these settings. False: the adapter has no lines that could be set.
  bool Prepare(const KLineSettings& settings);
  /// For the owner, in the middle of its turn.
  void SetSpeed(std::int32_t baud);
  void SetRts(bool on);
  /// False: this line cannot be pulled low.
  bool SetBreak(bool low) { return wire_->SetBreak(low); }
  bool HoldsBreak() const { return wire_->HoldsBreak(); }
  void Write(base::ByteView bytes) { wire_->Write(bytes); }

  void NoteStopped(std::uint8_t address) { stopped_->insert(address); }
  /// Whether the ECU was stopped in order; it holds until it is asked for.
  bool TakeStopped(std::uint8_t address) { return stopped_->erase(address) != 0; }

  /// Leaves the line for good and forgets its users.
  void Close();

 private:
  void GrantNext();
  void Free();
  void BytesArrived(base::ByteView bytes);
  void Lost(const std::string& why);

  std::shared_ptr<base::EventLoop> loop_;
  std::unique_ptr<KLineWire> wire_;
  std::shared_ptr<StoppedEcus> stopped_;
  std::int32_t baud_ = 0;    // 0: not open
  std::optional<bool> rts_;  // as they were set
  std::optional<bool> dtr_;
  bool closed_ = false;
  std::function<void()> on_free_;
  base::TimePoint quiet_since_;
  std::vector<std::weak_ptr<KLineUser>> users_;
  std::shared_ptr<KLineUser> owner_;
  std::deque<std::shared_ptr<KLineUser>> waiting_;
};

}  // namespace korval::ecu
