// SPDX-License-Identifier: MIT
// The serial line alone: any bytes in any pieces, with pauses between them. Each piece is a byte with its
// length and, in bit 80, a pause that the watchdog notices before it.
#include "fuzz/FuzzServer.h"
#include "fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
  constexpr std::uint8_t kPause = 0x80;
  fuzz::FuzzServer server;
  server.Select("ENGINE");
  fuzz::Input input(data, size);
  while (!input.Empty()) {
    const std::uint8_t piece = input.Byte();
    if ((piece & kPause) != 0) server.Advance(std::chrono::milliseconds(1100));
    server.SendOverSerial(base::ByteBuffer(input.Take(piece & 0x7FU)));
  }
  server.RequireGoodSession();
  return 0;
}
