// SPDX-License-Identifier: MIT
#include <csignal>
#include <cstdio>
#include <exception>

#include <QCoreApplication>

#include "HeadlessServer.h"
#include "Options.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int Run(const korval::apps::Options& options) {
  if (options.help) {
    std::printf("%s", korval::apps::HelpText().c_str());
    return 0;
  }
  if (options.version) {
    std::printf("korval-asap-server %s\n", KORVAL_VERSION);
    return 0;
  }
  if (!options.headless) {
    std::fprintf(stderr, "This server has no window yet: start it with --headless (see --help)\n");
    return kWrongUsage;
  }
  return korval::apps::HeadlessServer(options).Run();
}

}  // namespace

int main(int argc, char** argv) {
  // A reader of the trace or a client that goes away must not end the server.
  std::signal(SIGPIPE, SIG_IGN);
  QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName("korval-asap-server");
  QCoreApplication::setApplicationVersion(KORVAL_VERSION);
  try {
    return Run(korval::apps::ParseOptions(QCoreApplication::arguments()));
  } catch (const korval::apps::UsageError& error) {
    std::fprintf(stderr, "korval-asap-server: %s (see --help)\n", error.what());
    return kWrongUsage;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "korval-asap-server: %s\n", failure.what());
    return kFailed;
  }
}
