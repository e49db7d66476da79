// SPDX-License-Identifier: MIT
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/check/FileCheck.h"

namespace korval::tests {
namespace {

using ::testing::HasSubstr;

/// The one finding in a file with this content.
apps::Finding OnlyFinding(const std::string& bytes) {
  apps::CheckedFile file("file.xml", bytes);
  apps::CheckFile(file, std::nullopt);
  const auto findings = file.Findings();
  EXPECT_EQ(findings.size(), 1U);
  return findings.empty() ? apps::Finding{0, ""} : findings.front();
}

std::string Utf16(const std::string& ascii) {
  std::string bytes = "\xFF\xFE";
  for (const char character : ascii) bytes.append({character, '\0'});
  return bytes;
}

constexpr char kWrongBaud[] = "\n<xml><qor:Target>\n<Function Name=\"A\"\n Baud=\"x\"/></qor:Target></xml>";

TEST(FileCheckTest, TellsTheLineInWhichXmlCannotBeRead) {
  const auto finding = OnlyFinding("<xml>\n<ecu>\n</ecux>\n</xml>");
  EXPECT_EQ(finding.line, 3U);
  EXPECT_THAT(finding.sentence, HasSubstr("This is no XML that can be read"));
  EXPECT_THAT(finding.sentence, HasSubstr("(column 3)"));
}

TEST(FileCheckTest, TellsAnEncodingThatIsNotUnderstood) {
  const auto finding = OnlyFinding("<?xml version=\"1.0\" encoding=\"ISO-8859-2\"?>\n<xml><ecu/></xml>");
  EXPECT_EQ(finding.line, 1U);
  EXPECT_THAT(finding.sentence, HasSubstr("The encoding 'ISO-8859-2' is not understood"));
}

TEST(FileCheckTest, TakesIso8859_15) {
  apps::CheckedFile file(
      "file.xml",
      "<?xml version=\"1.0\" encoding=\"ISO-8859-15\"?><xml><messaging><!-- \xA4 --></messaging></xml>");
  apps::CheckFile(file, std::nullopt);
  EXPECT_THAT(file.Findings(), ::testing::IsEmpty());
}

TEST(FileCheckTest, TellsAnEmptyFile) {
  EXPECT_THAT(OnlyFinding("").sentence, HasSubstr("No document element found"));
}

TEST(FileCheckTest, TellsARootOfSomethingElse) {
  EXPECT_EQ(OnlyFinding("<!-- -->\n<html/>").line, 2U);
  EXPECT_THAT(OnlyFinding("<html/>").sentence, HasSubstr("the root element must be xml"));
}

TEST(FileCheckTest, TellsARootWithoutAnythingKnown) {
  EXPECT_THAT(OnlyFinding("<xml><Target/></xml>").sentence, HasSubstr("nor qor:Target (an ECU file)"));
}

TEST(FileCheckTest, CountsLinesBehindCharactersOfWindows1252) {
  const std::string head =
      "<?xml version=\"1.0\" encoding=\"windows-1252\"?><!-- \xB0\x80\xB0\x80\xB0\x80 -->";
  EXPECT_EQ(OnlyFinding(head + kWrongBaud).line, 3U);
}

TEST(FileCheckTest, CountsLinesOfUtf16) {
  EXPECT_EQ(OnlyFinding(Utf16(std::string("<!-- -->") + kWrongBaud)).line, 3U);
}

TEST(FileCheckTest, TellsAByteThatIsNoUtf8) {
  const auto finding = OnlyFinding("<xml>\n<messaging><!-- \xB0 --></messaging></xml>");
  EXPECT_EQ(finding.line, 2U);
  EXPECT_THAT(finding.sentence, HasSubstr("a byte that is no UTF-8"));
}

TEST(FileCheckTest, TakesTheReplacementCharacterOfUtf8AsACharacter) {
  apps::CheckedFile file("file.xml", "<xml><messaging><!-- \xEF\xBF\xBD --></messaging></xml>");
  apps::CheckFile(file, std::nullopt);
  EXPECT_THAT(file.Findings(), ::testing::IsEmpty());
}

TEST(FileCheckTest, TellsUtf8ThatIsDeclaredAsWindows1252) {
  const auto finding = OnlyFinding(
      "<?xml version=\"1.0\" encoding=\"windows-1252\"?>\n<xml>\n<messaging><!-- \xC2\xB0 "
      "--></messaging></xml>");
  EXPECT_EQ(finding.line, 3U);
  EXPECT_THAT(finding.sentence, HasSubstr("write encoding=\"UTF-8\" there"));
}

}  // namespace
}  // namespace korval::tests
