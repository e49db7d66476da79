// SPDX-License-Identifier: MIT
#include <cstdint>
#include <string>

#include <benchmark/benchmark.h>

#include "base/AnsiText.h"
#include "base/ByteBuffer.h"
#include "base/NumberText.h"
#include "protocol/FieldCodec.h"
#include "protocol/Frame.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

// A reply with `items` reals, as get online value has it.
base::ByteBuffer ReplyData(std::int64_t items) {
  base::ByteBuffer data;
  protocol::AppendWord(data, static_cast<std::int32_t>(items));
  for (std::int64_t i = 0; i < items; ++i) protocol::AppendReal(data, static_cast<float>(i) * 0.25F);
  return data;
}

void AppendReals(benchmark::State& state) {
  for (auto _ : state) {
    const base::ByteBuffer data = ReplyData(state.range(0));
    benchmark::DoNotOptimize(data.View().data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(AppendReals)->Arg(10)->Arg(1000);

void FinishReply(benchmark::State& state) {
  const base::ByteBuffer request = base::ByteBuffer::FromHex("000600130019");
  const base::ByteBuffer data = ReplyData(state.range(0));
  for (auto _ : state) {
    base::ByteBuffer frame = request;
    protocol::FinishReply(frame, 19, 0, data);
    benchmark::DoNotOptimize(frame.View().data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(data.Length()));
}
BENCHMARK(FinishReply)->Arg(10)->Arg(1000);

void VerifyChecksum(benchmark::State& state) {
  base::ByteBuffer frame = base::ByteBuffer::FromHex("000600130019");
  protocol::FinishReply(frame, 19, 0, ReplyData(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(protocol::IsChecksumValid(frame));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(frame.Length()));
}
BENCHMARK(VerifyChecksum)->Arg(10)->Arg(1000);

void ReadNames(benchmark::State& state) {
  base::ByteBuffer area;
  for (std::int64_t i = 0; i < state.range(0); ++i) protocol::AppendString(area, "EngineSpeed");
  for (auto _ : state) {
    std::size_t position = 0;
    while (position < area.Length()) benchmark::DoNotOptimize(protocol::ReadString(area.View(), position));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ReadNames)->Arg(10)->Arg(1000);

void HexDump(benchmark::State& state) {
  base::ByteBuffer frame;
  frame.SetLength(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(frame.ToHex());
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(HexDump)->Arg(24)->Arg(4096);

void SingleText(benchmark::State& state) {
  float value = 13.75F;
  for (auto _ : state) {
    benchmark::DoNotOptimize(base::SingleText(value));
    value += 0.25F;
  }
}
BENCHMARK(SingleText);

void AnsiText(benchmark::State& state) {
  const std::string text = "set parameter(1,CoolantTemp,90 °C) : µs, mm³";
  for (auto _ : state) benchmark::DoNotOptimize(base::AnsiFromUtf8(text).View().data());
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(AnsiText);

}  // namespace
