// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include "ui/Pictures.h"

namespace korval::ui {

/// One of the widgets as Qt Designer offers it. Designer initialises what it offers, and gets a widget that
/// opens nothing; a form that is loaded at run time comes without that, and gets the real one.
template <typename Widget>
class DesignerWidget : public QDesignerCustomWidgetInterface {
 public:
  struct Description {
    const char* header;
    const char* object_name;
    const char* tool_tip;
    QSize size;
  };

  explicit DesignerWidget(const Description& description) : description_(description) {}

  QString name() const override { return QString::fromLatin1(Widget::staticMetaObject.className()); }
  QString group() const override { return QStringLiteral("Korval"); }
  QString toolTip() const override { return QString::fromLatin1(description_.tool_tip); }
  QString whatsThis() const override { return toolTip(); }
  QString includeFile() const override { return QString::fromLatin1(description_.header); }
  QIcon icon() const override { return PictureIcon(Picture::kServer); }
  bool isContainer() const override { return false; }
  QString domXml() const override {
    return QStringLiteral(
               "<ui language=\"c++\"><widget class=\"%1\" name=\"%2\"><property name=\"geometry\"><rect>"
               "<x>0</x><y>0</y><width>%3</width><height>%4</height></rect></property></widget></ui>")
        .arg(name(), QString::fromLatin1(description_.object_name))
        .arg(description_.size.width())
        .arg(description_.size.height());
  }

  bool isInitialized() const override { return in_designer_; }
  void initialize(QDesignerFormEditorInterface*) override { in_designer_ = true; }
  QWidget* createWidget(QWidget* parent) override {
    return in_designer_ ? Widget::ForDesigner(parent) : new Widget(parent);
  }

 private:
  Description description_;
  bool in_designer_ = false;
};

}  // namespace korval::ui
