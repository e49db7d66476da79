// SPDX-License-Identifier: MIT
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include <QCoreApplication>

#include "HeadlessServer.h"
#include "RunWithWindow.h"
#include "ServerOptions.h"
#include "platform/process/EventBarrier.h"
#include "platform/process/StandardStreams.h"

namespace {

using korval::apps::ServerOptions;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;
constexpr int kOutputLost = 4;

int Print(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0) return 0;
  const int error = errno;
  if (error != EPIPE)
    std::fprintf(stderr, "korval-asap-server: standard output cannot be written: %s\n", std::strerror(error));
  return kOutputLost;
}

int RunOnConsole(int argc, char** argv, const ServerOptions& options) {
  const korval::platform::GuardedApplication<QCoreApplication> application(argc, argv);
  if (options.help) return Print(korval::apps::ServerHelp());
  if (options.version) return Print("korval-asap-server " KORVAL_VERSION "\n");
  return korval::apps::HeadlessServer(options).Run();
}

int Run(int argc, char** argv) {
  const ServerOptions options =
      korval::apps::ReadServerOptions(std::vector<std::string>(argv + 1, argv + argc));
  const bool needs_window = !options.headless && !options.help && !options.version;
  return needs_window ? korval::apps::RunWithWindow(argc, argv, options) : RunOnConsole(argc, argv, options);
}

}  // namespace

int main(int argc, char** argv) {
  // A client that goes away must not end the server, and one who reads the trace not without order.
  korval::platform::HoldStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);
  QCoreApplication::setApplicationName("korval-asap-server");
  QCoreApplication::setApplicationVersion(KORVAL_VERSION);
  try {
    return Run(argc, argv);
  } catch (const korval::apps::UsageError& error) {
    std::fprintf(stderr, "korval-asap-server: %s (see --help)\n", error.what());
    return kWrongUsage;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "korval-asap-server: %s\n", failure.what());
    return kFailed;
  }
}
