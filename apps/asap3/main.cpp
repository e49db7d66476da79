// SPDX-License-Identifier: MIT
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <QCoreApplication>

#include "apps/asap3/ClientOptions.h"
#include "apps/asap3/Commands.h"
#include "apps/asap3/JsonLine.h"
#include "base/VisibleText.h"
#include "client/ClientErrors.h"
#include "client/ReplyReader.h"
#include "client/device/DeviceChannel.h"
#include "platform/process/EventBarrier.h"

namespace {

using korval::apps::ClientOptions;
using korval::apps::JsonLine;

constexpr int kSuccess = 0;
constexpr int kErrorReply = 1;
constexpr int kWrongUsage = 2;
constexpr int kNoAnswer = 3;

std::unique_ptr<korval::client::Channel> Connect(const ClientOptions& options) {
  if (options.serial_device.empty())
    return korval::client::ConnectTcp(options.host, options.port, options.timeout);
  return korval::client::OpenSerial(options.serial_device, options.serial_settings);
}

/// Scripts that asked for JSON find every outcome on standard output.
void Report(const ClientOptions& options, const std::string& text, const JsonLine& json) {
  if (options.json)
    std::cout << json.Text() << std::endl;
  else
    std::cerr << "asap3: " << korval::base::VisibleText(text) << std::endl;
}

int Run(const ClientOptions& options) {
  try {
    korval::client::Asap3Client client(Connect(options), options.timeout);
    korval::apps::RunCommand(client, options);
    return kSuccess;
  } catch (const korval::client::ErrorReply& error) {
    const bool has_record = error.Status() == korval::client::kStatusError;
    Report(options,
           (has_record ? "error " : "status ") + std::to_string(error.Number()) + ": " + error.Description(),
           JsonLine()
               .Add("error", std::string("reply"))
               .Add("status", static_cast<std::int32_t>(error.Status()))
               .Add("code", error.Number())
               .Add("message", error.Description()));
    return kErrorReply;
  } catch (const korval::client::LinkError& error) {
    Report(options, error.Description(),
           JsonLine().Add("error", std::string("link")).Add("message", error.Description()));
    return kNoAnswer;
  }
}

}  // namespace

int main(int argc, char** argv) {
  // Qt looks at the first argument only: the others are this program's own.
  int qt_argc = 1;
  const korval::platform::GuardedApplication<QCoreApplication> application(qt_argc, argv);
  try {
    const ClientOptions options =
        korval::apps::ReadClientOptions(std::vector<std::string>(argv + 1, argv + argc));
    if (options.help || options.version) {
      std::cout << (options.help ? korval::apps::ClientHelp() : "asap3 " KORVAL_VERSION "\n");
      return kSuccess;
    }
    return Run(options);
  } catch (const korval::apps::UsageError& error) {
    std::cerr << "asap3: " << error.what() << "\nasap3 --help tells how it is used\n";
  } catch (const std::exception& error) {
    std::cerr << "asap3: " << error.what() << "\n";
  }
  return kWrongUsage;
}
