// SPDX-License-Identifier: MIT
#include <array>
#include <cstdio>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/support/TempFolder.h"

namespace korval::tests {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Outcome {
  int status = -1;
  std::string text;  ///< of standard output and standard error
};

/// Runs the program to its end.
Outcome RunCheck(const std::string& arguments) {
  Outcome outcome;
  FILE* const pipe = ::popen((std::string(KORVAL_CHECK) + " " + arguments + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return outcome;
  std::array<char, 4096> piece{};
  while (const std::size_t length = std::fread(piece.data(), 1, piece.size(), pipe)) {
    outcome.text.append(piece.data(), length);
  }
  const int status = ::pclose(pipe);
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return outcome;
}

TEST(CheckProgramTest, FindsNothingInTheExamplesAndNotesWhatSinglesRound) {
  const std::string examples = KORVAL_EXAMPLES;
  const Outcome outcome =
      RunCheck("--korv-folder " + examples + "/ecu " + examples + "/asap/*.xml " + examples + "/ecu/*.xml");
  EXPECT_EQ(outcome.status, 0);
  std::istringstream lines(outcome.text);
  std::string items;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t item = line.find(": note: DataItem ");
    ASSERT_NE(item, std::string::npos) << line;
    items += line.substr(item + 17, line.find(':', item + 17) - item - 17) + " ";
  }
  EXPECT_EQ(items, "FuelConsumption OperatingTime Odometer ServiceDate SoftwareDate ");
}

TEST(CheckProgramTest, FindsNothingInTheDescriptionOfTheHostExample) {
  const std::string example = KORVAL_EXAMPLES "/host-form";
  const Outcome outcome = RunCheck("--korv-folder " + example + "/ecu " + example + "/asap/*.xml");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.text, "");
}

TEST(CheckProgramTest, PrintsFileLineAndSentenceAndExitsWithOne) {
  const TempFolder folder;
  folder.Write("a.xml", "<xml>\n<ecu url=\"b.xml\"/>\n</xml>");
  const Outcome outcome = RunCheck(folder.Path("a.xml"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.text,
            folder.Path("a.xml") + ":2: ecu: the attribute name is missing; a client cannot select it.\n");
}

TEST(CheckProgramTest, SortsFindingsByLine) {
  const TempFolder folder;
  folder.Write("a.xml", "<xml>\n<messaging>\n<Frame Name=\"A\"/>\n</messaging>\n<messaging/></xml>");
  folder.Write("b.xml", "<xml><qor:Target>\n<Function/>\n</qor:Target></xml>");
  const Outcome outcome = RunCheck(folder.Path("a.xml") + " " + folder.Path("b.xml"));
  EXPECT_EQ(outcome.status, 1);
  std::string places;
  for (std::size_t at = outcome.text.find(".xml:"); at != std::string::npos;
       at = outcome.text.find(".xml:", at + 1)) {
    places += outcome.text.substr(at - 1, 1) + outcome.text.substr(at + 5, 1) + " ";
  }
  EXPECT_EQ(places, "a3 a5 b1 b2 ");
}

TEST(CheckProgramTest, ExitsWithTwoWhenAFileCannotBeRead) {
  const TempFolder folder;
  folder.Write("a.xml", "<xml><ecu/></xml>");
  const Outcome outcome = RunCheck(folder.Path("none.xml") + " " + folder.Path("a.xml"));
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.text, HasSubstr("none.xml: there is no such file\n"));
  EXPECT_THAT(outcome.text, HasSubstr("a.xml:1: ")) << "the others are checked all the same";
}

TEST(CheckProgramTest, ExitsWithTwoForAFolder) {
  const TempFolder folder;
  EXPECT_EQ(RunCheck(folder.Path()).status, 2);
}

TEST(CheckProgramTest, ExitsWithTwoOnWrongUsage) {
  EXPECT_EQ(RunCheck("").status, 2);
  EXPECT_EQ(RunCheck("--korv-folder").status, 2);
  EXPECT_EQ(RunCheck("--korv-folder .").status, 2);
  const Outcome outcome = RunCheck("--strict a.xml");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.text, "korval-check: unknown option '--strict' (see --help)\n");
}

TEST(CheckProgramTest, PrintsHelpAndVersion) {
  const Outcome help = RunCheck("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.text, StartsWith("Usage: korval-check "));
  const Outcome version = RunCheck("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.text, "korval-check " KORVAL_VERSION "\n");
}

}  // namespace
}  // namespace korval::tests
