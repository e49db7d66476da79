// SPDX-License-Identifier: MIT
#include "host/control/ConnectionClock.h"

#include <chrono>
#include <string>

namespace korval::host {
namespace {

constexpr std::chrono::milliseconds kInterval{1000};

std::string TwoDigits(long long number) { return (number < 10 ? "0" : "") + std::to_string(number); }

}  // namespace

ConnectionClock::ConnectionClock(base::EventLoop& loop, StatusView& view)
    : loop_(loop), view_(view), timer_(loop.CreateTimer([this] {
        if (const auto held = owner_.lock()) Tick();
      })) {}

void ConnectionClock::Start() {
  start_ = loop_.Now();
  Tick();
}

void ConnectionClock::Stop() {
  timer_->Stop();
  view_.ShowPanel("ConnectTime", "");
}

void ConnectionClock::Tick() {
  static constexpr long long kDay = 24LL * 3600LL;
  const long long elapsed =
      std::chrono::duration_cast<std::chrono::seconds>(loop_.Now() - start_).count() % kDay;
  view_.ShowPanel("ConnectTime", TwoDigits(elapsed / 3600) + ":" + TwoDigits(elapsed / 60 % 60) + ":" +
                                     TwoDigits(elapsed % 60) + " ");
  timer_->Start(kInterval);
}

}  // namespace korval::host
