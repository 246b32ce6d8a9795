// Qt Designer lists the widget: its plugin loads, describes the widget for the widget
// box and uic, and creates one that shows the control's surface.
#ifdef VELMORA_DESIGNER_PLUGIN

#include <QPluginLoader>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include "qt_support.h"

namespace velmora::testing {
namespace {

TEST(DesignerPlugin, DescribesAndCreatesTheWidget) {
  QPluginLoader loader(QStringLiteral(VELMORA_DESIGNER_PLUGIN));
  QObject* instance = loader.instance();
  ASSERT_NE(instance, nullptr) << loader.errorString().toStdString();
  auto* plugin = qobject_cast<QDesignerCustomWidgetInterface*>(instance);
  ASSERT_NE(plugin, nullptr);

  EXPECT_EQ(plugin->name(), QStringLiteral("velmora::qt::VelmoraWidget"));
  EXPECT_TRUE(plugin->domXml().contains(QStringLiteral(R"(class="velmora::qt::VelmoraWidget")")));

  // The plugin holds its own copy of the binding: the widget is checked by its class
  // name and its surface, not by a cast.
  QWidget form;
  QWidget* widget = plugin->createWidget(&form);
  ASSERT_NE(widget, nullptr);
  EXPECT_EQ(widget->parentWidget(), &form);
  EXPECT_STREQ(widget->metaObject()->className(), "velmora::qt::VelmoraWidget");
  EXPECT_EQ(widget->size(), QSize(664, 400));  // 9960 x 6000 twips
  EXPECT_EQ(widget->findChildren<QListView*>().size(), 4);
}

}  // namespace
}  // namespace velmora::testing

#endif
