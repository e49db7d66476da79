// SPDX-License-Identifier: MIT
#include "ecu/can/SharedCanBus.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/Failure.h"

namespace korval::ecu {
namespace {

bool IsLoss(CanBus::Error error) {
  return error == CanBus::Error::kBusOff || error == CanBus::Error::kUnplugged;
}

bool IsOf(const std::weak_ptr<const SharedCanBus::Listener>& frame_sender,
          const std::shared_ptr<const SharedCanBus::Listener>& sender) {
  return sender && frame_sender.lock() == sender;
}

}  // namespace

SharedCanBus::SharedCanBus(const std::shared_ptr<base::EventLoop>& loop, Open open)
    : loop_(loop),
      open_(std::move(open)),
      retry_timer_(loop->CreateTimer([this] { Retry(); })),
      reopen_timer_(loop->CreateTimer([this] { TryToOpen(); })) {
  Attach(open_());
}

void SharedCanBus::Listen(const std::shared_ptr<const Listener>& listener) {
  std::erase_if(listeners_, [](const auto& weak) { return weak.expired(); });
  listeners_.push_back(listener);
}

void SharedCanBus::Send(const CanFrame& frame, const std::shared_ptr<const Listener>& sender) {
  if (loss_) return;
  if (!waiting_.empty() || !HandOver(frame, sender)) Wait(frame, sender);
}

// A confirmation from inside is put off: it may bring the next frame.
bool SharedCanBus::HandOver(const CanFrame& frame, const std::weak_ptr<const Listener>& sender) {
  handing_over_ = true;
  const bool taken = bus_->Send(frame);
  handing_over_ = false;
  if (!taken) return false;
  last_taken_ = loop_->Now();
  unconfirmed_.push_back(sender);
  while (early_ > 0) {
    --early_;
    Confirm();
  }
  return true;
}

void SharedCanBus::Wait(const CanFrame& frame, const std::shared_ptr<const Listener>& sender) {
  if (waiting_.size() >= kMostWaiting) {
    if (sender) {
      sender->on_trouble(
          {CanBus::Error::kQueueFull, std::to_string(kMostWaiting) + " frames wait already: " + kStayedFull});
    }
    return;
  }
  waiting_.push_back({frame, sender, sender ? sender->patience : kPatience, loop_->Now()});
  if (waiting_.size() == 1) retry_timer_->Start(kRetryInterval);
}

void SharedCanBus::Retry() {
  std::vector<std::weak_ptr<const Listener>> taken;
  while (!waiting_.empty()) {
    const Waiting next = waiting_.front();
    waiting_.pop_front();
    if (HandOver(next.frame, next.sender)) {
      taken.push_back(next.sender);
      continue;
    }
    waiting_.push_front(next);
    break;
  }
  DropOverdue();
  for (const auto& sender : taken) {
    const auto listener = sender.lock();
    if (listener && !IsWaiting(listener)) listener->on_taken();
  }
  if (!waiting_.empty()) retry_timer_->Start(kRetryInterval);
}

// Time counts from the last frame that was taken: behind many others a frame may wait for longer.
void SharedCanBus::DropOverdue() {
  const base::TimePoint now = loop_->Now();
  while (was_ready_ && !waiting_.empty()) {
    const Waiting& first = waiting_.front();
    if (now - std::max(first.since, last_taken_) < first.patience) return;
    const auto sender = first.sender.lock();
    const auto patience = std::chrono::duration_cast<std::chrono::milliseconds>(first.patience);
    const Trouble trouble{
        CanBus::Error::kQueueFull,
        "no frame was taken for " + std::to_string(patience.count()) + " ms (N_As): " + kStayedFull};
    waiting_.pop_front();
    if (sender) sender->on_trouble(trouble);
  }
}

bool SharedCanBus::IsWaiting(const std::shared_ptr<const Listener>& sender) const {
  return std::any_of(waiting_.rbegin(), waiting_.rend(),
                     [&](const Waiting& waiting) { return IsOf(waiting.sender, sender); });
}

bool SharedCanBus::Withdraw(const std::shared_ptr<const Listener>& sender) {
  return std::erase_if(waiting_, [&](const Waiting& waiting) { return IsOf(waiting.sender, sender); }) > 0;
}

void SharedCanBus::ForgetFrames() {
  unconfirmed_.clear();
  retry_timer_->Stop();
  for (const Waiting& forgotten : std::exchange(waiting_, {})) {
    if (const auto listener = forgotten.sender.lock()) listener->on_taken();
  }
}

void SharedCanBus::Reopen(Open open) {
  open_ = std::move(open);
  TryToOpen();
}

void SharedCanBus::Close() {
  reopen_timer_->Stop();
  bus_.reset();
  loss_ = Trouble{CanBus::Error::kUnplugged, "the CAN interface was closed"};
  ForgetFrames();
}

void SharedCanBus::Attach(std::unique_ptr<CanBus> bus) {
  bus_ = std::move(bus);
  unplugged_ = false;
  ForgetFrames();
  was_ready_ = bus_->IsReady();
  bus_->SetEvents({[this](const CanFrame& frame) { FrameArrived(frame); }, [this] { Sent(); },
                   [this](CanBus::Error error, const std::string& text) { Failed(error, text); },
                   [this] { Recovered(); }});
}

void SharedCanBus::TryToOpen() {
  reopen_timer_->Stop();
  bus_.reset();
  try {
    Attach(open_());
  } catch (const base::Failure& failure) {
    return Failed(CanBus::Error::kUnplugged, failure.Description());
  }
  if (bus_->IsReady()) Recovered();
}

void SharedCanBus::FrameArrived(const CanFrame& frame) {
  if (loss_) Recovered();
  Tell([&frame](const Listener& listener) { listener.on_frame(frame); });
}

void SharedCanBus::Sent() {
  if (loss_) Recovered();
  if (handing_over_) {
    ++early_;
  } else {
    Confirm();
  }
}

void SharedCanBus::Confirm() {
  if (unconfirmed_.empty()) return;  // a frame from before a loss
  const auto sender = unconfirmed_.front().lock();
  unconfirmed_.pop_front();
  const auto is_senders = [&sender](const auto& other) { return IsOf(other, sender); };
  const bool is_last = std::none_of(unconfirmed_.begin(), unconfirmed_.end(), is_senders);
  if (sender && is_last && !IsWaiting(sender)) sender->on_sent();
}

void SharedCanBus::FrameDropped(const Trouble& trouble) {
  if (unconfirmed_.empty()) return;
  const auto sender = unconfirmed_.back().lock();
  unconfirmed_.pop_back();
  if (sender) sender->on_trouble(trouble);
}

void SharedCanBus::Failed(CanBus::Error error, const std::string& text) {
  const Trouble trouble{error, text};
  if (error == CanBus::Error::kQueueFull) return FrameDropped(trouble);
  if (IsLoss(error)) {
    unplugged_ = unplugged_ || error == CanBus::Error::kUnplugged;
    ForgetFrames();
    loss_ = trouble;
    reopen_timer_->Start(kReopenInterval);
  }
  Tell([&trouble](const Listener& listener) { listener.on_trouble(trouble); });
}

void SharedCanBus::Recovered() {
  if (unplugged_) return;
  was_ready_ = true;
  loss_.reset();
  reopen_timer_->Stop();
  Tell([](const Listener& listener) { listener.on_ready(); });
}

void SharedCanBus::Tell(const std::function<void(const Listener&)>& event) {
  const auto listeners = listeners_;  // an event may add one
  for (const auto& weak : listeners) {
    if (const auto listener = weak.lock()) event(*listener);
  }
}

}  // namespace korval::ecu
