// SPDX-License-Identifier: MIT
// What hangs around the server - locks, readers, pipes, devices, people at the keyboard - never hangs the
// server.
#include <csignal>
#include <fstream>
#include <sstream>

#include "tests/system/ServerBench.h"

namespace korval::tests {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class NothingHangsTest : public ServerBench {
 protected:
  /// Options with which the server chooses the port of the vehicle itself, and stores its choice.
  std::vector<std::string> OptionsThatStore() const {
    std::vector<std::string> options = SafeOptions();
    for (const std::string& option :
         {std::string("--tcp-port"), std::string("0"), std::string("--asap-folder"), folder_.Path("asap"),
          std::string("--korv-folder"), folder_.Path("korv")})
      options.push_back(option);
    return options;
  }
  std::string StoredSettings() const {
    std::ifstream file(folder_.Path("settings.ini"));
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }
};

TEST_F(NothingHangsTest, ALockOfTheSettingsThatWasLeftOverIsReportedAndTheServerRuns) {
  for (const std::string lock : {"", "4711\nkorval-asap-server\nanother-computer\n\n\n"}) {
    SCOPED_TRACE(lock);
    folder_.Write("settings.ini.lock", lock);
    folder_.Write("install.ini.lock", lock);
    server_.emplace(OptionsThatStore(), folder_.Path("home"));
    port_ = server_->WaitForPort();
    ExpectGoodSession(Connect());
    StopInOrder();
    EXPECT_THAT(server_->StandardError(),
                AllOf(HasSubstr("settings.ini is locked"), HasSubstr("settings.ini.lock")));
    EXPECT_EQ(StoredSettings(), "");
  }
}

}  // namespace
}  // namespace korval::tests
