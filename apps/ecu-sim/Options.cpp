// SPDX-License-Identifier: MIT
#include "apps/ecu-sim/Options.h"

#include <QCommandLineParser>

namespace korval::apps {
namespace {

constexpr char kDescription[] =
    "The simulated ECU of an ECU file at the other end of a wire: K-line on a pseudo terminal, or a CAN "
    "bus.\n"
    "Its Simulation element says what it answers, and which faults it has. Stops on SIGINT, SIGTERM and "
    "SIGHUP.";

QCommandLineOption WithValue(const char* name, const char* value, const char* description) {
  return {QString::fromLatin1(name), QString::fromUtf8(description), QString::fromLatin1(value)};
}

void AddOptions(QCommandLineParser& parser) {
  parser.setApplicationDescription(QString::fromUtf8(kDescription));
  parser.addOptions({
      WithValue("ecu", "FILE", "The ECU file."),
      WithValue("kline", "PATH", "Makes a pseudo terminal for the tester and links it at PATH."),
      {QStringLiteral("echo"),
       QStringLiteral("With --kline: gives every byte back, as the one wire of a K-line does.")},
      WithValue("can", "PLUGIN:INTERFACE",
                "Answers on a CAN bus, for example virtualcan:can0 or socketcan:can0."),
      WithValue("messaging", "FILE",
                "With --can: the CAN messaging file, for identifiers and cyclic frames."),
      WithValue("bus-trace", "FILE", "Records the traffic: candump's log format, or K-line bytes."),
      {QStringLiteral("version"), QStringLiteral("Prints the version.")},
      {QStringLiteral("help"), QStringLiteral("Prints this help.")},
  });
}

std::optional<std::string> Value(const QCommandLineParser& parser, const char* name) {
  if (!parser.isSet(QString::fromLatin1(name))) return std::nullopt;
  return parser.value(QString::fromLatin1(name)).toStdString();
}

Options::Can CanOf(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) {
    throw UsageError("--can takes PLUGIN:INTERFACE, for example virtualcan:can0, not '" + text + "'");
  }
  return {text.substr(0, colon), text.substr(colon + 1)};
}

void RequireOneWire(const Options& options) {
  if (options.ecu_file.empty()) throw UsageError("--ecu FILE is missing");
  if (options.kline_path.empty() == !options.can.has_value()) {
    throw UsageError("give either --kline PATH or --can PLUGIN:INTERFACE");
  }
  if (options.can && options.echo) throw UsageError("--echo goes with --kline");
  if (!options.can && options.messaging_file) throw UsageError("--messaging goes with --can");
}

}  // namespace

Options ParseOptions(const QStringList& arguments) {
  QCommandLineParser parser;
  AddOptions(parser);
  if (!parser.parse(arguments)) throw UsageError(parser.errorText().toStdString());
  if (!parser.positionalArguments().isEmpty()) {
    throw UsageError("unexpected argument '" + parser.positionalArguments().first().toStdString() + "'");
  }
  Options options;
  options.help = parser.isSet("help");
  options.version = parser.isSet("version");
  if (options.help || options.version) return options;
  options.echo = parser.isSet("echo");
  options.ecu_file = Value(parser, "ecu").value_or("");
  options.kline_path = Value(parser, "kline").value_or("");
  if (const auto can = Value(parser, "can")) options.can = CanOf(*can);
  options.messaging_file = Value(parser, "messaging");
  options.bus_trace = Value(parser, "bus-trace");
  RequireOneWire(options);
  return options;
}

std::string HelpText() {
  QCommandLineParser parser;
  AddOptions(parser);
  return parser.helpText().toStdString();
}

}  // namespace korval::apps
