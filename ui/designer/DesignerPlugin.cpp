// SPDX-License-Identifier: MIT
#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

#include "ui/ConfigComPort.h"
#include "ui/KorvAsapServer.h"
#include "ui/designer/DesignerWidget.h"

namespace korval::ui {

/// What the plugin offers: the control and the settings panel.
class DesignerPlugin : public QObject, public QDesignerCustomWidgetCollectionInterface {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetCollectionInterface")
  Q_INTERFACES(QDesignerCustomWidgetCollectionInterface)

 public:
  QList<QDesignerCustomWidgetInterface*> customWidgets() const override { return {&control_, &panel_}; }

 private:
  // Designer initialises what a constant plugin lists.
  mutable DesignerWidget<KorvAsapServer> control_{
      {"ui/KorvAsapServer.h", "korvAsapServer", "ASAP3 server for test benches", {1000, 680}}};
  mutable DesignerWidget<ConfigComPort> panel_{
      {"ui/ConfigComPort.h", "configComPort", "Settings of the ASAP3 server", {860, 560}}};
};

}  // namespace korval::ui

#include "DesignerPlugin.moc"
