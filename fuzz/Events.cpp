// SPDX-License-Identifier: MIT
#include "fuzz/Events.h"

#include <array>
#include <chrono>
#include <functional>

namespace korval::fuzz {
namespace {

using Event = std::function<void()>;
using Milliseconds = std::chrono::milliseconds;

constexpr std::uint8_t kPutOff = 0x80;
constexpr std::array<std::uint16_t, 12> kCodes{2, 20, 3, 12, 13, 14, 15, 19, 50, 114, 115, 4};
constexpr std::array<const char*, 4> kSections{"ENGINE", "SLOW", "FAULTY", "ABS"};
// Longer scripts find nothing that shorter ones do not, only more slowly.
constexpr int kMostEvents = 64;

base::ByteBuffer Bytes(Input& input) { return base::ByteBuffer(input.Take(input.Byte())); }

base::ByteBuffer Frame(Input& input) {
  const std::uint16_t code = kCodes[input.Byte() % kCodes.size()];
  return FuzzServer::Framed(code, input.Take(input.Byte()));
}

Event NextEvent(FuzzServer& server, std::uint8_t kind, Input& input) {
  switch (kind % 11) {
    case 0:
      return [&server, bytes = Bytes(input)] { server.SendOverTcp(bytes); };
    case 1:
      return [&server, frame = Frame(input)] { server.SendOverTcp(frame); };
    case 2:
      return [&server, bytes = Bytes(input)] { server.SendOverSerial(bytes); };
    case 3:
      return [&server, frame = Frame(input)] { server.SendOverSerial(frame); };
    case 4:
      return [&server] { server.ConnectClient(); };
    case 5:
      return [&server] { server.LoseClient(); };
    case 6:
      return [&server, section = kSections[input.Byte() % kSections.size()]] { server.Select(section); };
    case 7:
      return [&server, event = input.Byte()] { server.Report(event); };
    case 8:
      return [&server, span = Milliseconds(10 * input.Byte())] { server.Advance(span); };
    case 9:
      return [&server] { server.Reset(); };
    default:
      return [&server] { server.Terminate(); };
  }
}

}  // namespace

void PlayEvents(FuzzServer& server, Input& input) {
  for (int i = 0; i < kMostEvents && !input.Empty(); ++i) {
    const std::uint8_t kind = input.Byte();
    const bool put_off = (kind & kPutOff) != 0;
    const Milliseconds delay{put_off ? input.Byte() : 0};
    const Event event = NextEvent(server, kind & 0x7FU, input);
    put_off ? server.Later(delay, event) : event();
  }
}

}  // namespace korval::fuzz
