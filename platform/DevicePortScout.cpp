// SPDX-License-Identifier: MIT
#include "platform/DevicePortScout.h"

#include <sstream>
#include <utility>

#include <pugixml.hpp>

namespace korval::platform {

DevicePortScout::DevicePortScout(std::shared_ptr<base::EventLoop> loop,
                                 std::function<std::string()> client_line)
    : DevicePortScout(
          std::move(loop),
          [line = std::move(client_line)] { return WithoutDevice(ScanNumberedInterfaces(), line()); },
          [] { return InterfaceNames(); }) {}

DevicePortScout::DevicePortScout(std::shared_ptr<base::EventLoop> loop, Scan scan, Glimpse glimpse)
    : loop_(std::move(loop)),
      scan_(std::move(scan)),
      glimpse_(std::move(glimpse)),
      timer_(loop_->CreateTimer([this] { Look(); })) {}

std::string DevicePortScout::DeviceList() {
  pugi::xml_document document;
  pugi::xml_node devices = document.append_child("devices");
  for (const std::string& number : SerialNumbers()) {
    devices.append_child("device").append_child("sn").text().set(number.c_str());
  }
  std::ostringstream text;
  document.save(text);
  return text.str();
}

void DevicePortScout::SetOnDevicesHaveChanged(std::function<void()> on_changed) {
  on_changed_ = std::move(on_changed);
  names_ = glimpse_();
  known_ = SerialNumbers();
  timer_->Start(kInterval);
}

void DevicePortScout::Shutdown() {
  timer_->Stop();
  on_changed_ = nullptr;
}

std::vector<std::string> DevicePortScout::SerialNumbers() const {
  std::vector<std::string> numbers;
  for (const PluggedInterface& device : scan_()) {
    if (!device.serial_number.empty()) numbers.push_back(device.serial_number);
  }
  return numbers;
}

void DevicePortScout::Look() {
  timer_->Start(kInterval);
  if (QStringList names = glimpse_(); std::exchange(names_, names) != names) looks_left_ = kLooks;
  if (looks_left_ == 0) return;
  --looks_left_;
  std::vector<std::string> numbers = SerialNumbers();
  if (std::exchange(known_, numbers) == numbers) return;
  // Whoever is told may shut the scout down.
  const auto on_changed = on_changed_;
  if (on_changed) on_changed();
}

}  // namespace korval::platform
