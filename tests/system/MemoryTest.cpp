// SPDX-License-Identifier: MIT
// The optimised server does not grow, whatever it is sent. (The sanitizers keep freed memory on purpose, so a
// build with them says nothing about it.)
#include <filesystem>

#include "tests/system/HostileBench.h"

namespace korval::tests {
namespace {

constexpr long kKilobytesOfNoise = 1024;
constexpr long kMostKilobytes = 16 * 1024;

class MemoryTest : public HostileBench {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(KORVAL_ASAP_SERVER))
      GTEST_SKIP() << KORVAL_ASAP_SERVER << " is not built (cmake --build --preset release)";
  }
};

TEST_F(MemoryTest, DoesNotGrowOverThousandsOfBadFrames) {
  WriteDescription("cut.xml", "<xml><ecu");
  Start();
  const RawClient client = Connect();
  ByteSource source(99);
  const auto throw_many = [&](int rounds) {
    for (int round = 0; round < rounds; ++round) {
      Throw(client, "bad" + source.Bytes(200));
      Throw(client, source.DamagedFrame());
      Throw(client, source.ValidFrame());
      if (round % 25 == 0) {
        Succeed(client, Request(kExit));
        OpenEngine(client);
        ExpectSelectError(client, "cut.xml", "MAP");
      }
    }
  };
  throw_many(300);
  const long before = server_->ResidentKilobytes();
  throw_many(2000);
  EXPECT_LE(server_->ResidentKilobytes(), before + kKilobytesOfNoise);
  ExpectGoodSession(client);
}

TEST_F(MemoryTest, IsSmallWithTheExamples) {
  Start({"--asap-folder", KORVAL_EXAMPLES "/asap", "--korv-folder", KORVAL_EXAMPLES "/ecu"});
  const RawClient client = Connect();
  Identify(client);
  const unsigned abs = Select(client, "abs.xml", "ABS");
  const unsigned engine = Select(client, "engine.xml", "ENGINE");
  for (int i = 0; i < 100; ++i) Succeed(client, GetRequest(engine, "Speed"));
  EXPECT_NE(abs, engine);
  EXPECT_LE(server_->ResidentKilobytes(), kMostKilobytes);
  Succeed(client, Request(kExit));
}

}  // namespace
}  // namespace korval::tests
