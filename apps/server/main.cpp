// SPDX-License-Identifier: MIT
#include <csignal>
#include <cstdio>
#include <exception>

#include <QCoreApplication>

#include "HeadlessServer.h"
#include "Options.h"
#include "platform/process/StandardStreams.h"
#include "window/RunWindow.h"

namespace {

using korval::apps::Options;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

QStringList Arguments(int argc, char** argv) {
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments.append(QString::fromLocal8Bit(argv[i]));
  return arguments;
}

int RunOnConsole(int argc, char** argv, const Options& options) {
  const QCoreApplication application(argc, argv);
  if (options.help) {
    std::printf("%s", korval::apps::HelpText().c_str());
    return 0;
  }
  if (options.version) {
    std::printf("korval-asap-server %s\n", KORVAL_VERSION);
    return 0;
  }
  return korval::apps::HeadlessServer(options).Run();
}

int Run(int argc, char** argv) {
  const Options options = korval::apps::ParseOptions(Arguments(argc, argv));
  const bool needs_window = !options.headless && !options.help && !options.version;
  return needs_window ? korval::apps::RunWindow(argc, argv, options) : RunOnConsole(argc, argv, options);
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
