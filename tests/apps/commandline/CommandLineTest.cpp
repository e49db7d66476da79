// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/commandline/CommandLine.h"

namespace korval::apps {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Arguments = std::vector<std::string>;
using Wanted = CommandLine::Wanted;

/// A program with an option of each kind.
struct Program {
  Program() {
    line.Flag("--flag", "A flag.", flag);
    line.Heading("Values");
    line.Value("--value", "TEXT", "A value.", [this](const std::string& text) { values.push_back(text); });
    line.EachValue("--each", "TEXT", "Values.", [this](const std::string& text) { each.push_back(text); });
    line.Words(words);
  }

  CommandLine line{{.introduction = "prog is a program.",
                    .usage = "prog [OPTIONS] WORD...",
                    .description = "It does nothing.",
                    .ending = "Exit status: 0."}};
  bool flag = false;
  Arguments values;
  Arguments each;
  Arguments words;
};

TEST(CommandLineTest, OptionsAndWordsComeInAnyOrder) {
  Program program;
  EXPECT_EQ(program.line.Read({"a", "--value", "v", "b", "--flag", "c"}), Wanted::kRun);
  EXPECT_TRUE(program.flag);
  EXPECT_THAT(program.values, ElementsAre("v"));
  EXPECT_THAT(program.words, ElementsAre("a", "b", "c"));
}

TEST(CommandLineTest, AValueMayBeEmptyBeginWithADashOrHoldBracketsCommasAndEqualsSigns) {
  for (const std::string value : {"", "-1", "--flag", "[a,b]", "a=b", "{}", "%%", " "}) {
    Program apart;
    apart.line.Read({"--value", value, "--each", value});
    EXPECT_THAT(apart.values, ElementsAre(value));
    EXPECT_THAT(apart.each, ElementsAre(value));
    EXPECT_FALSE(apart.flag);
    Program together;
    together.line.Read({"--value=" + value, "--each=" + value, "word"});
    EXPECT_THAT(together.values, ElementsAre(value));
    EXPECT_THAT(together.each, ElementsAre(value));
    EXPECT_THAT(together.words, ElementsAre("word"));
  }
}

TEST(CommandLineTest, OfARepeatedOptionTheLastValueCountsOrEach) {
  Program program;
  program.line.Read({"--value", "1", "--each", "a", "--flag", "--value=2", "--flag", "--each=b"});
  EXPECT_THAT(program.values, ElementsAre("2"));
  EXPECT_THAT(program.each, ElementsAre("a", "b"));
  EXPECT_TRUE(program.flag);
}

TEST(CommandLineTest, WordsMayLookLikeMuch) {
  Program program;
  program.line.Read({"-1", "-.5E3", "-", "[a,b]", "", "--", "--flag", "-h", "--"});
  EXPECT_THAT(program.words, ElementsAre("-1", "-.5E3", "-", "[a,b]", "", "--flag", "-h", "--"));
  EXPECT_FALSE(program.flag);
}

TEST(CommandLineTest, HelpAndVersionEndTheReading) {
  for (const std::string option : {"-h", "--help"}) {
    EXPECT_EQ(Program().line.Read({"--flag", option, "--nonsense", "--value"}), Wanted::kHelp);
  }
  for (const std::string option : {"-V", "--version"}) {
    EXPECT_EQ(Program().line.Read({"word", option, "--help"}), Wanted::kVersion);
  }
}

TEST(CommandLineTest, TheHelpHasOneStyle) {
  EXPECT_EQ(Program().line.Help(),
            "prog is a program.\n"
            "\n"
            "Usage: prog [OPTIONS] WORD...\n"
            "It does nothing.\n"
            "\n"
            "Options:\n"
            "  --flag                        A flag.\n"
            "\n"
            "Values:\n"
            "  --value TEXT                  A value.\n"
            "  --each TEXT                   Values.\n"
            "  -h,--help                     Prints this help.\n"
            "  -V,--version                  Prints the version.\n"
            "\n"
            "Exit status: 0.\n");
}

TEST(CommandLineTest, ARefusedValueIsTheTakersSentence) {
  CommandLine line({.usage = "prog"});
  line.EachValue("--number", "N", "A number.",
                 [](const std::string& text) { ReadWholeNumber("--number", text, -1, 5); });
  try {
    line.Read({"--number", "5", "--number", "6"});
    FAIL() << "was taken";
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "--number takes a whole number from -1 to 5, not '6'");
  }
}

std::string SaidOf(const Arguments& arguments) {
  Program program;
  CommandLine wordless({.usage = "prog"});
  try {
    program.line.Read(arguments);
    EXPECT_THAT(program.values, IsEmpty());
    wordless.Read(arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(CommandLineTest, WhatCannotBeFollowedIsRefusedWithASentence) {
  EXPECT_EQ(SaidOf({"--flags"}), "unknown option '--flags'");
  EXPECT_EQ(SaidOf({"--flags=1"}), "unknown option '--flags'");
  EXPECT_EQ(SaidOf({"--fla"}), "unknown option '--fla'");
  EXPECT_EQ(SaidOf({"-f"}), "unknown option '-f'");
  EXPECT_EQ(SaidOf({"-hV"}), "unknown option '-hV'");
  EXPECT_EQ(SaidOf({"-flag"}), "unknown option '-flag'");
  EXPECT_EQ(SaidOf({"--flag=1"}), "--flag takes no value");
  EXPECT_EQ(SaidOf({"--flag="}), "--flag takes no value");
  EXPECT_EQ(SaidOf({"word", "--value"}), "--value needs a value after it");
  EXPECT_EQ(SaidOf({"word"}), "unexpected argument 'word'");
}

TEST(CommandLineTest, AnUnknownOptionIsKnownByItsName) {
  try {
    Program().line.Read({"--nonsense=1"});
    FAIL() << "was taken";
  } catch (const UnknownOption& unknown) {
    EXPECT_EQ(unknown.Name(), "--nonsense");
  }
}

}  // namespace
}  // namespace korval::apps
