// SPDX-License-Identifier: MIT
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PartOfProgram.h"
#include "base/Failure.h"
#include "tests/support/TempFolder.h"

namespace korval::apps {
namespace {

using ::testing::HasSubstr;

const std::filesystem::path kProgram = KORVAL_ASAP_SERVER;
constexpr char kPower[] = "korval-asap-server-power";

std::string Refused(const std::function<void()>& step) {
  try {
    step();
  } catch (const base::Failure& failure) {
    return failure.Description();
  }
  return "";
}

TEST(PartOfProgramTest, LiesBesideTheProgramThatWasBuilt) {
  const PartOfProgram part(kPower, kProgram.parent_path());
  EXPECT_NE(part.Find<void()>("KorvalEndSystem"), nullptr);
}

TEST(PartOfProgramTest, LiesInAFolderOfItsOwnWhereItWasInstalled) {
  const tests::TempFolder folder;
  std::filesystem::create_directory(folder.Path("bin"));
  const std::filesystem::path parts = folder.Path("bin/" KORVAL_PARTS_FOLDER);
  std::filesystem::create_directories(parts.lexically_normal());
  std::filesystem::copy(kProgram.parent_path() / "korval-asap-server-power.so", parts);
  const PartOfProgram part(kPower, folder.Path("bin"));
  EXPECT_NE(part.Find<void()>("KorvalEndSystem"), nullptr);
}

TEST(PartOfProgramTest, LetsOutWhatTheProgramCallsAndNothingElse) {
  const PartOfProgram part(kPower, kProgram.parent_path());
  EXPECT_THAT(Refused([&] { part.Find<void()>("KorvalRunWindow"); }),
              HasSubstr("has no function KorvalRunWindow"));
}

TEST(PartOfProgramTest, OneThatIsMissingIsNamed) {
  const tests::TempFolder folder;
  EXPECT_THAT(Refused([&] { const PartOfProgram part(kPower, folder.Path()); }),
              HasSubstr("korval-asap-server-power.so"));
}

// On a bus that is not there, so that nothing can come of it.
TEST(PartOfProgramTest, TheRefusalOfThePowerServiceComesBackInItsOwnWords) {
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  const PartOfProgram part(kPower, kProgram.parent_path());
  std::string refusal;
  part.Find<void(std::uint32_t, std::string&)>("KorvalEndSystem")(0, refusal);
  EXPECT_THAT(refusal, HasSubstr("the system's power service does not shut down the computer: "));
}

}  // namespace
}  // namespace korval::apps
