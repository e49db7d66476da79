// SPDX-License-Identifier: MIT
#include "ui/StateImage.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>

namespace korval::ui {

StateImage::StateImage(const QString& name, const QString& accessible_name, Picture picture, QWidget* parent)
    : QAbstractButton(parent), picture_(picture) {
  setObjectName(name);
  setAccessibleName(accessible_name);
  setToolTip(tr("Toggles Port"));
  setCursor(Qt::PointingHandCursor);
  setFocusPolicy(Qt::StrongFocus);
}

void StateImage::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  Paint(painter, picture_, QRectF(rect()).adjusted(2, 2, -2, -2), palette());
  if (!hasFocus()) return;
  QStyleOptionFocusRect option;
  option.initFrom(this);
  style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}

}  // namespace korval::ui
