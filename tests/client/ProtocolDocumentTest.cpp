// SPDX-License-Identifier: MIT
// The frames in the protocol document are true: each one verifies, and says what the line above it says.
#include <cctype>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/ByteBuffer.h"
#include "client/ReplyReader.h"

namespace korval::client {
namespace {

using base::ByteBuffer;

struct Example {
  int line;
  bool is_reply;
  std::string hex;
};

/// The lines that begin with "request" or "reply" and go on with bytes in hex, blanks between them; they may
/// continue on lines that hold nothing but blanks and bytes.
std::vector<Example> Examples(std::istream& document) {
  std::vector<Example> examples;
  bool is_open = false;
  int number = 0;
  for (std::string line; std::getline(document, line);) {
    ++number;
    std::istringstream words(line);
    std::string word;
    words >> word;
    const bool starts = word == "request" || word == "reply";
    if (starts)
      examples.push_back({number, word == "reply", ""});
    else
      words.seekg(0);
    if (!starts && !is_open) continue;
    is_open = line.find_first_not_of("0123456789ABCDEF ", starts ? word.size() : 0) == std::string::npos &&
              line.find_first_not_of(' ') != std::string::npos;
    if (starts && !is_open) ADD_FAILURE() << "line " << number << " is no example: " << line;
    while (is_open && words >> word) examples.back().hex += word;
  }
  return examples;
}

class ProtocolDocumentTest : public testing::Test {
 protected:
  ProtocolDocumentTest() {
    std::ifstream document(KORVAL_PROTOCOL_DOCUMENT);
    examples_ = Examples(document);
  }
  std::vector<Example> examples_;
};

std::uint16_t SumOf(const ByteBuffer& frame) {
  std::uint32_t sum = 0;
  for (std::size_t offset = 0; offset < frame.Length() - 2; offset += 2) sum += frame.Word(offset);
  return static_cast<std::uint16_t>(sum);
}

TEST_F(ProtocolDocumentTest, EveryFrameHasItsLengthAndChecksum) {
  for (const Example& example : examples_) {
    SCOPED_TRACE("line " + std::to_string(example.line));
    const ByteBuffer frame = ByteBuffer::FromHex(example.hex);
    ASSERT_GE(frame.Length(), example.is_reply ? 8U : 6U);
    EXPECT_EQ(frame.Word(0), frame.Length());
    EXPECT_EQ(frame.Word(frame.Length() - 2), SumOf(frame));
  }
}

TEST_F(ProtocolDocumentTest, EveryCommandHasARequestAndAReply) {
  std::set<std::uint16_t> requests;
  std::set<std::uint16_t> replies;
  for (const Example& example : examples_) {
    (example.is_reply ? replies : requests).insert(ByteBuffer::FromHex(example.hex).Word(2));
  }
  for (const int number : {2, 3, 12, 13, 14, 15, 19, 20, 50, 114, 115}) {
    const auto command = static_cast<std::uint16_t>(number);
    EXPECT_TRUE(requests.contains(command)) << command;
    EXPECT_TRUE(replies.contains(command)) << command;
  }
}

TEST_F(ProtocolDocumentTest, EveryStatusHasAReply) {
  std::set<std::uint16_t> statuses;
  for (const Example& example : examples_) {
    if (example.is_reply) statuses.insert(ReplyReader(ByteBuffer::FromHex(example.hex)).Status());
  }
  EXPECT_EQ(statuses, (std::set<std::uint16_t>{kStatusSuccess, kStatusNotProcessed, kStatusUnknownCommand,
                                               kStatusError}));
}

TEST_F(ProtocolDocumentTest, ADamagedExampleWouldBeSeen) {
  std::istringstream document(
      "text\nrequest 0006 0002\n        0009\n\nreply   00 08 00 02 00 00 00 0A\nmore\n");
  const std::vector<Example> examples = Examples(document);
  ASSERT_EQ(examples.size(), 2U);
  EXPECT_EQ(examples[0].hex, "000600020009");
  const ByteBuffer damaged = ByteBuffer::FromHex(examples[0].hex);
  EXPECT_NE(damaged.Word(4), SumOf(damaged));
  EXPECT_EQ(examples[1].hex, "000800020000000A");
  EXPECT_TRUE(examples[1].is_reply);
}

}  // namespace
}  // namespace korval::client
