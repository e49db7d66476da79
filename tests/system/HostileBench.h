// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <random>
#include <string>

#include "tests/system/ServerBench.h"

namespace korval::tests {

/// What a hostile client does, and how the server bears it.
class HostileBench : public ServerBench {
 protected:
  /// Whether the receive path hands these bytes, arriving at once, to the dispatcher.
  static bool IsFrame(const std::string& bytes) {
    if (bytes.size() < 6) return false;
    const std::size_t length = WordAt(bytes, 0);
    if (length < 6 || length % 2 != 0 || length > bytes.size()) return false;
    return bytes.substr(length - 2, 2) == Checksum(bytes.substr(0, length - 2));
  }
  static std::string Refusal(const std::string& bytes) {
    const std::size_t length = bytes.size() < 2 ? 0 : WordAt(bytes, 0);
    return length >= 6 && length % 2 == 0 && length <= bytes.size() ? "erreur de checksum "
                                                                    : "Error : Invalid";
  }
  /// Sends bytes that arrive at once, and waits until the server has dealt with them.
  void Throw(const RawClient& client, const std::string& bytes) {
    client.Send(bytes);
    if (!IsFrame(bytes)) {
      server_->WaitFor(Refusal(bytes));
      return;
    }
    const std::string reply = client.Receive();
    EXPECT_EQ(reply.substr(2, 2), bytes.substr(2, 2));
    EXPECT_EQ(Checksum(reply.substr(0, reply.size() - 2)), reply.substr(reply.size() - 2));
  }
  /// The same for bytes so many that they would arrive piece by piece.
  std::string ThrowLarge(const RawClient& client, const std::string& frame) {
    server_->Pause();
    client.SendToStoppedServer(frame);
    server_->Resume();
    return client.Receive();
  }
  void ExpectSelectError(const RawClient& client, const std::string& file, const std::string& section) {
    SCOPED_TRACE(file.substr(0, 80) + " / " + section.substr(0, 80));
    const std::string reply = client.Ask(SelectRequest(file, section));
    EXPECT_EQ(StatusOf(reply), kError);
    EXPECT_EQ(ErrorNumberOf(reply), 1U);
    EXPECT_THAT(ErrorTextOf(reply), ::testing::StartsWith("select file error : "));
    EXPECT_THAT(ErrorTextOf(reply), ::testing::Not(::testing::HasSubstr("root:")));
  }
};

/// Bytes of every kind.
class ByteSource {
 public:
  explicit ByteSource(unsigned seed) : random_(seed) {}

  std::string Bytes(std::size_t longest) {
    std::string bytes(Below(longest + 1), '\0');
    for (char& byte : bytes) byte = Byte();
    return bytes;
  }
  /// A valid frame of any command with any fields, half of them with lengths that could be true.
  std::string ValidFrame() {
    constexpr std::array<std::uint16_t, 14> kCodes = {2,  3,  12,  13,  14, 15, 19,
                                                      20, 50, 114, 115, 4,  0,  65535};
    std::string fields;
    const std::size_t count = Below(5);
    for (std::size_t index = 0; index < count; ++index) fields += Field();
    if (fields.size() % 2 != 0) fields.push_back('\0');
    return Request(kCodes[Below(kCodes.size())], fields);
  }
  /// Such a frame with one byte changed.
  std::string DamagedFrame() {
    std::string frame = ValidFrame();
    frame[Below(frame.size())] = Byte();
    return frame;
  }
  std::size_t Below(std::size_t bound) { return random_() % bound; }

 private:
  char Byte() { return static_cast<char>(static_cast<unsigned char>(Below(256))); }
  std::string Field() {
    switch (Below(4)) {
      case 0:
        return Word(static_cast<unsigned>(Below(4)));
      case 1:
        return Text(Bytes(40));
      case 2:
        return Word(static_cast<unsigned>(Below(65536))) + Bytes(20);
      default:
        return Bytes(8);
    }
  }

  std::mt19937 random_;
};

}  // namespace korval::tests
