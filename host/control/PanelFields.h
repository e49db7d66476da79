// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace korval::host {

/// The seam to the fields of the settings panel, named after them. A drop-down list leaves its selection as
/// it is when it is given a text that it does not offer.
class PanelFields {
 public:
  virtual ~PanelFields() = default;

  /// Points the drive, folder and file list of a folder at `path`.
  virtual void ShowAsapFolder(const std::string& path) = 0;
  virtual void ShowKorvFolder(const std::string& path) = 0;
  virtual std::string AsapDirPath() const = 0;
  virtual std::string KorvDirPath() const = 0;

  virtual void ShowTcpPort(const std::string& text) = 0;
  virtual std::string TcpPort() const = 0;
  virtual void ShowListen(const std::string& text) = 0;
  virtual std::string Listen() const = 0;
  virtual void ShowAllow(const std::string& text) = 0;
  virtual std::string Allow() const = 0;

  virtual void ShowSpeed(const std::string& text) = 0;
  virtual std::string Speed() const = 0;
  /// Position from 0 in "Even", "Odd", "None", "Mark", "Space".
  virtual void SelectParity(int position) = 0;
  virtual std::string Parity() const = 0;
  virtual void ShowDataBits(const std::string& text) = 0;
  virtual std::string DataBits() const = 0;
  virtual void ShowStopBits(const std::string& text) = 0;
  virtual std::string StopBits() const = 0;

  /// Position from 0 in "Com1" to "Com16"; -1 when nothing is selected.
  virtual void SelectPort(std::int32_t position) = 0;
  virtual std::int32_t SelectedPort() const = 0;
  /// The handshaking code of an option button.
  virtual void SelectFlow(std::int32_t index) = 0;
  virtual std::int32_t SelectedFlow() const = 0;
  virtual void ShowOpenAtStart(bool on) = 0;
  virtual bool OpenAtStart() const = 0;
};

}  // namespace korval::host
