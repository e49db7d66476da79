// SPDX-License-Identifier: MIT
// Any bytes as CAN messaging file; what is loaded can be used as function CAN.
#include <fstream>
#include <memory>
#include <string>

#include "base/Failure.h"
#include "fuzz/DriveEcu.h"
#include "fuzz/FuzzServer.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"
#include "tests/support/Await.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
  const std::string path = fuzz::FuzzFolder() + "/fuzzed.xml";
  std::ofstream(path, std::ios::binary) << fuzz::TextOf(base::ByteView(data, size));
  const auto session = fuzz::SimulatedSession(std::make_shared<tests::ManualEventLoop>());
  tests::Await(session->SetPort(session->Port()));
  try {
    const auto can = session->EcuByFunction("CAN");
    tests::Await(can->LoadMessaging(path));
    fuzz::DriveEcu(*can);
  } catch (const base::Failure& failure) {
    fuzz::Require(!failure.Description().empty(), "a refusal says why");
  }
  return 0;
}
