// SPDX-License-Identifier: Apache-2.0
// Objects by class identifier, pooled and reused; a plug-in loaded by path.
#include <XYLCore/ObjectFactory/XYLObjectFactory.h>
#include <XYLCore/PlugIns/XYLPluginException.h>
#include <XYLCore/PlugIns/XYLPluginLibraryLoader.h>
#include <cstdio>

static const char kSession[] = "Session"; // identifiers match by address

struct Session : XYLObjectFactoryItem {
  explicit Session(XYLObjectFactory *factory) : XYLObjectFactoryItem(factory) {}
  const char *getClassId() const override { return kSession; }
};

static XYLObjectFactoryItem *makeSession(XYLObjectFactory *f) { return new Session(f); }

int main() {
  XYLObjectFactory factory;
  factory.registerClass(kSession, makeSession);
  XYLObjectFactoryItem *a = factory.createObject(kSession);
  a->release(); // back to the free list
  XYLObjectFactoryItem *b = factory.createObject(kSession);
  std::printf("reused: %s\n", a == b ? "yes" : "no");
  b->release();
  try {
    XYLPluginLibraryLoader::load("./no-such-plugin.so");
  } catch (XYLThrowable &e) {
    std::printf("load failed: %s\n", e.getMessage());
  }
  return a == b ? 0 : 1;
}
