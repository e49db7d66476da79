// SPDX-License-Identifier: MIT
#include "ui/Pictures.h"

#include <algorithm>
#include <array>

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include "ui/Colours.h"

namespace korval::ui {
namespace {

// All pictures are drawn on a square of this side.
constexpr qreal kSide = 24;

QPen Line(const QColor& colour, qreal width = 2) {
  return {QBrush(colour), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

// The left half of a connector: its flat side at x = 0, its cable to the left.
void PaintHalf(QPainter& painter) {
  QPainterPath body(QPointF(0, -6));
  body.lineTo(-1.5, -6);
  body.arcTo(QRectF(-7.5, -6, 12, 12), 90, 180);
  body.lineTo(0, 6);
  body.closeSubpath();
  painter.drawPath(body);
  painter.drawLine(QPointF(-7.5, 0), QPointF(-8.8, 0));
}

void PaintLink(QPainter& painter, const QColor& colour, bool closed) {
  painter.setPen(Line(colour, 1.6));
  painter.setBrush(closed ? QBrush(colour) : QBrush(Qt::NoBrush));
  const qreal gap = closed ? 1.5 : 2.2;
  for (const int side : {1, -1}) {
    painter.save();
    painter.translate(kSide / 2, kSide / 2);
    painter.scale(side, 1);
    painter.translate(-gap, 0);
    PaintHalf(painter);
    painter.restore();
  }
  if (closed) return;
  // The prongs reach across the gap.
  for (const qreal y : {-2.5, 2.5}) {
    painter.drawLine(QPointF(kSide / 2 - gap, kSide / 2 + y), QPointF(kSide / 2 + 0.4, kSide / 2 + y));
  }
}

void PaintSliders(QPainter& painter, const QPalette& palette) {
  const QColor colour = palette.color(QPalette::WindowText);
  constexpr std::array<qreal, 3> kKnobs{15, 8, 13};
  painter.setPen(Line(colour, 1.7));
  painter.setBrush(palette.window());
  for (std::size_t i = 0; i < kKnobs.size(); ++i) {
    const qreal y = 6 + 6 * static_cast<qreal>(i);
    painter.drawLine(QPointF(3, y), QPointF(21, y));
    painter.drawEllipse(QPointF(kKnobs[i], y), 2.3, 2.3);
  }
}

// A gauge in a rounded frame: what the server is for.
void PaintServer(QPainter& painter) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0x1F, 0x4E, 0x9E));
  painter.drawRoundedRect(QRectF(1, 1, 22, 22), 5, 5);
  painter.setPen(Line(Qt::white, 1.8));
  painter.setBrush(Qt::NoBrush);
  painter.drawArc(QRectF(5, 6, 14, 14), -20 * 16, 220 * 16);
  painter.setPen(Line(QColor(0xFF, 0xC8, 0x3D), 2));
  painter.drawLine(QPointF(12, 13), QPointF(15.6, 9.4));
  painter.setBrush(QColor(0xFF, 0xC8, 0x3D));
  painter.drawEllipse(QPointF(12, 13), 1, 1);
}

class PictureEngine : public QIconEngine {
 public:
  explicit PictureEngine(Picture picture) : picture_(picture) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    painter->save();
    if (mode == QIcon::Disabled) painter->setOpacity(0.4);
    Paint(*painter, picture_, rect, QGuiApplication::palette());
    painter->restore();
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, QRect(QPoint(), size), mode, state);
    return pixmap;
  }
  QIconEngine* clone() const override { return new PictureEngine(picture_); }

 private:
  Picture picture_;
};

}  // namespace

void Paint(QPainter& painter, Picture picture, const QRectF& area, const QPalette& palette) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const qreal side = std::min(area.width(), area.height());
  painter.translate(area.center());
  painter.scale(side / kSide, side / kSide);
  painter.translate(-kSide / 2, -kSide / 2);
  switch (picture) {
    case Picture::kConnected:
      PaintLink(painter, Green(palette), true);
      break;
    case Picture::kNotConnected:
      PaintLink(painter, palette.color(QPalette::PlaceholderText), false);
      break;
    case Picture::kProperties:
      PaintSliders(painter, palette);
      break;
    case Picture::kServer:
      PaintServer(painter);
      break;
  }
  painter.restore();
}

QIcon PictureIcon(Picture picture) { return QIcon(new PictureEngine(picture)); }

}  // namespace korval::ui
