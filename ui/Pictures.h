// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QPalette>
#include <QRectF>

class QPainter;

namespace korval::ui {

/// What the pictures show; each is drawn as lines, and so is crisp at any size.
enum class Picture { kConnected, kNotConnected, kProperties, kServer };

/// Draws a picture into the largest square in `area`.
void Paint(QPainter& painter, Picture picture, const QRectF& area, const QPalette& palette);

/// The picture as an icon that follows the application's palette.
QIcon PictureIcon(Picture picture);

}  // namespace korval::ui
