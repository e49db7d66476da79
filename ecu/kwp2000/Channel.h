// SPDX-License-Identifier: MIT
// The diagnostic services of one ECU over one link, for any number of functions that stand for it: start of
// the communication and of the diagnostic session, requests one at a time, tester present in between.
// Everything moves on by events of the link and of one deadline, so that waits can nest: whoever waits in an
// inner event loop does not hold up what an outer one waits for.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "base/Failure.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/link/MessageLink.h"
#include "ecu/service/Exchange.h"

namespace korval::ecu {

/// Waits of its operations run the event loop. Every operation keeps the channel alive until it returns. One
/// whose errand is called off raises Failure at once; the exchange that is under way goes on to its end, and
/// whoever asks next waits for that.
class Channel : public std::enable_shared_from_this<Channel> {
 public:
  /// Whose times, diagnostic session and name hold for an operation; null: of whoever came last.
  using Asker = std::shared_ptr<const FunctionDescription>;

  Channel(std::shared_ptr<base::EventLoop> loop, std::unique_ptr<MessageLink> link,
          const FunctionDescription& function, std::shared_ptr<const ErrorTable> errors);
  ~Channel();
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  bool IsConnected() const { return state_ == State::kConnected && !HasLapsed(); }
  bool IsClosed() const { return closed_; }

  /// Starts the communication and the function's diagnostic session; does nothing when that stands. Raises
  /// the link's failure, 2000, 2042 when the ECU refuses the session, or 1000 when closed meanwhile.
  void Connect(const Asker& asker = nullptr);
  /// As Connect, but anew.
  void Reconnect(const Asker& asker = nullptr);

  /// Sends `request` (not empty) once no other exchange is under way, connecting first when need be, and
  /// waits for its answer. Raises 2001 for a negative answer, which is in `answer` too, 2000, 2003, the
  /// link's own failure, 2045 when the ECU ends the communication instead, 2046 once after an unanswered
  /// tester present, or 1000 when closed meanwhile. A request that only reads is repeated before 2000 and
  /// the link's own 2000 and 2003.
  void Request(base::ByteView request, base::ByteBuffer& answer, const Asker& asker = nullptr);
  /// As Request, but the ECU does not answer this one: returns when it is out.
  void Tell(base::ByteView request, const Asker& asker = nullptr);

  /// Ends the communication for good: waits that are under way end with Failure 1000.
  void Close();

 private:
  enum class State { kDisconnected, kConnecting, kConnected };
  struct Pending {
    base::ByteBuffer request;
    Exchange exchange;
    std::function<void(Pending&)> on_done;  // none for an exchange that somebody waits for
    std::optional<base::Failure> failure;   // of the link
    bool done = false;
  };

  bool IsServed(const Asker& asker) const { return !asker || asker == asker_; }
  void Serve(const Asker& asker);
  void RequireConnection();
  std::shared_ptr<Pending> Perform(base::ByteView request, bool answered, const Asker& asker);
  std::shared_ptr<Pending> Start(base::ByteView request, bool answered,
                                 std::function<void(Pending&)> on_done);
  void Transmit(const std::shared_ptr<Pending>& pending);
  void Settle();
  void Finish();
  std::optional<base::Failure> Outcome(const Pending& pending) const;

  void BeginConnect();
  void StartSession();
  void EndConnect(std::optional<base::Failure> failure);
  void GiveUpConnecting();

  void LinkFailed(std::int32_t number, const std::string& detail);
  void DeadlinePassed();
  base::Duration KeepAliveSilence() const;
  void StartKeepAlive();
  void KeepAlive();
  bool HasLapsed() const;

  base::TimePoint LatestEnd() const;
  bool Await(const std::function<bool()>& done);
  void WaitUntil(const std::function<bool()>& done);
  void RequireOpen() const;

  std::shared_ptr<base::EventLoop> loop_;
  std::unique_ptr<MessageLink> link_;
  Asker asker_;                   // the one who is served; null: the one whom the channel was made for
  FunctionDescription function_;  // the asker's, but for the shortest tester present of all askers
  std::optional<std::uint8_t> open_session_;
  std::shared_ptr<const ErrorTable> errors_;
  State state_ = State::kDisconnected;
  bool closed_ = false;
  std::shared_ptr<Pending> current_;
  std::optional<base::Failure> connect_failure_;
  bool tester_present_lost_ = false;
  base::TimePoint last_exchange_{};  // its end
  base::Duration keep_alive_{};      // tester present after this much silence
  std::unique_ptr<base::Deadline> answer_deadline_;
  std::unique_ptr<base::Timer> keep_alive_timer_;
};

}  // namespace korval::ecu
