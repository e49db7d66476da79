// SPDX-License-Identifier: MIT
// Both transports, the dispatcher, every command and the session library behind them, driven by any events in
// any order, in the middle of waits too.
#include "fuzz/Events.h"
#include "fuzz/FuzzServer.h"
#include "fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
  fuzz::FuzzServer server;
  fuzz::Input input(data, size);
  fuzz::PlayEvents(server, input);
  server.RequireGoodSession();
  return 0;
}
