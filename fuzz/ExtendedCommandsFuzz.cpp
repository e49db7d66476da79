// SPDX-License-Identifier: MIT
// Extended get and set parameter with a file selected: any parameter area, and fields that are whole but hold
// anything. The first byte chooses: bit 0 get or set, bit 1 whole fields, bits 2 and 3 the section.
#include <array>

#include "base/AnsiText.h"
#include "fuzz/Input.h"
#include "fuzz/StandingServer.h"
#include "protocol/FieldCodec.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

constexpr std::uint16_t kGet = 114;
constexpr std::uint16_t kSet = 115;
// More of them find nothing new, only more slowly.
constexpr int kMostCommands = 8;
constexpr std::array<const char*, 16> kNames{
    "xcanframe", "pcreboot", "pcshutdown", "kwprequest", "readdtc", "nextdtc", "dtccode", "dtcstatus",
    "Speed",     "Idle",     "Vin",        "Lamp",       "qorinit", "Ratio",   "Note",    "qornbrequests"};

void AppendAnsi(base::ByteBuffer& area, base::ByteView text) {
  protocol::AppendWord(area, static_cast<std::int32_t>(text.size()));
  area.Append(text);
  if (text.size() % 2 != 0) area.Append(std::uint8_t{0});
}

// A name of the list, or one that the input spells; then for a set the data type and the value.
base::ByteBuffer WholeFields(std::uint16_t code, fuzz::Input& input) {
  base::ByteBuffer area;
  protocol::AppendWord(area, 1);
  const std::uint8_t name = input.Byte();
  if (name < kNames.size()) {
    protocol::AppendString(area, kNames[name]);
  } else {
    AppendAnsi(area, input.Take(name - kNames.size()));
  }
  if (code == kGet) return area;
  const std::uint8_t type = input.Byte() % 4;
  protocol::AppendWord(area, type);
  if (type == 2) {
    AppendAnsi(area, input.Take(input.Byte()));
  } else {
    area.Append(input.Take(type == 0 ? 4 : 8));
  }
  return area;
}

void SendCommands(fuzz::FuzzServer& server, fuzz::Input input) {
  const std::uint8_t choice = input.Byte();
  const std::uint16_t code = (choice & 1U) == 0 ? kGet : kSet;
  if ((choice & 2U) == 0) {
    server.SendOverTcp(fuzz::FuzzServer::Framed(code, input.Rest()));
    return;
  }
  for (int i = 0; i < kMostCommands && !input.Empty(); ++i)
    server.SendOverTcp(fuzz::FuzzServer::Framed(code, WholeFields(code, input).View()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static std::array<fuzz::StandingServer, 4> sections{
      fuzz::StandingServer("ENGINE"), fuzz::StandingServer("FAULTY"), fuzz::StandingServer("SLOW"),
      fuzz::StandingServer("ABS")};
  const std::uint8_t choice = size == 0 ? std::uint8_t{0} : data[0];
  sections[(choice >> 2) % sections.size()].Serve({data, size}, SendCommands);
  return 0;
}
