// SPDX-License-Identifier: MIT
#include "ecu/service/ServiceChannel.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "base/ErrorNumbers.h"
#include "ecu/service/ExchangeFailure.h"

namespace korval::ecu {
namespace {

// A 5-baud initialisation with the longest times there are, and the silence in front of it.
constexpr std::chrono::minutes kConnectWait{6};

ExchangeTiming TimingOf(const Timing& timing, const LinkOffer& offer, int repeats) {
  return {offer.answer.value_or(timing.Value(&Timing::p2)) + offer.latency,
          offer.pending.value_or(timing.Value(&Timing::p2_star)) + offer.latency,
          timing.Value(&Timing::pending_cap) + offer.latency,
          timing.Value(&Timing::busy_repeat),
          timing.Value(&Timing::busy_cap),
          repeats};
}

// After these nothing is known of the ECU's state: it has to be initialised anew.
bool IsLinkLost(std::int32_t number) {
  static constexpr std::array kNumbers{
      kLinkLost,           kInterfaceRefused,       kCanNetworkError, kNoAnswer, kInitialisationRefused,
      kCommunicationEnded, kTesterPresentUnanswered};
  return std::find(kNumbers.begin(), kNumbers.end(), number) != kNumbers.end();
}

// A damaged answer, or none.
bool IsOfTheAnswer(std::int32_t number) { return number == kNoAnswer || number == kForeignAnswer; }

// 0 is never.
Milliseconds ShorterSilence(Milliseconds one, Milliseconds other) {
  if (one.count() == 0 || other.count() == 0) return std::max(one, other);
  return std::min(one, other);
}

}  // namespace

ServiceChannel::ServiceChannel(std::shared_ptr<base::EventLoop> loop, std::unique_ptr<MessageLink> link,
                               const Dialect& dialect, const FunctionDescription& function,
                               std::shared_ptr<const ErrorTable> errors)
    : loop_(std::move(loop)),
      link_(std::move(link)),
      dialect_(dialect),
      function_(function),
      errors_(std::move(errors)),
      requester_(loop_, *link_, errors_, [this](PendingRequest& request) { Ended(request); }),
      silence_(loop_, {[this] { return IsConnected(); }, [this] { return requester_.IsBusy(); },
                       [this] { SendTesterPresent(); }}),
      changed_(loop_) {
  link_->SetEvents({[this] { StartSession(); },
                    [this](base::ByteView message) { requester_.MessageArrived(message); },
                    [this] { requester_.Sent(); },
                    [this](std::int32_t number, const std::string& detail) { LinkFailed(number, detail); },
                    [this](base::TimePoint until) { requester_.LinkBusy(until); },
                    [this](std::optional<base::TimePoint> until) { requester_.Receiving(until); }});
}

ServiceChannel::~ServiceChannel() { link_->Close(); }

ServiceChannel::Turn::~Turn() {
  std::deque<const Turn*>& turns = channel_.turns_;
  if (turns.front() == this) {
    turns.pop_front();
  } else {
    std::erase(turns, this);
  }
  channel_.changed_.Raise();
}

base::Task<void> ServiceChannel::Connect(Asker asker) {
  const auto self = shared_from_this();
  RequireOpen();
  if (IsServed(asker) && IsConnected()) co_return;
  const Turn turn(*this);
  co_await Take(turn);
  Serve(asker);
  co_await RequireConnection();
}

// What somebody who has gone began goes on to its end.
base::Task<void> ServiceChannel::Take(const Turn& turn) {
  while (!turn.HasCome() || requester_.IsBusy() || state_ == State::kConnecting) {
    co_await changed_.Next();
    RequireOpen();
  }
}

// Each function has its own times and its own diagnostic session; what the one before began is done by then.
void ServiceChannel::Serve(const Asker& asker) {
  if (IsServed(asker)) return;
  const Milliseconds keep_alive = ShorterSilence(function_.keep_alive, asker->keep_alive);
  asker_ = asker;
  function_ = *asker;
  function_.keep_alive = keep_alive;
  const bool has_other_session = function_.session && function_.session != open_session_;
  if (has_other_session && state_ == State::kConnected) state_ = State::kDisconnected;
}

base::Task<void> ServiceChannel::RequireConnection() {
  if (IsConnected()) co_return;
  BeginConnect();
  while (state_ == State::kConnecting) {
    co_await changed_.Next();
    RequireOpen();
  }
  RequireOpen();
  if (state_ != State::kConnected) {
    throw base::Failure(connect_failure_ ? *connect_failure_
                                         : errors_->MakeFailure(kInitialisationRefused, function_.ecu));
  }
}

base::Task<void> ServiceChannel::Reconnect(Asker asker) {
  const auto self = shared_from_this();
  RequireOpen();
  const Turn turn(*this);
  co_await Take(turn);
  Serve(asker);
  state_ = State::kDisconnected;
  co_await RequireConnection();
}

base::Task<void> ServiceChannel::Request(base::ByteView request, base::ByteBuffer& answer, Asker asker) {
  const auto self = shared_from_this();
  std::shared_ptr<PendingRequest> pending;
  co_await Perform(request, dialect_.IsAnswered(request), std::move(asker), pending);
  const auto failure = Outcome(*pending);
  if (pending->exchange.CurrentState() != Exchange::State::kForeign) {
    std::swap(answer, pending->exchange.Answer());
  }
  if (failure) throw base::Failure(*failure);
}

base::Task<void> ServiceChannel::Tell(base::ByteView request, Asker asker) {
  const auto self = shared_from_this();
  std::shared_ptr<PendingRequest> pending;
  co_await Perform(request, false, std::move(asker), pending);
  if (const auto failure = Outcome(*pending)) throw base::Failure(*failure);
}

base::Task<void> ServiceChannel::Perform(base::ByteView request, bool answered, Asker asker,
                                         std::shared_ptr<PendingRequest>& performed) {
  if (std::exchange(tester_present_lost_, false)) {
    throw errors_->MakeFailure(kTesterPresentUnanswered, function_.ecu);
  }
  RequireOpen();
  const bool is_ready = IsReady(asker);
  const Turn turn(*this);
  if (!is_ready) {
    do {  // tester present may go out in between
      co_await Take(turn);
      Serve(asker);
      co_await RequireConnection();
    } while (requester_.IsBusy());
  }
  performed = Start(request, answered, nullptr);
  while (!performed->done) {
    co_await changed_.Next();
    RequireOpen();
  }
  RequireOpen();
}

void ServiceChannel::Close() {
  if (closed_) return;
  closed_ = true;
  requester_.Drop();
  state_ = State::kDisconnected;
  silence_.Stop();
  start_deadline_.reset();
  link_->Close();
  changed_.Raise();
}

std::shared_ptr<PendingRequest> ServiceChannel::Start(base::ByteView request, bool answered,
                                                      std::function<void(PendingRequest&)> on_done) {
  const LinkOffer offer = link_->Offer();
  const int repeats = dialect_.IsReading(request) ? function_.repeats.value_or(offer.usual_repeats) : 0;
  Exchange exchange(request, dialect_, TimingOf(function_.timing, offer, repeats), loop_->Now());
  if (!answered) exchange.AwaitNoAnswer();
  return requester_.Start({base::ByteBuffer(request), std::move(exchange), std::move(on_done)});
}

void ServiceChannel::Ended(PendingRequest& request) {
  silence_.Talked();
  const auto failure = Outcome(request);
  const bool has_ended =
      failure ? IsLinkLost(failure->Number()) : dialect_.EndsCommunication(request.exchange.Service());
  if (has_ended && state_ == State::kConnected) state_ = State::kDisconnected;
  // The silence that the ECU bears changes with what it agrees to.
  if (state_ == State::kConnected && silence_.Length() != KeepAliveSilence()) {
    silence_.Start(KeepAliveSilence());
  }
  if (request.on_done) request.on_done(request);
  changed_.Raise();
}

std::optional<base::Failure> ServiceChannel::Outcome(const PendingRequest& pending) const {
  return pending.failure ? pending.failure : FailureOf(pending.exchange, function_.ecu, *errors_);
}

void ServiceChannel::BeginConnect() {
  state_ = State::kConnecting;
  open_session_.reset();
  connect_failure_.reset();
  tester_present_lost_ = false;
  if (!start_deadline_) start_deadline_ = loop_->CreateDeadline([this] { GiveUpConnecting(); });
  start_deadline_->Set(LatestEnd());
  link_->Connect();
}

void ServiceChannel::StartSession() {
  if (state_ != State::kConnecting) return;
  if (!function_.session) return EndConnect(std::nullopt);
  const base::ByteBuffer request =
      dialect_.StartOfSession(*function_.session, function_.KLine().session_baud);
  Start(request.View(), true, [this](PendingRequest& pending) {
    auto failure = Outcome(pending);
    if (failure && failure->Number() == kNegativeAnswer) {
      failure = errors_->MakeFailure(kInitialisationRefused, failure->Description());
    }
    EndConnect(std::move(failure));
  });
}

void ServiceChannel::EndConnect(std::optional<base::Failure> failure) {
  connect_failure_ = std::move(failure);
  state_ = connect_failure_ ? State::kDisconnected : State::kConnected;
  if (start_deadline_) start_deadline_->Clear();
  changed_.Raise();
  if (connect_failure_) return;
  open_session_ = function_.session;
  silence_.Talked();
  silence_.Start(KeepAliveSilence());
}

void ServiceChannel::GiveUpConnecting() {
  requester_.Drop();
  link_->Close();
  EndConnect(errors_->MakeFailure(kNoAnswer, function_.ecu + " does not come to an end of its start"));
}

void ServiceChannel::LinkFailed(std::int32_t number, const std::string& detail) {
  base::Failure failure = errors_->MakeFailure(number, detail);
  const bool of_the_answer = IsOfTheAnswer(number) && link_->Stands();
  if (requester_.IsBusy()) {
    requester_.LinkFailed(std::move(failure), of_the_answer);
  } else if (state_ == State::kConnecting) {
    EndConnect(std::move(failure));
  } else if (IsLinkLost(number) && !of_the_answer) {
    state_ = State::kDisconnected;
  }
}

// P3max has gone by since the last exchange.
bool ServiceChannel::HasLapsed() const {
  const base::Duration longest = link_->Offer().longest_silence;
  if (requester_.IsBusy() || longest == base::Duration::max()) return false;
  return silence_.SinceLast() > longest;
}

// Well before the ECU has waited long enough.
base::Duration ServiceChannel::KeepAliveSilence() const {
  return std::min<base::Duration>(function_.keep_alive, link_->Offer().longest_silence / 2);
}

void ServiceChannel::SendTesterPresent() {
  silence_.Start(KeepAliveSilence());
  Start(dialect_.TesterPresent().View(), true, [this](PendingRequest& pending) {
    // Any answer shows that the ECU is there, and what is wrong with the link the next request will say.
    const auto failure = Outcome(pending);
    tester_present_lost_ = failure && failure->Number() == kNoAnswer;
  });
}

// Every start of the communication ends by its own deadlines, well within this one.
base::TimePoint ServiceChannel::LatestEnd() const {
  return loop_->Now() + 2 * (function_.timing.Value(&Timing::pending_cap) + link_->Offer().latency) +
         kConnectWait;
}

void ServiceChannel::RequireOpen() const {
  if (closed_) throw errors_->MakeFailure(kLinkLost, "communication with " + function_.ecu + " was ended");
}

}  // namespace korval::ecu
