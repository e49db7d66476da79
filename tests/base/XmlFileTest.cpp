// SPDX-License-Identifier: MIT
#include <filesystem>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "base/XmlFile.h"
#include "tests/support/NamedPipe.h"
#include "tests/support/TempFolder.h"

namespace korval::base {
namespace {

using tests::TempFolder;

constexpr std::string_view kDegree =
    "\xC2\xB0"
    "C";

std::string UnitOf(const XmlDocument& document) { return document->child("Item").attribute("Unit").value(); }

std::string UnitIn(std::string_view content) {
  const TempFolder folder;
  folder.Write("a.xml", content);
  return UnitOf(LoadXmlFile(folder.Path("a.xml")));
}

/// The ASCII text in UTF-16 without byte order mark.
std::string Utf16(std::string_view ascii, bool big_endian) {
  std::string bytes;
  for (const char character : ascii) {
    if (big_endian) bytes += '\0';
    bytes += character;
    if (!big_endian) bytes += '\0';
  }
  return bytes;
}

/// The same in UTF-32.
std::string Utf32(std::string_view ascii, bool big_endian) {
  std::string bytes;
  for (const char character : ascii) {
    if (big_endian) bytes.append(3, '\0');
    bytes += character;
    if (!big_endian) bytes.append(3, '\0');
  }
  return bytes;
}

std::int32_t FailureNumberOf(const std::filesystem::path& path) {
  try {
    LoadXmlFile(path);
  } catch (const Failure& failure) {
    EXPECT_NE(failure.Description(), "");
    return failure.Number();
  }
  return 0;
}

TEST(XmlFile, ReadsUtf8WithAndWithoutDeclarationAndMark) {
  EXPECT_EQ(UnitIn("<Item Unit='\xC2\xB0"
                   "C'/>"),
            kDegree);
  EXPECT_EQ(UnitIn("\xEF\xBB\xBF<Item Unit='\xC2\xB0"
                   "C'/>"),
            kDegree);
  EXPECT_EQ(UnitIn("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Item Unit='\xC2\xB0"
                   "C'/>"),
            kDegree);
}

TEST(XmlFile, ReadsLatin1ByDeclaration) {
  EXPECT_EQ(UnitIn("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><Item Unit='\xB0"
                   "C'/>"),
            kDegree);
}

TEST(XmlFile, ReadsWindows1252ByDeclarationInAnyCaseAndQuotes) {
  const std::string euro_and_degree =
      "\xE2\x82\xAC/\xC2\xB0"
      "C";
  for (const char* declaration :
       {"<?xml version=\"1.0\" encoding=\"windows-1252\"?>", "<?xml version='1.0' encoding='windows-1252'?>",
        "<?xml version=\"1.0\" encoding=\"Windows-1252\" standalone=\"yes\"?>",
        "<?xml version=\"1.0\" encoding = \"WINDOWS-1252\" ?>"})
    EXPECT_EQ(UnitIn(std::string(declaration) + "\r\n<Item Unit='\x80/\xB0"
                                                "C'/>"),
              euro_and_degree)
        << declaration;
}

TEST(XmlFile, ReadsIso8859_15ByDeclaration) {
  EXPECT_EQ(UnitIn("<?xml version=\"1.0\" encoding=\"ISO-8859-15\"?><Item Unit='\xA4/\xB0\xBD'/>"),
            "\u20AC/\u00B0\u0153");
  EXPECT_EQ(UnitIn("\n<?xml version='1.0' encoding='iso-8859-15'?><Item Unit='\xA4'/>"), "\u20AC");
}

TEST(XmlFile, AnEncodingThatIsNotUnderstoodIsRefusedByItsName) {
  for (const char* name : {"ISO-8859-2", "Shift_JIS", "windows-1251", "KOI8-R"}) {
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"" + std::string(name) + "\"?><Item Unit='\xB0'/>";
    const TempFolder folder;
    folder.Write("a.xml", text);
    try {
      LoadXmlFile(folder.Path("a.xml"));
      ADD_FAILURE() << name;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Number(), 1);
      EXPECT_EQ(
          failure.Description().find("The encoding '" + std::string(name) + "' is not understood (a.xml)"),
          0U)
          << failure.Description();
    }
    EXPECT_THROW(LoadXmlText(text, "a.xml"), Failure);
  }
}

TEST(XmlFile, ReadsUtf32OfBothByteOrders) {
  const std::string text = "<Item Unit='rpm'/>";
  for (const bool big_endian : {false, true}) {
    const std::string wide = Utf32(text, big_endian);
    EXPECT_EQ(UnitIn(wide), "rpm");
    EXPECT_EQ(UnitIn((big_endian ? std::string("\0\0\xFE\xFF", 4) : std::string("\xFF\xFE\0\0", 4)) + wide),
              "rpm");
  }
}

TEST(XmlFile, AMistakeIsNamedByLineAndColumnInEveryEncoding) {
  const std::string text = "<xml>\r\n  <a b='\xC2\xB0'/>\r\n  <c d=e/>\r\n</xml>";
  const std::string place = "(a.xml, line 3, column ";
  const auto description_of = [](std::string_view content) {
    const TempFolder folder;
    folder.Write("a.xml", content);
    try {
      LoadXmlFile(folder.Path("a.xml"));
      return std::string("read");
    } catch (const Failure& failure) {
      return failure.Description();
    }
  };
  const std::string in_utf8 = description_of(text);
  EXPECT_NE(in_utf8.find(place + "8)"), std::string::npos) << in_utf8;
  EXPECT_EQ(description_of("\xEF\xBB\xBF" + text), in_utf8);
  std::string ascii = text;
  ascii.replace(ascii.find("\xC2"), 2, "x");
  EXPECT_EQ(description_of(Utf16(ascii, false)), in_utf8);
  EXPECT_EQ(description_of(Utf16(ascii, true)), in_utf8);
  const std::string declared = "<?xml version='1.0' encoding='windows-1252'?>" + ascii;
  EXPECT_NE(description_of(declared).find(place + "8)"), std::string::npos) << description_of(declared);
}

TEST(XmlFile, AnEncodingNameOutsideTheDeclarationMeansNothing) {
  EXPECT_EQ(UnitIn("<!-- encoding=\"windows-1252\" --><Item Unit='\xC2\xB0"
                   "C'/>"),
            kDegree);
}

TEST(XmlFile, ReadsUtf16OfBothByteOrders) {
  const std::string text = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><Item Unit='rpm'/>";
  EXPECT_EQ(UnitIn("\xFF\xFE" + Utf16(text, false)), "rpm");
  EXPECT_EQ(UnitIn("\xFE\xFF" + Utf16(text, true)), "rpm");
  EXPECT_EQ(UnitIn(Utf16(text, false)), "rpm");
  EXPECT_EQ(UnitIn(Utf16(text, true)), "rpm");
}

TEST(XmlFile, TheSameTextsAreReadFromMemory) {
  EXPECT_EQ(UnitOf(LoadXmlText("<Item Unit='\xC2\xB0"
                               "C'/>",
                               "a.xml")),
            kDegree);
  EXPECT_EQ(UnitOf(LoadXmlText("<?xml version='1.0' encoding='windows-1252'?><Item Unit='\xB0"
                               "C'/>",
                               "a.xml")),
            kDegree);
}

TEST(XmlFile, AMissingFileIsFailure1AndNamesThePath) {
  const TempFolder folder;
  try {
    LoadXmlFile(folder.Path("missing.xml"));
    FAIL() << "was not refused";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), 1);
    EXPECT_NE(failure.Description().find("missing.xml"), std::string::npos) << failure.Description();
  }
}

TEST(XmlFile, WhatIsNoPlainFileIsFailure1AndIsNeverWaitedFor) {
  const TempFolder folder;
  EXPECT_EQ(FailureNumberOf(folder.Path()), 1);
  EXPECT_EQ(FailureNumberOf("/dev/zero"), 1);
  const std::string pipe = folder.Path("pipe.xml");
  if (!tests::MakeNamedPipe(pipe)) GTEST_SKIP() << "no pipes among the files";
  EXPECT_EQ(FailureNumberOf(pipe), 1);
}

TEST(XmlFile, AnOversizedFileIsFailure1AndIsNotRead) {
  const TempFolder folder;
  folder.Write("huge.xml", "<Item/>");
  std::filesystem::resize_file(folder.Path("huge.xml"), kMaxXmlFileSize + 1);  // sparse, takes no disk
  EXPECT_EQ(FailureNumberOf(folder.Path("huge.xml")), 1);
}

TEST(XmlFile, EmptyAndDamagedFilesAreRefusedWithTheParsersCode) {
  const TempFolder folder;
  const struct {
    const char* what;
    std::string_view content;
    pugi::xml_parse_status code;
  } rows[] = {
      {"empty", "", pugi::status_no_document_element},
      {"blank", " \r\n", pugi::status_no_document_element},
      {"text only", "hello", pugi::status_no_document_element},
      {"never closed", "<Item><A>", pugi::status_end_element_mismatch},
      {"closed by another", "<Item><A></B></Item>", pugi::status_end_element_mismatch},
      {"bad attribute", "<Item Unit=rpm/>", pugi::status_bad_attribute},
      {"cut inside a comment", "<Item/><!-- ", pugi::status_bad_comment},
  };
  for (const auto& row : rows) {
    folder.Write("a.xml", row.content);
    EXPECT_EQ(FailureNumberOf(folder.Path("a.xml")), static_cast<std::int32_t>(row.code)) << row.what;
    EXPECT_THROW(LoadXmlText(row.content, "a.xml"), Failure) << row.what;
  }
}

TEST(XmlFile, TheFailureOfATextNamesIt) {
  try {
    LoadXmlText("<Item>", "frames.xml");
    FAIL() << "was not refused";
  } catch (const Failure& failure) {
    EXPECT_NE(failure.Description().find("frames.xml"), std::string::npos) << failure.Description();
  }
}

TEST(XmlFile, EveryBeginningOfADocumentIsReadOrRefused) {
  const std::string whole =
      "<?xml version=\"1.0\" encoding=\"windows-1252\"?><!DOCTYPE a [<!ENTITY b \"c\">]>"
      "<!-- d --><Item Unit='&#176;C'><![CDATA[e]]><?f g?>&amp;</Item>";
  int read = 0;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    try {
      LoadXmlText(std::string_view(whole).substr(0, length), "a.xml");
      ++read;
    } catch (const Failure& failure) {
      EXPECT_NE(failure.Number(), 0);
    }
  }
  EXPECT_EQ(read, 1);
}

TEST(XmlFile, AnySingleByteIsReadOrRefused) {
  for (int position = 0; position < 8; ++position) {
    for (int value = 0; value < 256; ++value) {
      std::string content = "<Item/> ";
      content[static_cast<std::size_t>(position)] = static_cast<char>(value);
      try {
        EXPECT_NE(LoadXmlText(content, "a.xml"), nullptr);
      } catch (const Failure& failure) {
        EXPECT_NE(failure.Number(), 0);
      }
    }
  }
}

TEST(XmlFile, DeepNestingDoesNotExhaustTheStack) {
  constexpr std::size_t depth = 1000000;
  std::string content;
  for (std::size_t i = 0; i < depth; ++i) content += "<a>";
  EXPECT_THROW(LoadXmlText(content, "a.xml"), Failure);
  for (std::size_t i = 0; i < depth; ++i) content += "</a>";
  try {
    EXPECT_NE(LoadXmlText(content, "a.xml"), nullptr);
  } catch (const Failure& failure) {
    EXPECT_NE(failure.Number(), 0);
  }
}

TEST(XmlFile, EntitiesOfADocumentTypeAreNotExpanded) {
  std::string content = "<!DOCTYPE a [<!ENTITY e0 \"0123456789\">";
  for (int i = 1; i < 20; ++i) {
    const std::string inner = "&e" + std::to_string(i - 1) + ";";
    content += "<!ENTITY e" + std::to_string(i) + " \"";
    for (int k = 0; k < 10; ++k) content += inner;
    content += "\">";
  }
  content += "]><Item Unit='&e19;'/>";
  EXPECT_EQ(UnitOf(LoadXmlText(content, "a.xml")), "&e19;");
}

TEST(XmlFile, ExternalEntitiesAreNotFetched) {
  const TempFolder folder;
  folder.Write("secret.txt", "secret");
  folder.Write("a.xml", "<!DOCTYPE a [<!ENTITY x SYSTEM \"file://" + folder.Path("secret.txt") +
                            "\">]><Item Unit='&x;'/>");
  EXPECT_EQ(UnitOf(LoadXmlFile(folder.Path("a.xml"))), "&x;");
}

TEST(XmlFile, PredefinedEntitiesAndCharacterReferencesAreRead) {
  EXPECT_EQ(UnitIn("<Item Unit='&lt;&amp;&#176;&#xB0;'/>"), "<&\xC2\xB0\xC2\xB0");
}

TEST(XmlFile, TheDocumentOutlivesTheFile) {
  XmlDocument document;
  {
    const TempFolder folder;
    folder.Write("a.xml", "<Item Unit='rpm'/>");
    document = LoadXmlFile(folder.Path("a.xml"));
  }
  EXPECT_EQ(UnitOf(document), "rpm");
}

}  // namespace
}  // namespace korval::base
