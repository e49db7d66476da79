// SPDX-License-Identifier: MIT
#include "ecu/kline/SharedKLine.h"

#include <algorithm>
#include <utility>

#include "base/Failure.h"

namespace korval::ecu {
namespace {

// Until the first ECU says otherwise.
constexpr std::int32_t kUsualBaud = 10400;

}  // namespace

SharedKLine::SharedKLine(std::shared_ptr<base::EventLoop> loop, std::unique_ptr<KLineWire> wire,
                         std::shared_ptr<StoppedEcus> stopped)
    : loop_(std::move(loop)),
      wire_(std::move(wire)),
      stopped_(std::move(stopped)),
      quiet_since_(loop_->Now()) {
  wire_->SetEvents(
      {[this](base::ByteView bytes) { BytesArrived(bytes); }, [this](const std::string& why) { Lost(why); }});
  RequireOpen();
}

void SharedKLine::RequireOpen() {
  if (baud_ == 0) SetSpeed(kUsualBaud);
}

bool SharedKLine::Prepare(const KLineSettings& settings) {
  SetSpeed(settings.baud);
  const bool has_rts = !settings.rts || settings.rts == rts_;
  const bool has_dtr = !settings.dtr || settings.dtr == dtr_;
  if (has_rts && has_dtr) return true;
  if (!wire_->SetModemLines(settings.rts, settings.dtr)) return false;
  if (settings.rts) rts_ = settings.rts;
  if (settings.dtr) dtr_ = settings.dtr;
  return true;
}

void SharedKLine::SetRts(bool on) {
  if (wire_->SetModemLines(on, std::nullopt)) rts_ = on;
}

void SharedKLine::SetSpeed(std::int32_t baud) {
  if (closed_) throw base::Failure("the line was closed");
  if (baud == baud_) return;
  if (baud_ == 0) rts_ = dtr_ = std::nullopt;  // opening sets them
  baud_ = 0;                                   // a wire that refuses is closed
  wire_->Open(baud);
  baud_ = baud;
}

void SharedKLine::Claim(const std::shared_ptr<KLineUser>& user) {
  if (owner_ == user) return user->Granted();
  if (std::find(waiting_.begin(), waiting_.end(), user) == waiting_.end()) waiting_.push_back(user);
  GrantNext();
}

void SharedKLine::Release(const KLineUser* user, base::TimePoint quiet_since) {
  std::erase_if(waiting_, [user](const auto& other) { return other.get() == user; });
  if (owner_.get() != user) return;
  quiet_since_ = std::max(quiet_since_, quiet_since);
  const auto former = std::exchange(owner_, nullptr);  // may live no longer than this
  GrantNext();
}

void SharedKLine::GrantNext() {
  if (owner_) return;
  if (waiting_.empty()) return Free();
  owner_ = std::move(waiting_.front());
  waiting_.pop_front();
  const auto granted = owner_;
  granted->Granted();
}

void SharedKLine::Free() {
  if (const std::function<void()> on_free = on_free_) on_free();
}

void SharedKLine::BytesArrived(base::ByteView bytes) {
  quiet_since_ = loop_->Now();
  if (const auto owner = owner_) owner->BytesArrived(bytes);
}

void SharedKLine::Lost(const std::string& why) {
  stopped_->clear();
  baud_ = 0;
  waiting_.clear();
  const auto former = std::exchange(owner_, nullptr);
  std::erase_if(users_, [](const auto& user) { return user.expired(); });
  const auto users = users_;
  for (const auto& weak : users) {
    if (const auto user = weak.lock()) user->Lost(why);
  }
  Free();
}

void SharedKLine::Close() {
  closed_ = true;
  baud_ = 0;
  waiting_.clear();
  if (const auto former = std::exchange(owner_, nullptr)) former->Lost("the line was closed");
  wire_->SetEvents({[](base::ByteView) {}, [](const std::string&) {}});
  wire_->Close();
}

}  // namespace korval::ecu
