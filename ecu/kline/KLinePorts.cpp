// SPDX-License-Identifier: MIT
#include "ecu/kline/KLinePorts.h"

namespace korval::ecu {
namespace {

constexpr std::chrono::seconds kLongestFarewell{1};

}  // namespace

std::shared_ptr<SharedKLine> KLinePorts::Open(const std::shared_ptr<base::EventLoop>& loop,
                                              const std::string& port, const OpenWire& open) {
  std::erase_if(lines_, [](const auto& known) { return known.second.expired(); });
  if (const auto known = lines_.find(port); known != lines_.end()) {
    auto line = known->second.lock();
    line->RequireOpen();
    return line;
  }
  auto& stopped = stopped_[port];
  if (!stopped) stopped = std::make_shared<StoppedEcus>();
  const auto line = std::make_shared<SharedKLine>(loop, open(), stopped);
  std::shared_ptr<SharedKLine> in_use(line.get(), [line](SharedKLine*) { line->Close(); });
  lines_[port] = in_use;
  return in_use;
}

void KLinePorts::TakeLeave(const std::shared_ptr<base::EventLoop>& loop, std::shared_ptr<SharedKLine> line) {
  if (line->IsFree()) return;
  const SharedKLine* const key = line.get();
  const auto end = [ports = weak_from_this(), key] {
    if (const auto held = ports.lock()) held->leaving_.erase(key);
  };
  // Letting go closes the line, which must not happen inside its own operation.
  line->SetOnFree([loop = std::weak_ptr(loop), end] {
    if (const auto held = loop.lock()) held->Defer(end);
  });
  auto limit = loop->CreateDeadline(end);
  limit->Set(loop->Now() + kLongestFarewell);
  leaving_[key] = {std::move(line), std::move(limit)};
}

}  // namespace korval::ecu
