// SPDX-License-Identifier: MIT
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/BackgroundWriter.h"

namespace korval::base {
namespace {

using testing::IsEmpty;

/// A file that takes nothing before it is let go on.
struct SlowFile {
  std::promise<void> reached;
  std::promise<void> go_on;
  std::once_flag first;
  std::string text;

  std::error_code Write(std::string_view piece) {
    std::call_once(first, [this] {
      reached.set_value();
      go_on.get_future().wait();
    });
    text += piece;
    return {};
  }
};

BackgroundWriter::Settings SettingsFor(const std::shared_ptr<SlowFile>& file) {
  BackgroundWriter::Settings settings;
  settings.write = [file](std::string_view piece) { return file->Write(piece); };
  settings.dropped = [](std::size_t lines) { return "(" + std::to_string(lines) + " dropped)\n"; };
  return settings;
}

TEST(BackgroundWriter, WritesEverythingInOrder) {
  const auto file = std::make_shared<SlowFile>();
  file->go_on.set_value();
  BackgroundWriter writer(SettingsFor(file));
  std::string all;
  for (int i = 0; i < 10000; ++i) {
    const std::string line = "line " + std::to_string(i) + "\n";
    writer.Append(line);
    all += line;
  }
  writer.Finish();
  EXPECT_EQ(file->text, all);
}

TEST(BackgroundWriter, SaysHowManyLinesWereDroppedInTheirPlace) {
  const auto file = std::make_shared<SlowFile>();
  BackgroundWriter::Settings settings = SettingsFor(file);
  settings.limit = 10;
  BackgroundWriter writer(std::move(settings));
  writer.Append("first\n");
  file->reached.get_future().wait();
  writer.Append("second\n");
  writer.Append("third\nfourth\n");
  writer.Append("x\n");  // there would be room for it, but not before the sentence
  file->go_on.set_value();
  writer.Finish();
  EXPECT_EQ(file->text, "first\nsecond\n(3 dropped)\n");
}

TEST(BackgroundWriter, GoesOnWhereItDropped) {
  const auto file = std::make_shared<SlowFile>();
  file->go_on.set_value();
  std::promise<void> said;
  BackgroundWriter::Settings settings = SettingsFor(file);
  settings.limit = 10;
  settings.write = [file, &said](std::string_view piece) {
    if (piece.starts_with("(")) said.set_value();
    return file->Write(piece);
  };
  BackgroundWriter writer(std::move(settings));
  writer.Append("longer than ten\n");
  said.get_future().wait();
  writer.Append("short\n");
  writer.Finish();
  EXPECT_EQ(file->text, "(1 dropped)\nshort\n");
}

TEST(BackgroundWriter, TellsOnceWhyNothingMoreIsWritten) {
  std::vector<std::error_code> failures;
  int writes = 0;
  BackgroundWriter::Settings settings;
  settings.write = [&](std::string_view) {
    ++writes;
    return std::make_error_code(std::errc::no_space_on_device);
  };
  settings.on_failure = [&](std::error_code failure) { failures.push_back(failure); };
  BackgroundWriter writer(std::move(settings));
  writer.Append("one\n");
  writer.Append("two\n");
  writer.Finish();
  writer.Append("three\n");
  EXPECT_THAT(failures, testing::ElementsAre(std::make_error_code(std::errc::no_space_on_device)));
  EXPECT_EQ(writes, 1);
}

TEST(BackgroundWriter, LeavesAWriteThatHangsBehind) {
  const auto file = std::make_shared<SlowFile>();
  BackgroundWriter::Settings settings = SettingsFor(file);
  settings.patience = std::chrono::milliseconds(0);
  {
    BackgroundWriter writer(std::move(settings));
    writer.Append("never taken\n");
    file->reached.get_future().wait();
    writer.Finish();
    EXPECT_THAT(file->text, IsEmpty());
  }
  file->go_on.set_value();
}

}  // namespace
}  // namespace korval::base
