// SPDX-License-Identifier: MIT
#include "ServerOptions.h"

#include <QDir>

#include "apps/commandline/CommandLine.h"
#include "base/Failure.h"
#include "platform/TcpAccess.h"

namespace korval::apps {
namespace {

constexpr char kDescription[] =
    "ASAP3 server: answers a test bench's ASAP3 frames over TCP and RS232 and drives vehicle ECUs.\n"
    "Options override the stored settings for this run and are not saved.";

constexpr char kEnding[] =
    "Example, everything on this machine and the simulated ECU behind it:\n"
    "  korval-asap-server --headless --listen 127.0.0.1 --tcp-port 11001 --diag-port SIM \\\n"
    "    --asap-folder examples/asap --korv-folder examples/ecu --power dry-run";

// In the form in which the settings panel gives a folder back.
std::string Folder(const std::string& text) {
  if (text.empty()) return "";
  return QDir::cleanPath(QDir(QString::fromStdString(text)).absolutePath()).toStdString();
}

bool IsAccess(const std::string& listen, const std::string& allow) {
  try {
    platform::ReadTcpAccess(listen, allow);
    return true;
  } catch (const base::Failure&) {
    return false;
  }
}

std::string ListenAddress(const std::string& text) {
  if (text.empty() || !IsAccess(text, "")) RefuseValue("--listen", "an IP address of this machine", text);
  return text;
}

std::string AllowedClient(const std::string& text) {
  if (text.empty() || !IsAccess("", text)) {
    RefuseValue("--allow", "an IP address, or one with the bits of its network (10.0.0.0/8)", text);
  }
  return text;
}

bool IsDryRun(const std::string& text) {
  if (text != "dry-run" && text != "system") RefuseValue("--power", "'system' or 'dry-run'", text);
  return text == "dry-run";
}

std::function<void(const std::string&)> Into(std::optional<std::string>& value) {
  return [&value](const std::string& text) { value = text; };
}

void DeclareClientSide(CommandLine& line, ServerOptions& options) {
  line.Heading("The client's side");
  line.Value("--tcp-port", "N", "TCP port; 0 takes any free one and keeps it for the whole run.",
             [&options](const std::string& text) {
               options.tcp_port = static_cast<std::uint16_t>(
                   ReadWholeNumber("--tcp-port", text, 0, 65535, "a port from 0 to 65535"));
             });
  line.Value("--listen", "ADDRESS", "Local address to listen on (default: all).",
             [&options](const std::string& text) { options.listen = ListenAddress(text); });
  line.EachValue("--allow", "ADDRESS[/BITS]", "Only these clients may connect; repeatable (default: any).",
                 [&options](const std::string& text) {
                   options.allow = (options.allow ? *options.allow + ", " : "") + AllowedClient(text);
                 });
  line.Value("--serial-port", "N", "Number of the client's RS232 port (COM number).",
             [&options](const std::string& text) {
               options.serial_port =
                   ReadWholeNumber("--serial-port", text, 1, 256, "a port number from 1 to 256");
             });
  line.Value("--serial-device", "PATH", "Device that stands for the serial port's number.",
             Into(options.serial_device));
  line.Value("--serial-settings", "TEXT", "Speed, parity, data bits, stop bits, such as 9600,n,8,1.",
             Into(options.serial_settings));
  line.Value("--handshaking", "N", "0 none, 1 Xon/Xoff, 2 RTS, 3 Xon/RTS.",
             [&options](const std::string& text) {
               options.handshaking = ReadWholeNumber("--handshaking", text, 0, 3, "a code from 0 to 3");
             });
  line.Flag("--open-serial", "Opens the serial port at start.", options.open_serial);
  line.Value("--asap-folder", "DIR", "Folder of the description files.",
             [&options](const std::string& text) { options.asap_folder = Folder(text); });
}

void DeclareVehicleSide(CommandLine& line, ServerOptions& options) {
  line.Heading("The vehicle's side");
  line.Value("--korv-folder", "DIR", "Folder of the ECU files.",
             [&options](const std::string& text) { options.korv_folder = Folder(text); });
  line.Value("--diag-port", "PORT", "Diagnostic port: SIM, COM3, /dev/ttyUSB0, CAN:socketcan:can0, NONE.",
             Into(options.diag_port));
  line.Value("--bus-trace", "FILE",
             "Records all traffic with vehicles: candump's log format, or K-line bytes.",
             Into(options.bus_trace));
  line.Flag("--realtime",
            "Real-time scheduling while a K-line is open, where the system allows it (see docs/links.md).",
            options.real_time);
}

CommandLine Declare(ServerOptions& options) {
  CommandLine line({.usage = "korval-asap-server [OPTIONS]", .description = kDescription, .ending = kEnding});
  line.Heading("The program");
  line.Flag("--headless",
            "No window; the trace goes to standard output. Stops on SIGINT, SIGTERM and SIGHUP.",
            options.headless);
  line.Flag("--debug", "Starts with \"Check & debug\" ticked.", options.debug);
  line.Value("--settings", "FILE", "Store of the per-user settings.", Into(options.settings_file));
  line.Value("--install-record", "FILE", "The machine-wide installation record.",
             Into(options.install_record_file));
  line.Value("--power", "MODE", "system, or dry-run: traces a remote reboot or shutdown, touches nothing.",
             [&options](const std::string& text) { options.dry_run_power = IsDryRun(text); });
  DeclareClientSide(line, options);
  DeclareVehicleSide(line, options);
  line.Heading("Help");
  return line;
}

}  // namespace

ServerOptions ReadServerOptions(const std::vector<std::string>& arguments) {
  ServerOptions options;
  const CommandLine::Wanted wanted = Declare(options).Read(arguments);
  options.help = wanted == CommandLine::Wanted::kHelp;
  options.version = wanted == CommandLine::Wanted::kVersion;
  return options;
}

std::string ServerHelp() {
  ServerOptions unused;
  return Declare(unused).Help();
}

}  // namespace korval::apps
