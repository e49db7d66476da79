// SPDX-License-Identifier: MIT
#include "platform/process/StopSignals.h"

#include <array>
#include <csignal>
#include <system_error>

#include <sys/socket.h>
#include <unistd.h>

namespace korval::platform {
namespace {

// A signal handler may do little more than write to a descriptor.
std::array<int, 2> signal_pair = {-1, -1};

void OnSignal(int) {
  const char byte = 1;
  [[maybe_unused]] const auto written = ::write(signal_pair[0], &byte, 1);
}

void SetHandler(void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
}

}  // namespace

StopSignals::StopSignals(const std::function<void()>& on_stop) {
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signal_pair.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "no descriptors left for the stop signals");
  }
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
