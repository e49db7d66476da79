// SPDX-License-Identifier: MIT
#include "ui/StatusPanels.h"

#include <QLabel>

namespace korval::ui {
namespace {

struct PanelKind {
  const char* key;
  const char* text;
  const char* tool_tip;
  int stretch;
};

constexpr std::array<PanelKind, 4> kPanels{{
    {"Status", "Status:", QT_TRANSLATE_NOOP("korval::ui::StatusPanels", "Communications Port Status"), 2},
    {"Settings", "Settings:", QT_TRANSLATE_NOOP("korval::ui::StatusPanels", "Communications Port Settings"),
     3},
    {"timeout", "Timer", QT_TRANSLATE_NOOP("korval::ui::StatusPanels", "Serial response timer"), 2},
    {"ConnectTime", "", QT_TRANSLATE_NOOP("korval::ui::StatusPanels", "Connect Time"), 1},
}};

}  // namespace

StatusPanels::StatusPanels(QWidget* parent) : QStatusBar(parent) {
  setObjectName("sbrStatus");
  setSizeGripEnabled(false);
  for (std::size_t i = 0; i < kPanels.size(); ++i) {
    const PanelKind& kind = kPanels.at(i);
    auto* panel = new QLabel(QString::fromLatin1(kind.text));
    panel->setObjectName(QString::fromLatin1(kind.key));
    panel->setToolTip(tr(kind.tool_tip));
    panel->setAccessibleDescription(tr(kind.tool_tip));
    panel->setTextFormat(Qt::PlainText);
    panel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    panel->setMargin(2);
    panel->setMinimumWidth(panel->fontMetrics().horizontalAdvance("00:00:00 ") + 12);
    addWidget(panel, kind.stretch);
    panels_.at(i) = panel;
  }
}

void StatusPanels::ShowPanel(const QString& key, const QString& text) {
  if (QLabel* panel = Panel(key)) panel->setText(text);
}

QString StatusPanels::PanelText(const QString& key) const {
  const QLabel* panel = Panel(key);
  return panel == nullptr ? QString() : panel->text();
}

QLabel* StatusPanels::Panel(const QString& key) const {
  for (std::size_t i = 0; i < kPanels.size(); ++i) {
    if (key == QLatin1String(kPanels.at(i).key)) return panels_.at(i);
  }
  return nullptr;
}

}  // namespace korval::ui
