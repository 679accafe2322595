// SPDX-License-Identifier: Apache-2.0
// A C++ host of XYLCore: it starts the library, turns incoming bytes into
// text, orders names the way a German reader expects, formats a duration,
// runs work on a pool, and raises, catches and logs a failure that carries a
// catalog message.
#include <XYLCore/Core/xylcore.h>
#include <XYLCore/ExceptionHierarchy/XYLException.h>
#include <XYLCore/Logging/XYLMiniLogger.h>
#include <XYLCore/Messages/XYLMessage.h>
#include <XYLCore/ThreadPools/XYLThreadPoolQueued.h>
#include <XYLCore/Threads/XYLThreadRunnable.h>
#include <XYLCore/i18n/cpp/i18n_collator.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_intervalformat.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <vector>

namespace {

// Prints an I18NString as UTF-8.
void print(const char *label, const I18NString &text) {
  char *bytes = text.toBytes("UTF-8");
  std::printf("%s: %s\n", label, bytes);
  I18NString::freeBuffer(bytes);
}

class CountingTask : public XYLThreadRunnable {
public:
  explicit CountingTask(std::atomic<int> &done) : m_done(done) {}
  void run() override { m_done.fetch_add(1); }

private:
  std::atomic<int> &m_done;
};

void convertIncomingBytes() {
  const char latin1[] = "Gr\xfc\xdf"
                        "e aus K\xf6ln"; // as a Latin-1 client sends it
  I18NString text(latin1, "ISO-8859-1");
  print("decoded from ISO-8859-1", text);
  std::printf("length in UTF-16 units: %d\n", static_cast<int>(text.length()));
}

void sortNames() {
  std::vector<I18NString> names;
  for (const char *name : {"Zoe", "\xc3\x84rger", "Apfel",
                           "\xc3\xbc"
                           "ber",
                           "Ulm"})
    names.emplace_back(name, "UTF-8");
  I18NCollator german(I18NString("de", "UTF-8"));
  std::sort(names.begin(), names.end(), [&](I18NString &a, I18NString &b) { return german.collate(a, b) < 0; });
  for (const I18NString &name : names)
    print("sorted", name);
}

void formatDuration() {
  I18NIntervalFormat format(I18NLocale("en-us"));
  I18NString text;
  format.format(2, 3, 15, 0, 0, text);
  print("duration", text);
}

void runPool() {
  std::atomic<int> done(0);
  std::vector<CountingTask> tasks(100, CountingTask(done));
  {
    XYLThreadPoolQueued pool(2, 16, 1); // 2 workers, 16 queue slots, drain when destroyed
    for (CountingTask &task : tasks)
      pool.execute(&task, 4294967295ul);
  }
  std::printf("pool ran %d tasks\n", done.load());
}

void failWithCatalogMessage() {
  try {
    XYLException failure(XYLSeverityError, 1L);
    XYLMessage message("xylpluginmsgs", 1);
    message << XYLMessageParm("libexample.so: cannot open shared object file");
    failure << message;
    XYL_THROW(failure);
  } catch (XYLException &e) {
    std::printf("caught %s: %s\n", e.getThrowableName(), e.getMessage());
    XYLMiniLogger log("cpp_host");
    log.log("failWithCatalogMessage", e.toString());
  }
}

} // namespace

int main() {
  if (xylInitialize() != 0 || I18NInitialize() == 0) {
    std::fprintf(stderr, "cpp_host: the library did not start\n");
    return 1;
  }
  convertIncomingBytes();
  sortNames();
  formatDuration();
  runPool();
  failWithCatalogMessage();
  I18NTerminate();
  xylTerminate();
  return 0;
}
