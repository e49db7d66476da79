// SPDX-License-Identifier: MIT
#include "ui/PortLabelBox.h"

#include <QApplication>
#include <QEvent>

#include "ui/Colours.h"

namespace korval::ui {

PortLabelBox::PortLabelBox(QWidget* parent) : QLabel(parent) {
  setObjectName("lbPort");
  setAccessibleDescription(tr("Diagnostic interface"));
  setTextFormat(Qt::PlainText);
}

void PortLabelBox::SetForeColour(std::int32_t colour) {
  fore_colour_ = colour;
  ApplyColour();
}

void PortLabelBox::ApplyColour() {
  QPalette colours = palette();
  const QPalette usual = QApplication::palette(this);
  const QColor wanted =
      fore_colour_ == diag::PortLabel::kRed ? Red(usual) : usual.color(QPalette::WindowText);
  if (colours.color(QPalette::WindowText) == wanted) return;
  colours.setColor(QPalette::WindowText, wanted);
  setPalette(colours);
}

void PortLabelBox::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) ApplyColour();
}

}  // namespace korval::ui
