// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include "host/control/PanelFields.h"
#include "ui/FolderPicker.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace korval::ui {

/// The fields of the settings panel, laid out.
class PanelFace : public host::PanelFields {
 public:
  /// The widgets go onto `panel` and belong to it.
  explicit PanelFace(QWidget& panel);

  /// Fills the drop-down lists anew.
  void LoadLists();
  QPushButton& Ok() { return *ok_; }
  QPushButton& Cancel() { return *cancel_; }

  void ShowAsapFolder(const std::string& path) override;
  void ShowKorvFolder(const std::string& path) override;
  std::string AsapDirPath() const override;
  std::string KorvDirPath() const override;
  void ShowTcpPort(const std::string& text) override;
  std::string TcpPort() const override;
  void ShowListen(const std::string& text) override;
  std::string Listen() const override;
  void ShowAllow(const std::string& text) override;
  std::string Allow() const override;
  void ShowSpeed(const std::string& text) override;
  std::string Speed() const override;
  void SelectParity(int position) override;
  std::string Parity() const override;
  void ShowDataBits(const std::string& text) override;
  std::string DataBits() const override;
  void ShowStopBits(const std::string& text) override;
  std::string StopBits() const override;
  void SelectPort(std::int32_t position) override;
  std::int32_t SelectedPort() const override;
  void SelectFlow(std::int32_t index) override;
  std::int32_t SelectedFlow() const override;
  void ShowOpenAtStart(bool on) override;
  bool OpenAtStart() const override;

 private:
  QWidget* ComFrame();
  QWidget* SpeedFrame();
  QWidget* ConnectionFrame();
  QWidget* FlowFrame();
  QWidget* TcpFrame();
  QWidget* Buttons();

  QComboBox* port_ = nullptr;
  QComboBox* speed_ = nullptr;
  QComboBox* data_bits_ = nullptr;
  QComboBox* parity_ = nullptr;
  QComboBox* stop_bits_ = nullptr;
  QButtonGroup* flow_ = nullptr;
  QCheckBox* open_at_start_ = nullptr;
  QLineEdit* tcp_port_ = nullptr;
  QLineEdit* listen_ = nullptr;
  QLineEdit* allow_ = nullptr;
  FolderPicker* asap_ = nullptr;
  FolderPicker* korv_ = nullptr;
  QPushButton* ok_ = nullptr;
  QPushButton* cancel_ = nullptr;
};

}  // namespace korval::ui
