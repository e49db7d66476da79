// SPDX-License-Identifier: MIT
// The diagnostic services of one ECU over one link, for any number of functions that stand for it: start of
// the communication and of the diagnostic session, requests one at a time, tester present in between.
// Everything moves on by events of the link and of one deadline. Those who want something of the ECU take
// turns, in the order in which they came.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "base/Failure.h"
#include "base/Signal.h"
#include "base/Task.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/link/MessageLink.h"
#include "ecu/service/Dialect.h"
#include "ecu/service/Requester.h"
#include "ecu/service/SilenceClock.h"

namespace korval::ecu {

/// Every operation keeps the channel alive until it ends. When one is dropped in its wait, the exchange that
/// is under way goes on to its end, and whoever asks next waits for that.
class ServiceChannel : public std::enable_shared_from_this<ServiceChannel> {
 public:
  /// Whose times, diagnostic session and name hold for an operation; null: of whoever came last.
  using Asker = std::shared_ptr<const FunctionDescription>;

  /// The dialect outlives it.
  ServiceChannel(std::shared_ptr<base::EventLoop> loop, std::unique_ptr<MessageLink> link,
                 const Dialect& dialect, const FunctionDescription& function,
                 std::shared_ptr<const ErrorTable> errors);
  ~ServiceChannel();
  ServiceChannel(const ServiceChannel&) = delete;
  ServiceChannel& operator=(const ServiceChannel&) = delete;

  bool IsConnected() const { return state_ == State::kConnected && !HasLapsed(); }
  bool IsClosed() const { return closed_; }

  /// Starts the communication and the function's diagnostic session; does nothing when that stands. Raises
  /// the link's failure, 2000, 2042 when the ECU refuses the session, or 1000 when closed meanwhile.
  base::Task<void> Connect(Asker asker = nullptr);
  /// As Connect, but anew.
  base::Task<void> Reconnect(Asker asker = nullptr);

  /// Sends `request` (not empty) once no other exchange is under way, connecting first when need be, and
  /// waits for its answer. Raises 2001 for a negative answer, which is in `answer` too, 2000, 2003, the
  /// link's own failure, 2045 when the ECU ends the communication instead, 2046 once after an unanswered
  /// tester present, or 1000 when closed meanwhile. A request that only reads is repeated before 2000 and
  /// the link's own 2000 and 2003.
  base::Task<void> Request(base::ByteView request, base::ByteBuffer& answer, Asker asker = nullptr);
  /// As Request, but the ECU does not answer this one: ends when it is out.
  base::Task<void> Tell(base::ByteView request, Asker asker = nullptr);

  /// Ends the communication for good: waits that are under way end with Failure 1000.
  void Close();

 private:
  enum class State { kDisconnected, kConnecting, kConnected };

  // A place in the order of those who want something.
  class Turn {
   public:
    explicit Turn(ServiceChannel& channel) : channel_(channel) { channel_.turns_.push_back(this); }
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    bool HasCome() const { return channel_.turns_.front() == this; }

   private:
    ServiceChannel& channel_;
  };

  bool IsServed(const Asker& asker) const { return !asker || asker == asker_; }
  bool IsReady(const Asker& asker) const {
    return turns_.empty() && !requester_.IsBusy() && IsServed(asker) && IsConnected();
  }
  base::Task<void> Take(const Turn& turn);
  void Serve(const Asker& asker);
  base::Task<void> RequireConnection();
  base::Task<void> Perform(base::ByteView request, bool answered, Asker asker,
                           std::shared_ptr<PendingRequest>& performed);
  std::shared_ptr<PendingRequest> Start(base::ByteView request, bool answered,
                                        std::function<void(PendingRequest&)> on_done);
  void Ended(PendingRequest& request);
  std::optional<base::Failure> Outcome(const PendingRequest& request) const;

  void BeginConnect();
  void StartSession();
  void EndConnect(std::optional<base::Failure> failure);
  void GiveUpConnecting();

  void LinkFailed(std::int32_t number, const std::string& detail);
  base::Duration KeepAliveSilence() const;
  void SendTesterPresent();
  bool HasLapsed() const;

  base::TimePoint LatestEnd() const;
  void RequireOpen() const;

  std::shared_ptr<base::EventLoop> loop_;
  std::unique_ptr<MessageLink> link_;
  const Dialect& dialect_;
  Asker asker_;                   // the one who is served; null: the one whom the channel was made for
  FunctionDescription function_;  // the asker's, but for the shortest tester present of all askers
  std::optional<std::uint8_t> open_session_;
  std::shared_ptr<const ErrorTable> errors_;
  Requester requester_;
  SilenceClock silence_;
  State state_ = State::kDisconnected;
  bool closed_ = false;
  std::deque<const Turn*> turns_;
  base::Signal changed_;  // an exchange or a start has ended, a turn is over, the channel was closed
  std::optional<base::Failure> connect_failure_;
  bool tester_present_lost_ = false;
  std::unique_ptr<base::Deadline> start_deadline_;
};

}  // namespace korval::ecu
