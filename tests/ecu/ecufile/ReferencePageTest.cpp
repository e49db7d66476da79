// SPDX-License-Identifier: MIT
// Keeps docs/ecu-file.md complete: whatever the reader looks for in a file stands in the page.
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace korval::ecu {
namespace {

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::stringstream content;
  content << file.rdbuf();
  return content.str();
}

// Names of attributes and elements as the sources of the reader spell them.
std::set<std::string> NamesInSources() {
  static const std::regex kCall(
      R"re((?:[aA]ttribute|child|children|ForEach)\([^"()]*(?:"(\w[\w:]*)"(?:, "(\w+)")?))re");
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(KORVAL_SOURCE_DIR "/ecu/ecufile")) {
    const std::string name = entry.path().filename().string();
    if (entry.path().extension() != ".cpp" || name == "ErrorFile.cpp") continue;
    const std::string source = ReadFile(entry.path());
    for (std::sregex_iterator match(source.begin(), source.end(), kCall), end; match != end; ++match) {
      names.insert((*match)[1].str());
      if ((*match)[2].matched) names.insert((*match)[2].str());
    }
  }
  return names;
}

TEST(ReferencePageTest, NamesEveryElementAndAttributeThatIsRead) {
  const std::set<std::string> names = NamesInSources();
  for (const char* known : {"FirstByte", "KeepAliveMs", "DtcPerAnswer", "Bitrate", "ReferenceData", "Text"}) {
    ASSERT_TRUE(names.contains(known)) << known;
  }
  const std::string page = ReadFile(KORVAL_SOURCE_DIR "/docs/ecu-file.md");
  for (const std::string& name : names) {
    EXPECT_NE(page.find("`" + name + "`"), std::string::npos) << name << " is not in docs/ecu-file.md";
  }
}

}  // namespace
}  // namespace korval::ecu
