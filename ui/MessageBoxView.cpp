// SPDX-License-Identifier: MIT
#include "ui/MessageBoxView.h"

#include <QMessageBox>

#include "base/VisibleText.h"

namespace korval::ui {
namespace {

// Whoever runs into the same trouble again and again must not bury the person under boxes.
bool RaiseOpenBox(const QWidget& parent, const QString& text) {
  for (QMessageBox* box : parent.findChildren<QMessageBox*>()) {
    if (!box->isVisible() || box->text() != text) continue;
    box->raise();
    box->activateWindow();
    return true;
  }
  return false;
}

}  // namespace

void MessageBoxView::Show(const std::string& text, host::MessageStyle style) {
  if (!parent_) return;
  const QString shown = QString::fromStdString(base::VisibleText(text));
  if (RaiseOpenBox(*parent_, shown)) return;
  const auto icon = style == host::MessageStyle::kExclamation ? QMessageBox::Warning : QMessageBox::NoIcon;
  auto* box = new QMessageBox(icon, QObject::tr("Korval Asap server"), shown, QMessageBox::Ok, parent_);
  box->setTextFormat(Qt::PlainText);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setModal(false);
  box->show();
}

}  // namespace korval::ui
