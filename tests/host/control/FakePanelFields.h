// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <string>

#include "host/control/PanelFields.h"

namespace korval::tests {

/// The settings panel's fields in memory.
class FakePanelFields : public host::PanelFields {
 public:
  void ShowAsapFolder(const std::string& path) override { asap_folder = path; }
  void ShowKorvFolder(const std::string& path) override { korv_folder = path; }
  std::string AsapDirPath() const override { return asap_folder; }
  std::string KorvDirPath() const override { return korv_folder; }
  void ShowTcpPort(const std::string& text) override { tcp_port = text; }
  std::string TcpPort() const override { return tcp_port; }
  void ShowListen(const std::string& text) override { listen = text; }
  std::string Listen() const override { return listen; }
  void ShowAllow(const std::string& text) override { allow = text; }
  std::string Allow() const override { return allow; }
  void ShowSpeed(const std::string& text) override { speed = text; }
  std::string Speed() const override { return speed; }
  void SelectParity(int position) override { parity = kParities.at(static_cast<std::size_t>(position)); }
  std::string Parity() const override { return parity; }
  void ShowDataBits(const std::string& text) override { data_bits = text; }
  std::string DataBits() const override { return data_bits; }
  void ShowStopBits(const std::string& text) override { stop_bits = text; }
  std::string StopBits() const override { return stop_bits; }
  void SelectPort(std::int32_t position) override { port = position; }
  std::int32_t SelectedPort() const override { return port; }
  void SelectFlow(std::int32_t index) override { flow = index; }
  std::int32_t SelectedFlow() const override { return flow; }
  void ShowOpenAtStart(bool on) override { open_at_start = on; }
  bool OpenAtStart() const override { return open_at_start; }

  std::string asap_folder;
  std::string korv_folder;
  std::string tcp_port = "1001";
  std::string listen;
  std::string allow;
  std::string speed;
  std::string parity;
  std::string data_bits;
  std::string stop_bits;
  std::int32_t port = -1;
  std::int32_t flow = -1;
  bool open_at_start = false;

 private:
  static constexpr std::array<const char*, 5> kParities{"Even", "Odd", "None", "Mark", "Space"};
};

}  // namespace korval::tests
