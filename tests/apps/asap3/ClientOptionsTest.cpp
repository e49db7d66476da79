// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/asap3/ClientOptions.h"

namespace korval::apps {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Arguments = std::vector<std::string>;

/// The command line with a file.
Arguments OnFile(const Arguments& more) {
  Arguments arguments{"--file", "engine.xml", "--section", "ENGINE"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

TEST(ClientOptionsTest, ACommandAloneLeavesTheDefaults) {
  const ClientOptions options = ReadClientOptions({"identify"});
  EXPECT_EQ(options.command, Command::kIdentify);
  EXPECT_EQ(options.host, "127.0.0.1");
  EXPECT_EQ(options.port, 1001);
  EXPECT_EQ(options.timeout, std::chrono::milliseconds(5000));
  EXPECT_EQ(options.serial_device, "");
  EXPECT_EQ(options.serial_settings, base::SerialSettings());
  EXPECT_FALSE(options.json || options.help || options.version);
}

TEST(ClientOptionsTest, EveryOptionIsRead) {
  const ClientOptions options = ReadClientOptions({"--host",
                                                   "rig",
                                                   "--port",
                                                   "65535",
                                                   "--timeout",
                                                   "250",
                                                   "--json",
                                                   "--serial",
                                                   "/dev/ttyUSB0",
                                                   "--serial-settings",
                                                   "19200,e,7,2",
                                                   "--file",
                                                   "a.xml",
                                                   "--section",
                                                   "S",
                                                   "--address",
                                                   "16",
                                                   "--count",
                                                   "3",
                                                   "--interval",
                                                   "0",
                                                   "--csv",
                                                   "out.csv",
                                                   "watch",
                                                   "Speed",
                                                   "Torque"});
  EXPECT_EQ(options.host, "rig");
  EXPECT_EQ(options.port, 65535);
  EXPECT_EQ(options.timeout, std::chrono::milliseconds(250));
  EXPECT_TRUE(options.json);
  EXPECT_EQ(options.serial_device, "/dev/ttyUSB0");
  EXPECT_EQ(options.serial_settings.speed, 19200);
  EXPECT_EQ(options.description_file, "a.xml");
  EXPECT_EQ(options.section, "S");
  EXPECT_EQ(options.address, 16);
  EXPECT_EQ(options.count, 3U);
  EXPECT_EQ(options.interval, std::chrono::milliseconds(0));
  EXPECT_EQ(options.csv_file, "out.csv");
  EXPECT_EQ(options.command, Command::kWatch);
  EXPECT_THAT(options.names, ElementsAre("Speed", "Torque"));
}

TEST(ClientOptionsTest, OptionsMayFollowTheCommandAndTakeAnEqualsSign) {
  const ClientOptions options =
      ReadClientOptions({"get", "Speed", "--file=a=b.xml", "--section=S", "Oil", "--port=7"});
  EXPECT_EQ(options.description_file, "a=b.xml");
  EXPECT_EQ(options.port, 7);
  EXPECT_THAT(options.names, ElementsAre("Speed", "Oil"));
}

TEST(ClientOptionsTest, ANegativeNumberIsNoOption) {
  const ClientOptions options = ReadClientOptions(OnFile({"set", "Trim", "-1.5E-3"}));
  EXPECT_EQ(options.value, client::ExtendedValue(-1.5E-3F));
}

TEST(ClientOptionsTest, NothingIsAnOptionAfterTwoDashes) {
  EXPECT_THAT(ReadClientOptions(OnFile({"get", "--", "--json", "-h"})).names, ElementsAre("--json", "-h"));
}

TEST(ClientOptionsTest, TheTypeDecidesHowTheValueIsRead) {
  EXPECT_EQ(ReadClientOptions(OnFile({"xset", "N", "0.1"})).value, client::ExtendedValue(0.1F));
  EXPECT_EQ(ReadClientOptions(OnFile({"xset", "N", "0.1", "--type", "real"})).value,
            client::ExtendedValue(0.1F));
  EXPECT_EQ(ReadClientOptions(OnFile({"xset", "N", "0.1", "--type", "real8"})).value,
            client::ExtendedValue(0.1));
  EXPECT_EQ(ReadClientOptions(OnFile({"xset", "N", "0.1", "--type", "string"})).value,
            client::ExtendedValue("0.1"));
}

TEST(ClientOptionsTest, HexIsReadInEitherCase) {
  EXPECT_EQ(ReadClientOptions(OnFile({"raw", "1aF0"})).bytes.ToHex(), "1AF0");
  EXPECT_EQ(ReadClientOptions({"send", "00"}).bytes.ToHex(), "00");
}

TEST(ClientOptionsTest, HelpAndVersionNeedNoCommandAndEndTheReading) {
  EXPECT_TRUE(ReadClientOptions({"--help", "--nonsense"}).help);
  EXPECT_TRUE(ReadClientOptions({"get", "-h"}).help);
  EXPECT_TRUE(ReadClientOptions({"--version"}).version);
}

TEST(ClientOptionsTest, HelpNamesEveryOptionAndCommand) {
  for (const char* const word :
       {"--host",  "--port",    "--timeout", "--json",      "--serial ", "--serial-settings",
        "--file",  "--section", "--address", "--type",      "--count",   "--interval",
        "--csv",   "--help",    "--version", "  identify ", "  get ",    "  set ",
        "  xget ", "  xset ",   "  watch ",  "  dtc ",      "  raw ",    "  can ",
        "  send "}) {
    EXPECT_THAT(ClientHelp(), HasSubstr(word));
  }
}

struct WrongUsage {
  Arguments arguments;
  std::string said;
};

class WrongUsageTest : public testing::TestWithParam<WrongUsage> {};

TEST_P(WrongUsageTest, IsRefusedWithASentence) {
  try {
    ReadClientOptions(GetParam().arguments);
    FAIL() << "was taken";
  } catch (const UsageError& error) {
    EXPECT_EQ(error.what(), GetParam().said);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WrongUsageTest,
    testing::Values(
        WrongUsage{{}, "there is no COMMAND"}, WrongUsage{{"--json"}, "there is no COMMAND"},
        WrongUsage{
            {"fetch"},
            "'fetch' is no command; there are identify, get, set, xget, xset, watch, dtc, raw, can, send"},
        WrongUsage{{"--frobnicate", "identify"}, "'--frobnicate' is no option"},
        WrongUsage{{"-x", "identify"}, "'-x' is no option"},
        WrongUsage{{"identify", "--port"}, "--port needs a value after it"},
        WrongUsage{{"identify", "--json=1"}, "--json takes no value"},
        WrongUsage{{"identify", "--port", "0"}, "--port takes a whole number from 1 to 65535, not '0'"},
        WrongUsage{{"identify", "--port", "65536"},
                   "--port takes a whole number from 1 to 65535, not '65536'"},
        WrongUsage{{"identify", "--port", "12x"}, "--port takes a whole number from 1 to 65535, not '12x'"},
        WrongUsage{{"identify", "--timeout", "0"},
                   "--timeout takes a whole number from 1 to 3600000, not '0'"},
        WrongUsage{{"identify", "--host", ""}, "--host must not be empty"},
        WrongUsage{{"identify", "--serial="}, "--serial must not be empty"},
        WrongUsage{{"identify", "--serial-settings", "fast"},
                   "Serial settings 'fast' are wrong: they have four parts with commas between them (as in "
                   "9600,n,8,1)"},
        WrongUsage{{"identify", "now"}, "identify takes nothing"},
        WrongUsage{{"identify", "--file", "a.xml"},
                   "--file does not go with identify, which selects no file"},
        WrongUsage{{"get", "Speed"}, "get needs --file DESCRIPTION and --section NAME"},
        WrongUsage{{"get", "Speed", "--file", "a.xml"}, "get needs --file DESCRIPTION and --section NAME"},
        WrongUsage{{"dtc", "--section", "S"}, "dtc needs --file DESCRIPTION and --section NAME"},
        WrongUsage{OnFile({"get"}), "get takes one NAME or more"},
        WrongUsage{OnFile({"get", "N", "--address", "65536"}),
                   "--address takes a whole number from 0 to 65535, not '65536'"},
        WrongUsage{OnFile({"get", "N", "--count", "3"}), "--count goes with watch only"},
        WrongUsage{OnFile({"set", "N", "1", "--type", "real"}), "--type goes with xset only"},
        WrongUsage{OnFile({"set", "N"}), "set takes a NAME and a VALUE"},
        WrongUsage{OnFile({"set", "N", "1", "2"}), "set takes a NAME and a VALUE"},
        WrongUsage{OnFile({"set", "N", "on"}), "VALUE is a number such as 12.5 or 1E-05, not 'on'"},
        WrongUsage{OnFile({"set", "N", "nan"}), "VALUE is a number such as 12.5 or 1E-05, not 'nan'"},
        WrongUsage{OnFile({"set", "N", "1e39"}), "VALUE 1e39 is too large for a real"},
        WrongUsage{OnFile({"xset", "N", "on"}),
                   "VALUE is a number such as 12.5 or 1E-05, not 'on'; a text needs --type string"},
        WrongUsage{OnFile({"xset", "N", "1", "--type", "word"}),
                   "--type takes real, real8 or string, not 'word'"},
        WrongUsage{OnFile({"watch", "N", "--count", "0"}),
                   "--count takes a whole number from 1 to 2147483647, not '0'"},
        WrongUsage{OnFile({"watch", "N", "--interval", "-1"}),
                   "--interval takes a whole number from 0 to 3600000, not '-1'"},
        WrongUsage{OnFile({"watch", "N", "M", "qor(N)"}),
                   "watch shows 'qor(N)' once: leave the second one out"},
        WrongUsage{OnFile({"raw", "218"}),
                   "HEX is two hexadecimal digits a byte, at least one byte, such as 2180, not '218'"},
        WrongUsage{{"send", ""},
                   "HEX is two hexadecimal digits a byte, at least one byte, such as 2180, not ''"},
        WrongUsage{{"send", "0x00"},
                   "HEX is two hexadecimal digits a byte, at least one byte, such as 2180, not '0x00'"},
        WrongUsage{OnFile({"can"}), "can takes one text of FRAMES"}));

}  // namespace
}  // namespace korval::apps
