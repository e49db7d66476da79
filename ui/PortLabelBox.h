// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include <QLabel>
#include <QPointer>

#include "diag/PortLabel.h"

namespace korval::ui {

/// The label of the diagnostic interface in use (`lbPort`). Its fore colours are shades that can be read on
/// the palette in force.
class PortLabelBox : public QLabel {
  Q_OBJECT

 public:
  explicit PortLabelBox(QWidget* parent = nullptr);

  void SetForeColour(std::int32_t colour);
  std::int32_t ForeColour() const { return fore_colour_; }

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void ApplyColour();

  std::int32_t fore_colour_ = diag::PortLabel::kBlack;
};

/// The label's seam; the label may go first.
class PortLabelView : public diag::PortLabel {
 public:
  explicit PortLabelView(PortLabelBox* box) : box_(box) {}

  void SetCaption(const std::string& caption) override {
    if (box_) box_->setText(QString::fromStdString(caption));
  }
  void SetToolTip(const std::string& text) override {
    if (box_) box_->setToolTip(QString::fromStdString(text));
  }
  void SetForeColour(std::int32_t colour) override {
    if (box_) box_->SetForeColour(colour);
  }

 private:
  QPointer<PortLabelBox> box_;
};

}  // namespace korval::ui
