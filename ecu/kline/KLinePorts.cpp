// SPDX-License-Identifier: MIT
#include "ecu/kline/KLinePorts.h"

namespace korval::ecu {

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

}  // namespace korval::ecu
