// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ObjectFactory/XYLObjectFactory.h>

#include "XYLTestLatch.h"
#include "XYLTraceLines.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/PlugIns/XYLPluginLibraryLoader.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// Counts the global allocations of this test program (the library's
// included), so that a test can prove a path allocates nothing. The
// replacements pair malloc with free, which GCC cannot see through once it
// inlines them into this file's containers.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
namespace {
std::atomic<long> gAllocations(0);
}

void *operator new(std::size_t size) {
  gAllocations.fetch_add(1, std::memory_order_relaxed);
  if (void *block = std::malloc(size == 0 ? 1 : size))
    return block;
  throw std::bad_alloc();
}
void operator delete(void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }

namespace {

// Two distinct identifiers with the same text: different classes.
const char kWidget[] = "Widget";
const char kWidgetTwin[] = "Widget";
const char kGadget[] = "Gadget";

std::atomic<int> gMade(0);
std::atomic<int> gDeleted(0);
std::atomic<int> gCleaned(0);

class Widget : public XYLObjectFactoryItem {
public:
  Widget(XYLObjectFactory *factory, const char *classId) : XYLObjectFactoryItem(factory), m_classId(classId) {
    ++gMade;
  }
  ~Widget() override { ++gDeleted; }
  const char *getClassId() const override { return m_classId; }
  void cleanObject() override {
    ++gCleaned;
    m_payload = 0;
  }
  int m_payload = 0;

private:
  const char *m_classId;
};

XYLObjectFactoryItem *makeWidget(XYLObjectFactory *factory) { return new Widget(factory, kWidget); }
XYLObjectFactoryItem *makeTwin(XYLObjectFactory *factory) { return new Widget(factory, kWidgetTwin); }
XYLObjectFactoryItem *makeGadget(XYLObjectFactory *factory) { return new Widget(factory, kGadget); }
XYLObjectFactoryItem *makeNothing(XYLObjectFactory *) { return nullptr; }
XYLObjectFactoryItem *makeFailure(XYLObjectFactory *) { throw std::runtime_error("creator failed"); }

class XYLObjectFactoryTest : public ::testing::Test {
protected:
  void SetUp() override {
    gMade = 0;
    gDeleted = 0;
    gCleaned = 0;
  }
};

// Runs `call`, which must throw XYLIllegalStateError with `message` raised
// in the factory's source file.
template <class Call> void expectIllegalState(Call call, const char *message) {
  try {
    call();
    ADD_FAILURE() << "no exception; expected " << message;
  } catch (XYLIllegalStateError &e) {
    EXPECT_STREQ(message, e.getMessage());
    EXPECT_EQ(0, e.getErrorCode());
    const std::vector<std::string> lines = xyltest::traceLines(e);
    ASSERT_EQ(1u, lines.size());
    EXPECT_EQ(0u, lines[0].find("ObjectFactory/XYLObjectFactory(")) << lines[0];
  }
}

TEST_F(XYLObjectFactoryTest, IdentifiersAreMatchedByAddress) {
  XYLObjectFactory factory;
  factory.registerClass(kWidget, makeWidget);
  expectIllegalState([&] { factory.registerClass(kWidget, makeGadget); }, "This classId is already registered");
  expectIllegalState([&] { factory.createObject(kWidgetTwin); }, "This classId hasn't been registered.");
  expectIllegalState([&] { factory.createObject(std::string("Widget").c_str()); },
                     "This classId hasn't been registered.");

  factory.registerClass(kWidgetTwin, makeTwin); // same text, another class
  XYLObjectFactoryItem *widget = factory.createObject(kWidget);
  XYLObjectFactoryItem *twin = factory.createObject(kWidgetTwin);
  EXPECT_EQ(kWidget, widget->getClassId());
  EXPECT_EQ(kWidgetTwin, twin->getClassId());
  twin->release();
  EXPECT_NE(twin, factory.createObject(kWidget)) << "a twin's item went to the other class's pool";
  widget->release();
}

TEST_F(XYLObjectFactoryTest, ReleasedItemsAreReusedFirstReleasedFirst) {
  XYLObjectFactory factory;
  factory.registerClass(kWidget, makeWidget);
  XYLObjectFactoryItem *a = factory.createObject(kWidget);
  EXPECT_EQ(1, gMade.load());
  static_cast<Widget *>(a)->m_payload = 7;
  a->release();
  EXPECT_EQ(1, gCleaned.load());
  XYLObjectFactoryItem *again = factory.createObject(kWidget);
  EXPECT_EQ(a, again);
  EXPECT_EQ(1, gMade.load()) << "the creator ran for a pooled item";
  EXPECT_EQ(0, static_cast<Widget *>(again)->m_payload) << "cleanObject ran before pooling";

  XYLObjectFactoryItem *b = factory.createObject(kWidget);
  XYLObjectFactoryItem *c = factory.createObject(kWidget);
  EXPECT_EQ(3, gMade.load());
  // Released in the order b, a, c: handed out again in that order.
  for (XYLObjectFactoryItem *item : {b, a, c})
    item->release();
  EXPECT_EQ(b, factory.createObject(kWidget));
  EXPECT_EQ(a, factory.createObject(kWidget));
  EXPECT_EQ(c, factory.createObject(kWidget));
  EXPECT_EQ(3, gMade.load());
  XYLObjectFactoryItem *d = factory.createObject(kWidget);
  EXPECT_EQ(4, gMade.load());
  EXPECT_TRUE(d != a && d != b && d != c);
  // releaseObject queues without cleaning.
  const int cleaned = gCleaned.load();
  factory.releaseObject(d);
  EXPECT_EQ(cleaned, gCleaned.load());
  EXPECT_EQ(d, factory.createObject(kWidget));
}

TEST_F(XYLObjectFactoryTest, TheFreeListGrowsBeyondItsFirstSize) {
  XYLObjectFactory factory;
  factory.registerClass(kWidget, makeWidget);
  std::vector<XYLObjectFactoryItem *> items;
  for (int i = 0; i < 100; ++i)
    items.push_back(factory.createObject(kWidget));
  // Interleave takes and releases so that the ring wraps while growing.
  for (int i = 0; i < 50; ++i)
    items[i]->release();
  for (int i = 0; i < 20; ++i)
    EXPECT_EQ(items[i], factory.createObject(kWidget)) << i;
  for (int i = 50; i < 100; ++i)
    items[i]->release();
  for (int i = 0; i < 20; ++i)
    items[i]->release();
  std::vector<XYLObjectFactoryItem *> expected(items.begin() + 20, items.end());
  expected.insert(expected.end(), items.begin(), items.begin() + 20);
  for (XYLObjectFactoryItem *item : expected)
    EXPECT_EQ(item, factory.createObject(kWidget));
  EXPECT_EQ(100, gMade.load());
}

TEST_F(XYLObjectFactoryTest, UnregisterOnlyWhenEverythingIsReleased) {
  {
    XYLObjectFactory factory;
    factory.registerClass(kWidget, makeWidget);
    XYLObjectFactoryItem *kept = factory.createObject(kWidget);
    XYLObjectFactoryItem *returned = factory.createObject(kWidget);
    returned->release();
    expectIllegalState([&] { factory.unregisterClass(kWidget); },
                       "Unable to unregister the class .., some objects still in use.");
    EXPECT_EQ(0, gDeleted.load());
    EXPECT_EQ(returned, factory.createObject(kWidget)) << "the class stays usable";
    returned->release();
    kept->release();
    factory.unregisterClass(kWidget);
    EXPECT_EQ(2, gDeleted.load()) << "each made item is deleted once";
    expectIllegalState([&] { factory.createObject(kWidget); }, "This classId hasn't been registered.");
    expectIllegalState([&] { factory.unregisterClass(kWidget); }, "This classId hasn't been registered.");
    factory.registerClass(kWidget, makeWidget); // registered anew
    EXPECT_NE(nullptr, factory.createObject(kWidget));
  }
  EXPECT_EQ(3, gDeleted.load()) << "the destructor deletes the item still in use";
}

TEST_F(XYLObjectFactoryTest, DestructorDeletesEveryMadeItemOnce) {
  {
    XYLObjectFactory factory;
    factory.registerClass(kWidget, makeWidget);
    factory.registerClass(kGadget, makeGadget);
    XYLObjectFactoryItem *a = factory.createObject(kWidget);
    factory.createObject(kWidget);
    factory.createObject(kGadget)->release();
    a->release();
    factory.createObject(kWidget); // a again
  }
  EXPECT_EQ(3, gMade.load());
  EXPECT_EQ(3, gDeleted.load());
}

TEST_F(XYLObjectFactoryTest, ReleaseEdgeCases) {
  XYLObjectFactory factory;
  factory.releaseObject(nullptr); // nothing
  // An item of a class the factory never registered.
  Widget stranger(&factory, kGadget);
  expectIllegalState([&] { factory.releaseObject(&stranger); }, "This item type has never been registered.");
  expectIllegalState([&] { stranger.release(); }, "This item type has never been registered.");
  EXPECT_EQ(1, gCleaned.load()) << "release cleans before it asks the factory";

  // Without a factory an item deletes itself.
  XYLObjectFactoryItem *orphan = new Widget(nullptr, kWidget);
  EXPECT_EQ(nullptr, orphan->getFactory());
  orphan->release();
  EXPECT_EQ(1, gDeleted.load());
  EXPECT_EQ(1, gCleaned.load()) << "a deleted item is not cleaned";
}

TEST_F(XYLObjectFactoryTest, CreatorResults) {
  XYLObjectFactory factory;
  factory.registerClass(kWidget, makeNothing);
  EXPECT_EQ(nullptr, factory.createObject(kWidget));
  factory.unregisterClass(kWidget); // a null result is not recorded
  factory.registerClass(kGadget, makeFailure);
  EXPECT_THROW(factory.createObject(kGadget), std::runtime_error);
  // The creator ran with no lock held: the factory is still fully usable.
  EXPECT_THROW(factory.createObject(kGadget), std::runtime_error);
  factory.unregisterClass(kGadget);
  factory.registerClass(kGadget, makeGadget);
  EXPECT_NE(nullptr, factory.createObject(kGadget));
}

TEST_F(XYLObjectFactoryTest, SteadyStateAllocatesNothing) {
  XYLObjectFactory factory;
  factory.registerClass(kWidget, makeWidget);
  // Warm up: two items made, the free list grown to hold both.
  XYLObjectFactoryItem *a = factory.createObject(kWidget);
  XYLObjectFactoryItem *b = factory.createObject(kWidget);
  a->release();
  b->release();
  const long before = gAllocations.load();
  for (int i = 0; i < 1000; ++i) {
    XYLObjectFactoryItem *x = factory.createObject(kWidget);
    XYLObjectFactoryItem *y = factory.createObject(kWidget);
    y->release();
    x->release();
  }
  EXPECT_EQ(before, gAllocations.load());
  EXPECT_EQ(2, gMade.load());
}

class XYLObjectFactoryThreadTest : public XYLObjectFactoryTest, public ::testing::WithParamInterface<int> {};

TEST_P(XYLObjectFactoryThreadTest, ConcurrentCreateAndReleaseNeverShareAnItem) {
  const int threads = GetParam();
  const int rounds = 2000;
  XYLObjectFactory factory;
  factory.registerClass(kWidget, makeWidget);
  factory.registerClass(kGadget, makeGadget);
  std::atomic<int> shared(0);
  xyltest::Latch ready(threads);
  std::vector<std::thread> workers;
  for (int t = 0; t < threads; ++t) {
    workers.emplace_back([&, t]() {
      ready.countDown();
      ready.wait();
      const char *classId = t % 2 == 0 ? kWidget : kGadget;
      for (int i = 0; i < rounds; ++i) {
        Widget *item = static_cast<Widget *>(factory.createObject(classId));
        // An item handed to two threads at once would see the other's mark.
        if (item->m_payload != 0)
          ++shared;
        item->m_payload = t + 1;
        item->release();
      }
    });
  }
  for (std::thread &worker : workers)
    worker.join();
  EXPECT_EQ(0, shared.load());
  EXPECT_LE(gMade.load(), threads) << "at most one item per thread is ever out at once";
  factory.unregisterClass(kWidget);
  factory.unregisterClass(kGadget);
  EXPECT_EQ(gMade.load(), gDeleted.load());
}

INSTANTIATE_TEST_SUITE_P(Threads, XYLObjectFactoryThreadTest, ::testing::Values(2, 4, 8));

TEST_F(XYLObjectFactoryTest, ItemsFromAPlugIn) {
  void *library = XYLPluginLibraryLoader::load(XYLTEST_PLUGIN_PATH);
  const char *classId = static_cast<const char *>(XYLPluginLibraryLoader::findSymbol(library, "xyltestWidgetClassId"));
  void *creator = XYLPluginLibraryLoader::findSymbol(library, "xyltestCreateWidget");
  ASSERT_NE(nullptr, classId);
  ASSERT_NE(nullptr, creator);
  {
    XYLObjectFactory factory;
    factory.registerClass(classId, reinterpret_cast<XYLObjectFactoryCreator>(creator));
    XYLObjectFactoryItem *item = factory.createObject(classId);
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(classId, item->getClassId()) << "the plug-in's items name the plug-in's identifier";
    EXPECT_EQ(&factory, item->getFactory());
    item->release();
    EXPECT_EQ(item, factory.createObject(classId));
    item->release();
    // The items' code lives in the plug-in: unregister before unloading.
    factory.unregisterClass(classId);
  }
  XYLPluginLibraryLoader::unload(library);
}

} // namespace
