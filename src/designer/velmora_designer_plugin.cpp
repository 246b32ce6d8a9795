// The Designer plugin's description of VelmoraWidget: its name, group, include and the
// XML that uic reads, and the widget it creates on a form. It links its own copy of the
// binding, so the widget is made with its parent only, as any host makes it.
#include "velmora_designer_plugin.h"

#include <memory>

#include <QIcon>

#include <velmora/qt/velmora_widget.h>

namespace velmora::designer {

VelmoraDesignerPlugin::VelmoraDesignerPlugin(QObject* parent) : QObject(parent) {}

QString VelmoraDesignerPlugin::name() const {
  // The class as uic writes it into the generated code.
  return QStringLiteral("velmora::qt::VelmoraWidget");
}

QString VelmoraDesignerPlugin::group() const {
  return QStringLiteral("Velmora");
}

QString VelmoraDesignerPlugin::toolTip() const {
  return QStringLiteral("Contrôle de planification des interventions");
}

QString VelmoraDesignerPlugin::whatsThis() const {
  return QStringLiteral(
      "Propose les tâches ou les soins d'une intervention et tient la sélection du "
      "planificateur, avec sa durée totale.");
}

QString VelmoraDesignerPlugin::includeFile() const {
  return QStringLiteral(VELMORA_WIDGET_INCLUDE);
}

QIcon VelmoraDesignerPlugin::icon() const {
  return {};
}

bool VelmoraDesignerPlugin::isContainer() const {
  return false;
}

QWidget* VelmoraDesignerPlugin::createWidget(QWidget* parent) {
  // Designer's form owns the widget through its parent.
  return std::make_unique<qt::VelmoraWidget>(parent).release();
}

bool VelmoraDesignerPlugin::isInitialized() const {
  return initialized_;
}

void VelmoraDesignerPlugin::initialize(QDesignerFormEditorInterface* /*core*/) {
  initialized_ = true;
}

QString VelmoraDesignerPlugin::domXml() const {
  return QStringLiteral(
      R"(<ui language="c++" displayname="Ctr_VelmoraNew">
  <widget class="velmora::qt::VelmoraWidget" name="velmoraWidget">
    <property name="filtersVisible">
      <bool>false</bool>
    </property>
  </widget>
</ui>
)");
}

}  // namespace velmora::designer
