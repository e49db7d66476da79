// SPDX-License-Identifier: MIT
#include "platform/process/StopSignals.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <system_error>

#include <sys/socket.h>
#include <unistd.h>

namespace korval::platform {
namespace {

// Some programs, timeout among them, send each signal twice at once. The second then ends the process only
// where the first has not done so within some seconds.
constexpr std::int64_t kAtOnceMs = 100;
constexpr unsigned kSecondsToEnd = 3;

// A signal handler may do little more than write to a descriptor.
std::array<int, 2> signal_pair = {-1, -1};
std::atomic<std::int64_t> first_signal_ms = 0;
static_assert(std::atomic<std::int64_t>::is_always_lock_free);

std::int64_t Milliseconds() {
  timespec now = {};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

void EndProcess(int signal) {
  std::signal(signal, SIG_DFL);
  ::raise(signal);
}

void OnSignal(int signal) {
  const int error = errno;
  std::int64_t first = 0;
  const std::int64_t now = Milliseconds();
  if (first_signal_ms.compare_exchange_strong(first, now)) {
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signal_pair[0], &byte, 1);
  } else if (signal != SIGHUP) {  // of which a terminal that is closed may bring several
    now - first < kAtOnceMs ? static_cast<void>(::alarm(kSecondsToEnd)) : EndProcess(signal);
  }
  errno = error;
}

bool IsIgnored(int signal) {
  struct sigaction action = {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void SetHandler(void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
  if (!IsIgnored(SIGHUP)) ::sigaction(SIGHUP, &action, nullptr);
}

}  // namespace

StopSignals::StopSignals(const std::function<void()>& on_stop) {
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signal_pair.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "no descriptors left for the stop signals");
  }
  first_signal_ms = 0;
  notifier_ = std::make_unique<QSocketNotifier>(signal_pair[1], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [on_stop] {
    char byte = 0;
    if (::read(signal_pair[1], &byte, 1) == 1) on_stop();
  });
  SetHandler(OnSignal);
}

StopSignals::~StopSignals() {
  SetHandler(SIG_DFL);
  notifier_.reset();
  for (int& descriptor : signal_pair) {
    ::close(descriptor);
    descriptor = -1;
  }
}

}  // namespace korval::platform
