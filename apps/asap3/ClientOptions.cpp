// SPDX-License-Identifier: MIT
#include "apps/asap3/ClientOptions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "apps/commandline/CommandLine.h"
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

std::string Filled(const std::string& what, const std::string& text) {
  if (text.empty()) throw UsageError(what + " must not be empty");
  return text;
}

std::uint16_t TypeCode(const std::string& text) {
  if (text == "real") return 0;
  if (text == "real8") return 1;
  if (text == "string") return 2;
  RefuseValue("--type", "real, real8 or string", text);
}

base::SerialSettings SerialSettingsOf(const std::string& text) {
  try {
    return base::ReadSerialSettings(text);
  } catch (const base::Failure& failure) {
    throw UsageError(failure.Description());
  }
}

/// What is set while the command line is read: the options, and which commands may follow them.
struct Reading {
  ClientOptions options;
  std::vector<std::string> words;
  std::string xset_option;   // the last option given that is for xset only
  std::string watch_option;  // likewise for watch
  std::string file_option;   // likewise for commands that work on a file
};

constexpr char kIntroduction[] =
    "asap3 talks to an ASAP3 server: it opens a session, carries out one COMMAND, and ends the session.";

constexpr char kCommandsText[] = R"help(
Commands (those marked * work on an ECU, which --file and --section choose):
  identify            who the server is
  get NAME...       * values of parameters, each read from the ECU
  set NAME VALUE    * writes a number
  xget NAME...      * values of any type; also texts and the special names
  xset NAME VALUE   * writes a value of the --type given
  watch NAME...     * values again and again, until Ctrl-C or --count
  dtc               * the ECU's diagnostic trouble codes
  raw HEX           * a diagnostic request as bytes; prints the answer
  can FRAMES        * sends CAN frames: eight digits of identifier and the data in hex, ';' between frames
  send HEX            one frame as given, without a session; prints the answer

Nothing is an option after "--".)help";

constexpr char kEnding[] = R"help(Examples:
  asap3 identify
  asap3 get --file engine.xml --section ENGINE Speed Coolant
  asap3 set --file engine.xml --section ENGINE IdleSpeed 850
  asap3 watch --file engine.xml --section ENGINE --count 10 --interval 200 --csv run.csv Speed Torque
  asap3 xget --file engine.xml --section ENGINE Vin "qortext(READ_STATES;Gear)"
  asap3 xset --file engine.xml --section ENGINE --type string kwprequest 2180
  asap3 dtc --file engine.xml --section ENGINE
  asap3 raw --file engine.xml --section ENGINE 2180
  asap3 can --file engine.xml --section ENGINE "0000012301020304;000007DF"
  asap3 --serial /dev/ttyUSB0 --serial-settings 19200,e,8,1 identify
  asap3 send 000600020008

Exit status: 0 success, 1 the server answered with an error, 2 wrong usage, 3 no connection or no valid answer.)help";

void DeclareServer(CommandLine& line, ClientOptions& options) {
  line.Heading("Which server");
  line.Value("--host", "HOST", "Name or address (default: 127.0.0.1).",
             [&options](const std::string& value) { options.host = Filled("--host", value); });
  line.Value("--port", "PORT", "TCP port (default: 1001).", [&options](const std::string& value) {
    options.port = static_cast<std::uint16_t>(ReadWholeNumber("--port", value, 1, 65535));
  });
  line.Value("--serial", "DEVICE", "A serial line instead of TCP, such as /dev/ttyUSB0.",
             [&options](const std::string& value) { options.serial_device = Filled("--serial", value); });
  line.Value("--serial-settings", "TEXT", "Speed, parity, data bits, stop bits (default: 9600,n,8,1).",
             [&options](const std::string& value) { options.serial_settings = SerialSettingsOf(value); });
  line.Value("--timeout", "MS", "Longest wait for each answer (default: 5000).",
             [&options](const std::string& value) {
               options.timeout =
                   std::chrono::milliseconds(ReadWholeNumber("--timeout", value, 1, kLongestWaitMs));
             });
}

void DeclareEcu(CommandLine& line, Reading& reading) {
  line.Heading("Which ECU");
  line.Value("--file", "DESCRIPTION", "Description file, as it is called on the server.",
             [&reading](const std::string& value) {
               reading.options.description_file = Filled("--file", value);
               reading.file_option = "--file";
             });
  line.Value("--section", "NAME", "Section of it.", [&reading](const std::string& value) {
    reading.options.section = Filled("--section", value);
    reading.file_option = "--section";
  });
  line.Value("--address", "N", "Address, 0 to 65535 (default: 0).", [&reading](const std::string& value) {
    reading.options.address = static_cast<std::uint16_t>(ReadWholeNumber("--address", value, 0, 65535));
    reading.file_option = "--address";
  });
}

void DeclareWatch(CommandLine& line, Reading& reading) {
  line.Value("--count", "N", "watch: ends after N readings.", [&reading](const std::string& value) {
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    reading.options.count = static_cast<std::uint32_t>(ReadWholeNumber("--count", value, 1, kMost));
    reading.watch_option = "--count";
  });
  line.Value("--interval", "MS", "watch: time from reading to reading (default: 1000).",
             [&reading](const std::string& value) {
               reading.options.interval =
                   std::chrono::milliseconds(ReadWholeNumber("--interval", value, 0, kLongestWaitMs));
               reading.watch_option = "--interval";
             });
  line.Value("--csv", "FILE", "watch: writes the readings to FILE too.",
             [&reading](const std::string& value) {
               reading.options.csv_file = Filled("--csv", value);
               reading.watch_option = "--csv";
             });
}

CommandLine Declare(Reading& reading) {
  CommandLine line({.introduction = kIntroduction,
                    .usage = "asap3 [OPTIONS] COMMAND ...",
                    .description = kCommandsText,
                    .ending = kEnding});
  line.Words(reading.words);
  DeclareServer(line, reading.options);
  DeclareEcu(line, reading);
  line.Heading("How");
  line.Value("--type", "TYPE", "xset: real (default), real8 or string.",
             [&reading](const std::string& value) {
               reading.options.value_type = TypeCode(value);
               reading.xset_option = "--type";
             });
  DeclareWatch(line, reading);
  line.Flag("--json", "One JSON object a line instead of text, also for exit statuses 1 and 3.",
            reading.options.json);
  return line;
}

CommandLine::Wanted ReadOptions(Reading& reading, const std::vector<std::string>& arguments) {
  try {
    return Declare(reading).Read(arguments);
  } catch (const UnknownOption& unknown) {
    throw UsageError("'" + unknown.Name() + "' is no option");
  }
}

float Single(const std::string& text, double number) {
  const auto single = static_cast<float>(number);
  if (std::isfinite(single)) return single;
  throw UsageError("VALUE " + text + " is too large for a real");
}

client::ExtendedValue ValueOf(const ClientOptions& options, const std::string& text) {
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

void TakeWords(ClientOptions& options, const std::vector<std::string>& words) {
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

ClientOptions ReadClientOptions(const std::vector<std::string>& arguments) {
  Reading reading;
  ClientOptions& options = reading.options;
  const CommandLine::Wanted wanted = ReadOptions(reading, arguments);
  options.help = wanted == CommandLine::Wanted::kHelp;
  options.version = wanted == CommandLine::Wanted::kVersion;
  if (wanted != CommandLine::Wanted::kRun) return options;
  if (reading.words.empty()) throw UsageError("there is no COMMAND");
  const CommandRow& row = RowOf(reading.words.front());
  RequireFitting(reading, row);
  options.command = row.command;
  TakeWords(options, reading.words);
  return options;
}

std::string ClientHelp() {
  Reading unused;
  return Declare(unused).Help();
}

}  // namespace korval::apps
