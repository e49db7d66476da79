// SPDX-License-Identifier: MIT
#include "Options.h"

#include <QCommandLineParser>
#include <QDir>

#include "base/Failure.h"
#include "platform/TcpAccess.h"

namespace korval::apps {
namespace {

const char* const kDescription =
    "ASAP3 server: answers a test bench's ASAP3 frames over TCP and RS232 and drives vehicle ECUs.\n"
    "Options override the stored settings for this run and are not saved.\n\n"
    "Example, everything on this machine and the simulated ECU behind it:\n"
    "  korval-asap-server --headless --listen 127.0.0.1 --tcp-port 11001 --diag-port SIM \\\n"
    "    --asap-folder examples/asap --korv-folder examples/ecu --power dry-run";

QCommandLineOption WithValue(const char* name, const char* value, const char* description) {
  return QCommandLineOption(QString::fromLatin1(name), QString::fromUtf8(description),
                            QString::fromLatin1(value));
}

QCommandLineOption Flag(const char* name, const char* description) {
  return QCommandLineOption(QString::fromLatin1(name), QString::fromUtf8(description));
}

void AddOptions(QCommandLineParser& parser) {
  parser.setApplicationDescription(QString::fromUtf8(kDescription));
  parser.addOptions({
      Flag("headless", "No window; the trace goes to standard output. Stops on SIGINT, SIGTERM and SIGHUP."),
      WithValue("tcp-port", "N", "TCP port; 0 takes any free one and keeps it for the whole run."),
      WithValue("listen", "ADDRESS", "Local address to listen on (default: all)."),
      WithValue("allow", "ADDRESS[/BITS]", "Only these clients may connect; repeatable (default: any)."),
      WithValue("serial-port", "N", "Number of the client's RS232 port (COM number)."),
      WithValue("serial-device", "PATH", "Device that stands for the serial port's number."),
      WithValue("serial-settings", "TEXT", "Speed, parity, data bits, stop bits, such as 9600,n,8,1."),
      WithValue("handshaking", "N", "0 none, 1 Xon/Xoff, 2 RTS, 3 Xon/RTS."),
      Flag("open-serial", "Opens the serial port at start."),
      WithValue("asap-folder", "DIR", "Folder of the description files."),
      WithValue("korv-folder", "DIR", "Folder of the ECU files."),
      WithValue("diag-port", "PORT", "Diagnostic port: SIM, COM3, /dev/ttyUSB0, CAN:socketcan:can0, NONE."),
      WithValue("bus-trace", "FILE",
                "Records all traffic with vehicles: candump's log format, or K-line bytes."),
      Flag("realtime",
           "Real-time scheduling while a K-line is open, where the system allows it (see docs/links.md)."),
      WithValue("settings", "FILE", "Store of the per-user settings."),
      WithValue("install-record", "FILE", "The machine-wide installation record."),
      Flag("debug", "Starts with \"Check & debug\" ticked."),
      WithValue("power", "MODE", "system, or dry-run: traces a remote reboot or shutdown, touches nothing."),
      Flag("version", "Prints the version."),
      Flag("help", "Prints this help."),
  });
}

[[noreturn]] void Refuse(const QString& option, const QString& value, const char* expected) {
  throw UsageError("--" + option.toStdString() + " takes " + expected + ", not '" + value.toStdString() +
                   "'");
}

class Values {
 public:
  explicit Values(const QCommandLineParser& parser) : parser_(parser) {}

  std::optional<std::string> Text(const char* name) const {
    if (!parser_.isSet(QString::fromLatin1(name))) return std::nullopt;
    return parser_.value(QString::fromLatin1(name)).toStdString();
  }

  // In the form in which the settings panel gives a folder back.
  std::optional<std::string> Folder(const char* name) const {
    if (!parser_.isSet(QString::fromLatin1(name))) return std::nullopt;
    const QString folder = parser_.value(QString::fromLatin1(name));
    return folder.isEmpty() ? "" : QDir::cleanPath(QDir(folder).absolutePath()).toStdString();
  }

  std::optional<int> Number(const char* name, int from, int to, const char* expected) const {
    const QString option = QString::fromLatin1(name);
    if (!parser_.isSet(option)) return std::nullopt;
    bool is_number = false;
    const int number = parser_.value(option).toInt(&is_number);
    if (!is_number || number < from || number > to) Refuse(option, parser_.value(option), expected);
    return number;
  }

 private:
  const QCommandLineParser& parser_;
};

bool IsAccess(const QString& listen, const QString& allow) {
  try {
    platform::ReadTcpAccess(listen.toStdString(), allow.toStdString());
    return true;
  } catch (const base::Failure&) {
    return false;
  }
}

std::string ListenAddress(const QString& text) {
  if (text.isEmpty() || !IsAccess(text, {})) Refuse("listen", text, "an IP address of this machine");
  return text.toStdString();
}

std::string AllowedClients(const QStringList& texts) {
  for (const QString& text : texts) {
    if (text.isEmpty() || !IsAccess({}, text))
      Refuse("allow", text, "an IP address, or one with the bits of its network (10.0.0.0/8)");
  }
  return texts.join(QStringLiteral(", ")).toStdString();
}

bool IsDryRun(const QString& text) {
  if (text != "dry-run" && text != "system") Refuse("power", text, "'system' or 'dry-run'");
  return text == "dry-run";
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
  options.headless = parser.isSet("headless");
  options.help = parser.isSet("help");
  options.version = parser.isSet("version");
  options.debug = parser.isSet("debug");
  options.open_serial = parser.isSet("open-serial");
  options.real_time = parser.isSet("realtime");
  if (parser.isSet("power")) options.dry_run_power = IsDryRun(parser.value("power"));
  if (parser.isSet("listen")) options.listen = ListenAddress(parser.value("listen"));
  if (parser.isSet("allow")) options.allow = AllowedClients(parser.values("allow"));
  const Values values(parser);
  if (const auto port = values.Number("tcp-port", 0, 65535, "a port from 0 to 65535")) {
    options.tcp_port = static_cast<std::uint16_t>(*port);
  }
  options.serial_port = values.Number("serial-port", 1, 256, "a port number from 1 to 256");
  options.handshaking = values.Number("handshaking", 0, 3, "a code from 0 to 3");
  options.serial_device = values.Text("serial-device");
  options.serial_settings = values.Text("serial-settings");
  options.asap_folder = values.Folder("asap-folder");
  options.korv_folder = values.Folder("korv-folder");
  options.diag_port = values.Text("diag-port");
  options.bus_trace = values.Text("bus-trace");
  options.settings_file = values.Text("settings");
  options.install_record_file = values.Text("install-record");
  return options;
}

std::string HelpText() {
  QCommandLineParser parser;
  AddOptions(parser);
  return parser.helpText().toStdString();
}

}  // namespace korval::apps
