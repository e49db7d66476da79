// SPDX-License-Identifier: MIT
#include "apps/asap3/Options.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "base/Failure.h"
#include "base/NumberText.h"

namespace korval::apps {
namespace {

constexpr std::int32_t kLongestWaitMs = 3'600'000;

struct CommandRow {
  std::string_view name;
  Command command;
  std::string_view takes;
  std::size_t least;
  std::size_t most;
  bool needs_file;
};

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();
constexpr std::array<CommandRow, 10> kCommands = {{
    {"identify", Command::kIdentify, "nothing", 0, 0, false},
    {"get", Command::kGet, "one NAME or more", 1, kAnyNumber, true},
    {"set", Command::kSet, "a NAME and a VALUE", 2, 2, true},
    {"xget", Command::kXget, "one NAME or more", 1, kAnyNumber, true},
    {"xset", Command::kXset, "a NAME and a VALUE", 2, 2, true},
    {"watch", Command::kWatch, "one NAME or more", 1, kAnyNumber, true},
    {"dtc", Command::kDtc, "nothing", 0, 0, true},
    {"raw", Command::kRaw, "one request in HEX", 1, 1, true},
    {"can", Command::kCan, "one text of FRAMES", 1, 1, true},
    {"send", Command::kSend, "one frame in HEX", 1, 1, false},
}};

const CommandRow& RowOf(std::string_view name) {
  const auto* const row = std::find_if(kCommands.begin(), kCommands.end(),
                                       [&](const CommandRow& known) { return known.name == name; });
  if (row != kCommands.end()) return *row;
  std::string names;
  for (const CommandRow& known : kCommands) names += (names.empty() ? "" : ", ") + std::string(known.name);
  throw UsageError("'" + std::string(name) + "' is no command; there are " + names);
}

std::int32_t Number(const std::string& what, const std::string& text, std::int32_t from, std::int32_t to) {
  const std::optional<std::int32_t> number = base::ReadInteger(text);
  if (number && *number >= from && *number <= to) return *number;
  throw UsageError(what + " takes a whole number from " + std::to_string(from) + " to " + std::to_string(to) +
                   ", not '" + text + "'");
}

std::string Filled(const std::string& what, const std::string& text) {
  if (text.empty()) throw UsageError(what + " must not be empty");
  return text;
}

std::uint16_t TypeCode(const std::string& text) {
  if (text == "real") return 0;
  if (text == "real8") return 1;
  if (text == "string") return 2;
  throw UsageError("--type takes real, real8 or string, not '" + text + "'");
}

/// What is set while the command line is read: the options, and which commands may follow them.
struct Reading {
  Options options;
  std::vector<std::string> words;
  std::string xset_option;   // the last option given that is for xset only
  std::string watch_option;  // likewise for watch
  std::string file_option;   // likewise for commands that work on a file
};

struct OptionRow {
  std::string_view name;
  bool takes_value;
  void (*apply)(Reading&, const std::string& name, const std::string& value);
};

using Text = std::string;

constexpr std::array<OptionRow, 16> kOptions = {{
    {"--help", false, [](Reading& r, const Text&, const Text&) { r.options.help = true; }},
    {"-h", false, [](Reading& r, const Text&, const Text&) { r.options.help = true; }},
    {"--version", false, [](Reading& r, const Text&, const Text&) { r.options.version = true; }},
    {"--json", false, [](Reading& r, const Text&, const Text&) { r.options.json = true; }},
    {"--host", true, [](Reading& r, const Text& n, const Text& v) { r.options.host = Filled(n, v); }},
    {"--port", true,
     [](Reading& r, const Text& n, const Text& v) {
       r.options.port = static_cast<std::uint16_t>(Number(n, v, 1, 65535));
     }},
    {"--timeout", true,
     [](Reading& r, const Text& n, const Text& v) {
       r.options.timeout = std::chrono::milliseconds(Number(n, v, 1, kLongestWaitMs));
     }},
    {"--serial", true,
     [](Reading& r, const Text& n, const Text& v) { r.options.serial_device = Filled(n, v); }},
    {"--serial-settings", true,
     [](Reading& r, const Text&, const Text& v) { r.options.serial_settings = base::ReadSerialSettings(v); }},
    {"--file", true,
     [](Reading& r, const Text& n, const Text& v) {
       r.options.description_file = Filled(n, v);
       r.file_option = n;
     }},
    {"--section", true,
     [](Reading& r, const Text& n, const Text& v) {
       r.options.section = Filled(n, v);
       r.file_option = n;
     }},
    {"--address", true,
     [](Reading& r, const Text& n, const Text& v) {
       r.options.address = static_cast<std::uint16_t>(Number(n, v, 0, 65535));
       r.file_option = n;
     }},
    {"--type", true,
     [](Reading& r, const Text& n, const Text& v) {
       r.options.value_type = TypeCode(v);
       r.xset_option = n;
     }},
    {"--count", true,
     [](Reading& r, const Text& n, const Text& v) {
       const std::int32_t count = Number(n, v, 1, std::numeric_limits<std::int32_t>::max());
       r.options.count = static_cast<std::uint32_t>(count);
       r.watch_option = n;
     }},
    {"--csv", true,
     [](Reading& r, const Text& n, const Text& v) {
       r.options.csv_file = Filled(n, v);
       r.watch_option = n;
     }},
    {"--interval", true,
     [](Reading& r, const Text& n, const Text& v) {
       r.options.interval = std::chrono::milliseconds(Number(n, v, 0, kLongestWaitMs));
       r.watch_option = n;
     }},
}};

const OptionRow& OptionOf(const std::string& name) {
  const auto* const row = std::find_if(kOptions.begin(), kOptions.end(),
                                       [&](const OptionRow& known) { return known.name == name; });
  if (row == kOptions.end()) throw UsageError("'" + name + "' is no option");
  return *row;
}

bool IsOption(const std::string& argument) {
  return argument.size() > 1 && argument[0] == '-' && !base::ReadNumber(argument);
}

void Read(Reading& reading, const std::vector<std::string>& arguments) {
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    if (*argument == "--") {
      reading.words.insert(reading.words.end(), argument + 1, arguments.end());
      return;
    }
    if (!IsOption(*argument)) {
      reading.words.push_back(*argument);
      continue;
    }
    const std::size_t equals = argument->find('=');
    const std::string name = argument->substr(0, equals);
    const OptionRow& row = OptionOf(name);
    std::string value;
    if (equals != std::string::npos) {
      if (!row.takes_value) throw UsageError(name + " takes no value");
      value = argument->substr(equals + 1);
    } else if (row.takes_value) {
      if (++argument == arguments.end()) throw UsageError(name + " needs a value after it");
      value = *argument;
    }
    row.apply(reading, name, value);
    if (reading.options.help || reading.options.version) return;
  }
}

float Single(const std::string& text, double number) {
  const auto single = static_cast<float>(number);
  if (std::isfinite(single)) return single;
  throw UsageError("VALUE " + text + " is too large for a real");
}

client::ExtendedValue ValueOf(const Options& options, const std::string& text) {
  if (options.value_type == 2) return text;
  const std::optional<double> number = base::ReadNumber(text);
  if (!number) {
    const bool may_be_text = options.command == Command::kXset;
    throw UsageError("VALUE is a number such as 12.5 or 1E-05, not '" + text + "'" +
                     (may_be_text ? "; a text needs --type string" : ""));
  }
  if (options.value_type == 1) return *number;
  return Single(text, *number);
}

base::ByteBuffer BytesOf(const std::string& text) {
  try {
    base::ByteBuffer bytes = base::ByteBuffer::FromHex(text);
    if (!bytes.Empty()) return bytes;
  } catch (const base::Failure&) {  // said below in terms of the command line
  }
  throw UsageError("HEX is two hexadecimal digits a byte, at least one byte, such as 2180, not '" + text +
                   "'");
}

void RequireFitting(const Reading& reading, const CommandRow& row) {
  const std::string name(row.name);
  const std::size_t count = reading.words.size() - 1;
  if (count < row.least || count > row.most) throw UsageError(name + " takes " + std::string(row.takes));
  if (!reading.xset_option.empty() && row.command != Command::kXset)
    throw UsageError(reading.xset_option + " goes with xset only");
  if (!reading.watch_option.empty() && row.command != Command::kWatch)
    throw UsageError(reading.watch_option + " goes with watch only");
  if (!reading.file_option.empty() && !row.needs_file)
    throw UsageError(reading.file_option + " does not go with " + name + ", which selects no file");
  const bool has_file = !reading.options.description_file.empty() && !reading.options.section.empty();
  if (row.needs_file && !has_file) throw UsageError(name + " needs --file DESCRIPTION and --section NAME");
}

/// The name under which the server lists a value: "qor(X)" and "X" are one.
std::string_view ValueName(std::string_view name) {
  if (name.size() < 5 || !name.starts_with("qor(") || !name.ends_with(")")) return name;
  return name.substr(4, name.size() - 5);
}

void RequireDistinct(const std::vector<std::string>& names) {
  for (auto name = names.begin(); name != names.end(); ++name) {
    const bool again = std::any_of(names.begin(), name, [&](const std::string& earlier) {
      return ValueName(earlier) == ValueName(*name);
    });
    if (again) throw UsageError("watch shows '" + *name + "' once: leave the second one out");
  }
}

void TakeWords(Options& options, const std::vector<std::string>& words) {
  switch (options.command) {
    case Command::kIdentify:
    case Command::kDtc:
      break;
    case Command::kGet:
    case Command::kXget:
      options.names.assign(words.begin() + 1, words.end());
      break;
    case Command::kWatch:
      options.names.assign(words.begin() + 1, words.end());
      RequireDistinct(options.names);
      break;
    case Command::kSet:
    case Command::kXset:
      options.names = {words[1]};
      options.value = ValueOf(options, words[2]);
      break;
    case Command::kCan:
      options.frames = words[1];
      break;
    case Command::kRaw:
    case Command::kSend:
      options.bytes = BytesOf(words[1]);
      break;
  }
}

}  // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
  Reading reading;
  try {
    Read(reading, arguments);
  } catch (const base::Failure& failure) {
    throw UsageError(failure.Description());
  }
  if (reading.options.help || reading.options.version) return reading.options;
  if (reading.words.empty()) throw UsageError("there is no COMMAND");
  const CommandRow& row = RowOf(reading.words.front());
  RequireFitting(reading, row);
  reading.options.command = row.command;
  TakeWords(reading.options, reading.words);
  return reading.options;
}

}  // namespace korval::apps
