// SPDX-License-Identifier: MIT
// The serial line alone: any bytes in any pieces, with pauses between them. Each piece is a byte with its
// length and, in bit 80, a pause that the watchdog notices before it.
#include <chrono>

#include "fuzz/Input.h"
#include "fuzz/StandingServer.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

constexpr std::uint8_t kPause = 0x80;
// More of them find nothing new, only more slowly.
constexpr int kMostPieces = 32;
constexpr std::chrono::milliseconds kLongerThanWatchdog{1100};

void SendPieces(fuzz::FuzzServer& server, fuzz::Input input) {
  for (int i = 0; i < kMostPieces && !input.Empty(); ++i) {
    const std::uint8_t piece = input.Byte();
    if ((piece & kPause) != 0) server.Advance(kLongerThanWatchdog);
    server.SendOverSerial(base::ByteBuffer(input.Take(piece & 0x7FU)));
  }
  // The next input finds no half frame of this one.
  server.Advance(kLongerThanWatchdog);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::StandingServer standing("ENGINE");
  standing.Serve({data, size}, SendPieces);
  return 0;
}
