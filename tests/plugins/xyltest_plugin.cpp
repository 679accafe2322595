// SPDX-License-Identifier: Apache-2.0
// A plug-in library for the loader and factory tests: a start and a stop
// routine that record what ran, and one pooled item class whose creator the
// host registers with its object factory.
#include <XYLCore/ObjectFactory/XYLObjectFactory.h>

#define XYLTEST_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

int gState = 0;

class PluginWidget : public XYLObjectFactoryItem {
public:
  explicit PluginWidget(XYLObjectFactory *factory) : XYLObjectFactoryItem(factory) {}
  const char *getClassId() const override;
};

} // namespace

// The class identifier: hosts register the plug-in's class under this very
// object.
XYLTEST_EXPORT const char xyltestWidgetClassId[] = "PluginWidget";

const char *PluginWidget::getClassId() const { return xyltestWidgetClassId; }

// 0 before any routine ran, 1 after the start routine, 2 after the stop one.
XYLTEST_EXPORT int xyltestPluginState() { return gState; }
XYLTEST_EXPORT void xyltestPluginInitialize() { gState = 1; }
XYLTEST_EXPORT void xyltestPluginTerminate() { gState = 2; }

XYLTEST_EXPORT XYLObjectFactoryItem *xyltestCreateWidget(XYLObjectFactory *factory) {
  return new PluginWidget(factory);
}
