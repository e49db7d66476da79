// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "apps/commandline/UsageError.h"
#include "base/ByteBuffer.h"
#include "base/SerialSettings.h"
#include "client/Asap3Client.h"

namespace korval::apps {

enum class Command { kIdentify, kGet, kSet, kXget, kXset, kWatch, kDtc, kRaw, kCan, kSend };

/// The client's command line.
struct ClientOptions {
  bool help = false;
  bool version = false;
  bool json = false;

  std::string host = "127.0.0.1";
  std::uint16_t port = 1001;
  std::chrono::milliseconds timeout{5000};
  std::string serial_device;  // empty: TCP
  base::SerialSettings serial_settings;

  std::string description_file;
  std::string section;
  std::uint16_t address = 0;

  Command command = Command::kIdentify;
  std::vector<std::string> names;  // get, set, xget, xset, watch
  std::uint16_t value_type = 0;    // xset: the data type code, 0 real, 1 real8, 2 string
  client::ExtendedValue value;     // set, xset
  base::ByteBuffer bytes;          // raw, send
  std::string frames;              // can

  std::uint32_t count = 0;  // watch: 0 is without end
  std::string csv_file;     // empty: none
  std::chrono::milliseconds interval{1000};
};

/// Reads the arguments (without the program's name), options and words in any order. A word that is a
/// negative number is no option, and nothing after "--" is one. Raises UsageError. After --help or --version
/// the rest is not looked at.
ClientOptions ReadClientOptions(const std::vector<std::string>& arguments);

/// The text of --help.
std::string ClientHelp();

}  // namespace korval::apps
