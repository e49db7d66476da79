// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "base/Failure.h"
#include "ecu/buslog/BusLog.h"
#include "ecu/buslog/TracedCanBus.h"
#include "ecu/buslog/TracedKLineWire.h"
#include "tests/support/TempFolder.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::chrono::microseconds kTime{1794650400000042};

std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

class BusLogTest : public testing::Test {
 protected:
  BusLog::Settings Settings(std::size_t limit = 1000) {
    return {Path(), limit, [] { return kTime; },
            [this](const std::string& text) { troubles_.push_back(text); }};
  }
  std::string Path() const { return folder_.Path() + "/bus.log"; }
  std::string Written() const { return ReadFile(Path()); }

  tests::TempFolder folder_;
  std::vector<std::string> troubles_;
};

CanFrame Frame(std::uint32_t identifier, bool extended, const std::string& hex) {
  const ByteBuffer bytes = ByteBuffer::FromHex(hex);
  return {CanIdentifier{identifier, extended}, bytes.View()};
}

TEST_F(BusLogTest, CanFramesStandInCandumpsLogFormat) {
  BusLog log(Settings());
  log.Record("can0", BusLog::Direction::kSent, Frame(0x7E0, false, "021A90"));
  log.Record("can0", BusLog::Direction::kReceived, Frame(0x1A0, true, ""));
  EXPECT_EQ(Written(),
            "(1794650400.000042) can0 7E0#021A90 T\n"
            "(1794650400.000042) can0 000001A0# R\n");
}

TEST_F(BusLogTest, KLineBytesStandInHexadecimal) {
  BusLog log(Settings());
  log.Record("/dev/ttyUSB0", BusLog::Direction::kSent, ByteBuffer::FromHex("8110F18103").View());
  EXPECT_EQ(Written(), "(1794650400.000042) /dev/ttyUSB0 T 81 10 F1 81 03\n");
}

TEST_F(BusLogTest, AFileThatIsFullBecomesTheOneBefore) {
  BusLog log(Settings(80));
  for (const std::uint32_t identifier : {1U, 2U, 3U, 4U, 5U}) {
    log.Record("can0", BusLog::Direction::kSent, Frame(identifier, false, ""));
  }
  EXPECT_EQ(Written(), "(1794650400.000042) can0 005# T\n");
  EXPECT_EQ(ReadFile(Path() + ".1"), "(1794650400.000042) can0 003# T\n(1794650400.000042) can0 004# T\n");
}

TEST_F(BusLogTest, AFileThatExistsGoesOn) {
  { BusLog(Settings()).Record("can0", BusLog::Direction::kSent, Frame(1, false, "")); }
  BusLog(Settings()).Record("can0", BusLog::Direction::kSent, Frame(2, false, ""));
  EXPECT_EQ(Written(), "(1794650400.000042) can0 001# T\n(1794650400.000042) can0 002# T\n");
}

TEST_F(BusLogTest, AFolderThatDoesNotExistIsRaised) {
  BusLog::Settings settings = Settings();
  settings.path = folder_.Path() + "/nowhere/bus.log";
  try {
    const BusLog log(settings);
    FAIL() << "nothing was raised";
  } catch (const base::Failure& failure) {
    EXPECT_THAT(failure.Description(),
                HasSubstr(settings.path + " cannot be written: check that its folder exists"));
  }
}

TEST_F(BusLogTest, APipeIsRefusedForItsReaderMayPause) {
  BusLog::Settings settings = Settings();
  settings.path = folder_.Path() + "/pipe";
  ASSERT_EQ(mkfifo(settings.path.c_str(), 0600), 0);
  try {
    const BusLog log(settings);
    FAIL() << "nothing was raised";
  } catch (const base::Failure& failure) {
    EXPECT_THAT(failure.Description(), HasSubstr(settings.path + " is a pipe"));
  }
}

TEST_F(BusLogTest, AFullDiskEndsTheRecordWithOneSentence) {
  BusLog::Settings settings = Settings();
  settings.path = "/dev/full";
  BusLog log(settings);
  for (int i = 0; i < 3; ++i) log.Record("can0", BusLog::Direction::kSent, Frame(1, false, ""));
  EXPECT_THAT(troubles_, ElementsAre("Bus trace /dev/full has ended: is the disk full?"));
}

// No file can be opened, whoever runs the test.
class NoMoreFiles {
 public:
  NoMoreFiles() {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit none{0, before_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoMoreFiles() { ::setrlimit(RLIMIT_NOFILE, &before_); }
  NoMoreFiles(const NoMoreFiles&) = delete;
  NoMoreFiles& operator=(const NoMoreFiles&) = delete;

 private:
  rlimit before_{};
};

TEST_F(BusLogTest, AFileThatCannotBeBegunAnewEndsTheRecordWithOneSentence) {
  BusLog log(Settings(40));
  log.Record("can0", BusLog::Direction::kSent, Frame(1, false, ""));
  {
    const NoMoreFiles no_more_files;
    for (int i = 0; i < 3; ++i) log.Record("can0", BusLog::Direction::kSent, Frame(2, false, ""));
  }
  EXPECT_THAT(troubles_, ElementsAre("Bus trace " + Path() +
                                     " has ended: it cannot be begun anew: check the access rights of its "
                                     "folder"));
}

class SilentWire : public KLineWire {
 public:
  explicit SilentWire(bool has_break) : has_break_(has_break) {}
  void SetEvents(Events /*events*/) override {}
  void Open(std::int32_t /*baud*/) override {}
  bool SetModemLines(std::optional<bool>, std::optional<bool>) override { return false; }
  bool SetBreak(bool /*low*/) override { return has_break_; }
  void Write(base::ByteView /*bytes*/) override {}
  void Close() override {}

 private:
  bool has_break_;
};

TEST_F(BusLogTest, ATracedKLineRecordsItsLevels) {
  TracedKLineWire line(std::make_unique<SilentWire>(true), std::make_shared<BusLog>(Settings()), "ttyUSB0");
  for (const bool low : {false, true, false}) EXPECT_TRUE(line.SetBreak(low));
  line.Write(ByteBuffer{0x81}.View());
  EXPECT_EQ(Written(),
            "(1794650400.000042) ttyUSB0 T low\n(1794650400.000042) ttyUSB0 T high\n"
            "(1794650400.000042) ttyUSB0 T 81\n");
}

TEST_F(BusLogTest, ATracedKLineWithoutABreakRecordsNoLevels) {
  TracedKLineWire line(std::make_unique<SilentWire>(false), std::make_shared<BusLog>(Settings()), "ttyUSB0");
  for (const bool low : {false, true, false}) EXPECT_FALSE(line.SetBreak(low));
  EXPECT_EQ(Written(), "");
}

class LoopedBus : public CanBus {
 public:
  void SetEvents(Events events) override { events_ = std::move(events); }
  bool IsReady() const override { return true; }
  bool Send(const CanFrame& frame) override {
    if (!has_room) return false;
    sent_ = frame;
    return true;
  }
  void Return() { events_.on_frame(sent_); }

  bool has_room = true;

 private:
  Events events_;
  CanFrame sent_;
};

TEST_F(BusLogTest, ATracedBusRecordsBothDirectionsAndPassesThemOn) {
  auto owned = std::make_unique<LoopedBus>();
  LoopedBus& looped = *owned;
  TracedCanBus bus(std::move(owned), std::make_shared<BusLog>(Settings()), "can1");
  std::vector<CanFrame> received;
  bus.SetEvents({[&](const CanFrame& frame) { received.push_back(frame); }, {}, {}, {}});
  EXPECT_TRUE(bus.Send(Frame(0x100, false, "AA")));
  looped.Return();
  looped.has_room = false;
  EXPECT_FALSE(bus.Send(Frame(0x100, false, "BB"))) << "this one is not recorded either";
  EXPECT_THAT(received, ElementsAre(Frame(0x100, false, "AA")));
  EXPECT_EQ(Written(), "(1794650400.000042) can1 100#AA T\n(1794650400.000042) can1 100#AA R\n");
}

}  // namespace
}  // namespace korval::ecu
