// SPDX-License-Identifier: Apache-2.0
// The converter pools: prototypes opened at start-up, last-in-first-out
// pools of their clones behind the helper classes, fronted by one slot per
// thread.
#include "i18n/cpp/i18n_internal.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/Utility/XYLUtMemory.h>

#include <unicode/ucnv.h>

#include <atomic>
#include <cstring>
#include <new>

using i18n_detail::kToolkitDefault;
using i18n_detail::kUTF16Platform;

// ---- Pools ----------------------------------------------------------------------

std::atomic<int> I18NConverterPools::initCount{0};
I18NConverter *I18NConverterPools::prototypes[i18n_detail::PoolCount] = {nullptr, nullptr, nullptr};
I18NConverter *I18NConverterPools::pools[i18n_detail::PoolCount] = {nullptr, nullptr, nullptr};

XYLThreadCriticalSection &I18NConverterPools::startLock() {
  // Never destroyed: threads that outlive static destruction may still
  // return converters.
  static XYLThreadCriticalSection *lock = new XYLThreadCriticalSection(0);
  return *lock;
}

const char *i18n_detail::poolEncodingName(PoolKind kind) {
  switch (kind) {
  case PoolUTF8:
    return kToolkitDefault;
  case PoolUTF16:
    return kUTF16Platform;
  default:
    return I18NGetPlatformDefaultEncoding();
  }
}

I18NConverter *I18NConverterPools::cloneOf(const I18NConverter &prototype) {
  I18NConverter *converter = new (std::nothrow) I18NConverter();
  if (converter == nullptr)
    i18n_detail::raiseConverterOutOfMemory();
  try {
    converter->create(prototype);
  } catch (...) {
    delete converter;
    throw;
  }
  return converter;
}

namespace {

bool needsReset(UConverter *converter) {
  UErrorCode status = U_ZERO_ERROR;
  const int32_t toU = ucnv_toUCountPending(converter, &status);
  const int32_t fromU = ucnv_fromUCountPending(converter, &status);
  return U_FAILURE(status) || toU != 0 || fromU != 0;
}

} // namespace

// Whether a converter of this type keeps no state beyond pending units
// (then a reset is needed only when units are pending).
bool i18n_detail::isStatelessType(UConverter *converter) {
  switch (ucnv_getType(converter)) {
  case UCNV_UTF8:
  case UCNV_UTF16_BigEndian:
  case UCNV_UTF16_LittleEndian:
  case UCNV_UTF32_BigEndian:
  case UCNV_UTF32_LittleEndian:
  case UCNV_SBCS:
  case UCNV_DBCS:
  case UCNV_MBCS:
  case UCNV_LATIN_1:
  case UCNV_US_ASCII:
  case UCNV_CESU8:
    return true;
  default:
    return false; // may keep a shift state or a byte-order decision
  }
}

// ---- Per-thread front slots ----------------------------------------------------------
//
// Each pool is a shared last-in-first-out stack under the start-up lock,
// fronted by one slot per thread: a thread's most recently returned
// converter waits in its slot and is the next one that thread takes, so the
// common take-use-return cycle touches no lock (two atomic exchanges instead
// of two lock round trips, which cost more than ucnv_open + ucnv_close).
// Order stays last-in-first-out per thread: a return into a full slot moves
// the older converter to the shared stack. The slots of every thread are
// linked in a registry (under the start-up lock) so that the last
// I18NTerminate can empty them; a thread that exits empties its own.

namespace {

// Zero-initialised and trivially destructible, so that reaching it costs no
// call; a thread that registers its slots also creates a SlotsCleanup,
// whose destructor empties and unregisters them when the thread exits.
struct ThreadSlots {
  std::atomic<I18NConverter *> slot[i18n_detail::PoolCount];
  ThreadSlots *prev;
  ThreadSlots *next;
  bool registered;
};

ThreadSlots *gRegistry = nullptr; // guarded by the start-up lock

__attribute__((tls_model("initial-exec"))) thread_local ThreadSlots tThreadSlots;

void releaseSlots(ThreadSlots &slots) {
  for (auto &s : slots.slot)
    delete s.exchange(nullptr, std::memory_order_acq_rel);
}

struct SlotsCleanup {
  ~SlotsCleanup() {
    ThreadSlots &slots = tThreadSlots;
    XYLThreadGuard guard(I18NConverterPools::startLock());
    if (!slots.registered)
      return;
    if (slots.prev != nullptr)
      slots.prev->next = slots.next;
    else
      gRegistry = slots.next;
    if (slots.next != nullptr)
      slots.next->prev = slots.prev;
    slots.registered = false;
    releaseSlots(slots);
  }
};

thread_local SlotsCleanup tSlotsCleanup;

// Caller holds the start-up lock.
void registerSlots(ThreadSlots &slots) {
  static_cast<void>(&tSlotsCleanup); // creates this thread's cleanup
  slots.registered = true;
  slots.prev = nullptr;
  slots.next = gRegistry;
  if (gRegistry != nullptr)
    gRegistry->prev = &slots;
  gRegistry = &slots;
}

} // namespace

I18NConverter *I18NConverterPools::take(i18n_detail::PoolKind kind) {
  if (initCount.load(std::memory_order_acquire) > 0) {
    // Only this thread and the last I18NTerminate touch the slot, and the
    // latter only while the layer is in use nowhere (the documented rule).
    std::atomic<I18NConverter *> &slot = tThreadSlots.slot[kind];
    I18NConverter *converter = slot.load(std::memory_order_relaxed);
    if (converter != nullptr) {
      slot.store(nullptr, std::memory_order_relaxed);
      return converter;
    }
    XYLThreadGuard guard(startLock());
    if (initCount.load(std::memory_order_relaxed) > 0 && prototypes[kind] != nullptr) {
      converter = pools[kind];
      if (converter != nullptr) {
        pools[kind] = converter->m_pNextInPool;
        converter->m_pNextInPool = nullptr;
        return converter;
      }
      return cloneOf(*prototypes[kind]);
    }
  }
  I18NConverter *converter = new (std::nothrow) I18NConverter();
  if (converter == nullptr)
    i18n_detail::raiseConverterOutOfMemory();
  try {
    converter->create(i18n_detail::poolEncodingName(kind));
  } catch (...) {
    delete converter;
    throw;
  }
  return converter;
}

void I18NConverterPools::give(i18n_detail::PoolKind kind, I18NConverter *converter) {
  if (converter == nullptr)
    return;
  // A borrower may have changed the modes or left a half-read sequence; the
  // next borrower gets a converter as fresh as a clone of the prototype.
  // ucnv_reset is a noticeable part of a take and return, so it is skipped
  // when nothing is pending in a converter that keeps no shift state.
  if (!converter->m_stateless || needsReset(converter->m_pConverter))
    ucnv_reset(converter->m_pConverter);
  if (converter->m_inputMode != I18N_UNCONVERTIBLE_REPLACE || converter->m_userInputCallback != nullptr) {
    converter->m_userInputCallback = nullptr;
    converter->setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_REPLACE);
  }
  if (converter->m_outputMode != I18N_UNCONVERTIBLE_REPLACE || converter->m_userOutputCallback != nullptr) {
    converter->m_userOutputCallback = nullptr;
    converter->setBuiltInUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_REPLACE);
  }
  if (initCount.load(std::memory_order_acquire) > 0) {
    ThreadSlots &slots = tThreadSlots;
    if (slots.registered) {
      std::atomic<I18NConverter *> &slot = slots.slot[kind];
      I18NConverter *older = slot.load(std::memory_order_relaxed);
      slot.store(converter, std::memory_order_relaxed);
      if (older == nullptr)
        return; // the slot was free
      // The slot now holds the newer converter; the older one goes below it.
      converter = older;
    }
    XYLThreadGuard guard(startLock());
    if (initCount.load(std::memory_order_relaxed) > 0) {
      if (!slots.registered) {
        registerSlots(slots);
        converter = slots.slot[kind].exchange(converter, std::memory_order_acq_rel);
        if (converter == nullptr)
          return;
      }
      converter->m_pNextInPool = pools[kind];
      pools[kind] = converter;
      return;
    }
  }
  delete converter;
}

int I18NConverterPools::createPrototypes() {
  for (int kind = 0; kind < i18n_detail::PoolCount; ++kind) {
    if (prototypes[kind] != nullptr)
      continue;
    I18NConverter *prototype = new (std::nothrow) I18NConverter();
    if (prototype == nullptr)
      i18n_detail::raiseConverterOutOfMemory();
    try {
      prototype->create(i18n_detail::poolEncodingName(static_cast<i18n_detail::PoolKind>(kind)));
    } catch (XYLOutOfMemoryError &) {
      delete prototype;
      throw;
    } catch (XYLThrowable &) {
      delete prototype;
      return 0;
    }
    prototypes[kind] = prototype;
  }
  return 1;
}

namespace {
void retireAllNamed();
} // namespace

void I18NConverterPools::releaseAll() {
  retireAllNamed();
  for (int kind = 0; kind < i18n_detail::PoolCount; ++kind) {
    delete prototypes[kind];
    prototypes[kind] = nullptr;
  }
  for (ThreadSlots *slots = gRegistry; slots != nullptr; slots = slots->next)
    releaseSlots(*slots);
  for (int kind = 0; kind < i18n_detail::PoolCount; ++kind) {
    I18NConverter *converter = pools[kind];
    while (converter != nullptr) {
      I18NConverter *next = converter->m_pNextInPool;
      delete converter;
      converter = next;
    }
    pools[kind] = nullptr;
  }
}

I18NConverterUTF8::I18NConverterUTF8() : m_pConverter(I18NConverterPools::take(i18n_detail::PoolUTF8)) {}
I18NConverterUTF8::~I18NConverterUTF8() { I18NConverterPools::give(i18n_detail::PoolUTF8, m_pConverter); }
I18NConverterUTF16::I18NConverterUTF16() : m_pConverter(I18NConverterPools::take(i18n_detail::PoolUTF16)) {}
I18NConverterUTF16::~I18NConverterUTF16() { I18NConverterPools::give(i18n_detail::PoolUTF16, m_pConverter); }
I18NConverterPlatformDefault::I18NConverterPlatformDefault()
    : m_pConverter(I18NConverterPools::take(i18n_detail::PoolPlatformDefault)) {}
I18NConverterPlatformDefault::~I18NConverterPlatformDefault() {
  I18NConverterPools::give(i18n_detail::PoolPlatformDefault, m_pConverter);
}

// ---- Pool by encoding name -------------------------------------------------------------
//
// A server that opens a converter per request pays ucnv_open each time;
// here each encoding in use keeps a prototype and a few idle ICU clones,
// so that constructing and destroying an I18NConverter by name takes and
// returns a clone. Entries are found by the name as asked (each keeps the
// names it was asked by) and grouped by the name ICU opens, so aliases
// share one pool. The least recently used encoding leaves when a new one
// would exceed the bound; converters it lent out still hold its clones, so
// an entry is freed only when the last of them comes back. Everything is
// guarded by the start-up lock.

namespace {

struct NamedEntry;

// One pooled ICU converter with the callback context installed in it.
struct NamedItem {
  UConverter *converter;
  i18n_detail::ConverterCallbackContext context;
  NamedEntry *entry;
  NamedItem *next;
};

struct NamedAlias {
  const char *name; // kToolkitDefault or an owned copy
  NamedEntry *entry;
  NamedAlias *next;
};

struct NamedEntry {
  const char *key;          // the name ICU opens (static ICU storage)
  I18NConverter *prototype; // opened by the first name asked
  NamedAlias *aliases;
  NamedItem *idle;
  int idleCount;
  long lent;               // items out with converters
  NamedEntry *prev, *next; // most recently used first
};

NamedEntry *gNamedHead = nullptr;
int gNamedCount = 0;

void freeAlias(NamedAlias *alias) {
  if (alias->name != kToolkitDefault)
    XYLUtMemory::free(const_cast<char *>(alias->name));
  delete alias;
}

void closeItem(NamedItem *item) {
  ucnv_close(item->converter);
  delete item;
}

// Frees an entry that is out of the list and has nothing lent.
void freeEntry(NamedEntry *entry) {
  while (entry->aliases != nullptr) {
    NamedAlias *next = entry->aliases->next;
    freeAlias(entry->aliases);
    entry->aliases = next;
  }
  delete entry;
}

// Takes an entry out of the list: its idle clones and prototype go now, the
// rest when the last lent clone returns. A detached entry has prev == next
// == itself.
void retireEntry(NamedEntry *entry) {
  if (entry->prev != nullptr)
    entry->prev->next = entry->next;
  else
    gNamedHead = entry->next;
  if (entry->next != nullptr)
    entry->next->prev = entry->prev;
  entry->prev = entry->next = entry;
  --gNamedCount;
  while (entry->idle != nullptr) {
    NamedItem *next = entry->idle->next;
    closeItem(entry->idle);
    entry->idle = next;
  }
  entry->idleCount = 0;
  delete entry->prototype;
  entry->prototype = nullptr;
  if (entry->lent == 0)
    freeEntry(entry);
}

void retireAllNamed() {
  while (gNamedHead != nullptr)
    retireEntry(gNamedHead);
}

bool retired(const NamedEntry *entry) { return entry->next == entry; }

void moveToFront(NamedEntry *entry) {
  if (gNamedHead == entry)
    return;
  entry->prev->next = entry->next;
  if (entry->next != nullptr)
    entry->next->prev = entry->prev;
  entry->prev = nullptr;
  entry->next = gNamedHead;
  gNamedHead->prev = entry;
  gNamedHead = entry;
}

NamedAlias *findAlias(const char *encoding) {
  for (NamedEntry *entry = gNamedHead; entry != nullptr; entry = entry->next)
    for (NamedAlias *alias = entry->aliases; alias != nullptr; alias = alias->next)
      if (std::strcmp(alias->name, encoding) == 0)
        return alias;
  return nullptr;
}

// The name the converter constructor would open for `encoding` (ICU's
// first alias, UTF-16/32 meaning the platform-endian forms), or null when
// ICU knows no such name.
const char *openedName(const char *encoding) {
  UErrorCode status = U_ZERO_ERROR;
  const char *alias = ucnv_getAlias(encoding, 0, &status);
  if (U_FAILURE(status) || alias == nullptr)
    return nullptr;
  if (std::strcmp(alias, "UTF-16") == 0)
    return kUTF16Platform;
  if (std::strcmp(alias, "UTF-32") == 0)
    return i18n_detail::kUTF32Platform;
  return alias;
}

NamedAlias *newAlias(const char *encoding) {
  const char *name = kToolkitDefault;
  if (std::strcmp(encoding, kToolkitDefault) != 0) {
    name = XYLUtMemory::strdup(encoding);
    if (name == nullptr)
      i18n_detail::raiseConverterOutOfMemory();
  }
  NamedAlias *alias = new (std::nothrow) NamedAlias{name, nullptr, nullptr};
  if (alias == nullptr) {
    if (name != kToolkitDefault)
      XYLUtMemory::free(const_cast<char *>(name));
    i18n_detail::raiseConverterOutOfMemory();
  }
  return alias;
}

// The entry and alias for `encoding`, created as needed (an unknown name
// throws from the prototype's opening).
NamedAlias *lookUp(const char *encoding) {
  if (NamedAlias *alias = findAlias(encoding))
    return alias;
  const char *key = openedName(encoding);
  NamedEntry *entry = gNamedHead;
  while (entry != nullptr && (key == nullptr || std::strcmp(entry->key, key) != 0))
    entry = entry->next;
  NamedAlias *alias = newAlias(encoding);
  if (entry == nullptr) {
    entry = new (std::nothrow) NamedEntry{key, nullptr, nullptr, nullptr, 0, 0, nullptr, gNamedHead};
    I18NConverter *prototype = nullptr;
    try {
      if (entry == nullptr)
        i18n_detail::raiseConverterOutOfMemory();
      prototype = I18NConverterPools::openByName(encoding);
    } catch (...) {
      delete entry;
      freeAlias(alias);
      throw;
    }
    entry->prototype = prototype;
    if (entry->key == nullptr)
      entry->key = ucnv_getName(prototype->getUConverter(), nullptr);
    if (gNamedHead != nullptr)
      gNamedHead->prev = entry;
    gNamedHead = entry;
    if (++gNamedCount > I18NConverterPools::kNamedEncodings) {
      NamedEntry *last = gNamedHead;
      while (last->next != nullptr)
        last = last->next;
      retireEntry(last);
    }
  }
  alias->entry = entry;
  alias->next = entry->aliases;
  entry->aliases = alias;
  return alias;
}

// A clone of the entry's prototype with the library's default callbacks
// pointing at the item's own context.
NamedItem *newItem(NamedEntry *entry) {
  NamedItem *item = new (std::nothrow) NamedItem{nullptr, {nullptr, nullptr, nullptr}, entry, nullptr};
  if (item == nullptr)
    i18n_detail::raiseConverterOutOfMemory();
  UErrorCode status = U_ZERO_ERROR;
  item->converter = ucnv_clone(entry->prototype->getUConverter(), &status);
  if (item->converter != nullptr && U_SUCCESS(status)) {
    ucnv_setToUCallBack(item->converter, i18n_detail::UCNV_TO_U_CALLBACK_RESOURCES, &item->context, nullptr, nullptr,
                        &status);
    ucnv_setFromUCallBack(item->converter, i18n_detail::UCNV_FROM_U_CALLBACK_RESOURCES, &item->context, nullptr,
                          nullptr, &status);
  }
  if (item->converter == nullptr || U_FAILURE(status)) {
    if (item->converter != nullptr)
      ucnv_close(item->converter);
    delete item;
    i18n_detail::raiseConverterOutOfMemory();
  }
  return item;
}

} // namespace

I18NConverter *I18NConverterPools::openByName(const char *encoding) {
  I18NConverter *converter = new (std::nothrow) I18NConverter();
  if (converter == nullptr)
    i18n_detail::raiseConverterOutOfMemory();
  try {
    converter->create(encoding);
  } catch (...) {
    delete converter;
    throw;
  }
  return converter;
}

bool I18NConverterPools::takeNamed(I18NConverter &converter, const char *encoding) {
  if (initCount.load(std::memory_order_acquire) <= 0)
    return false;
  NamedAlias *alias;
  NamedItem *item;
  {
    XYLThreadGuard guard(startLock());
    if (initCount.load(std::memory_order_relaxed) <= 0)
      return false;
    alias = lookUp(encoding);
    NamedEntry *entry = alias->entry;
    moveToFront(entry);
    item = entry->idle;
    if (item != nullptr) {
      entry->idle = item->next;
      --entry->idleCount;
    } else {
      item = newItem(entry);
      i18n_detail::countClone();
    }
    ++entry->lent;
    // The prototype may go as soon as the lock is released (its encoding
    // leaving the pool); the entry and its alias names stay until the item
    // comes back.
    const I18NConverter &prototype = *entry->prototype;
    converter.m_maxCharSize = prototype.m_maxCharSize;
    converter.m_minCharSize = prototype.m_minCharSize;
    converter.m_cloneSize = prototype.m_cloneSize;
    converter.m_stateless = prototype.m_stateless;
  }
  item->context.encoding = alias->name;
  converter.m_reserved = item;
  converter.m_pConverter = item->converter;
  converter.m_pContext = &item->context;
  converter.m_pEncoding = alias->name;
  return true;
}

void I18NConverterPools::giveNamed(I18NConverter &converter) {
  auto *item = static_cast<NamedItem *>(converter.m_reserved);
  // Back to the state a fresh clone has, as the helper pools do.
  if (!converter.m_stateless || needsReset(item->converter))
    ucnv_reset(item->converter);
  if (converter.m_inputMode != I18N_UNCONVERTIBLE_REPLACE || converter.m_userInputCallback != nullptr) {
    converter.m_userInputCallback = nullptr;
    converter.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_REPLACE);
  }
  if (converter.m_outputMode != I18N_UNCONVERTIBLE_REPLACE || converter.m_userOutputCallback != nullptr) {
    converter.m_userOutputCallback = nullptr;
    converter.setBuiltInUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_REPLACE);
  }
  converter.m_reserved = nullptr;
  converter.m_pConverter = nullptr;
  converter.m_pContext = nullptr;
  converter.m_pEncoding = nullptr;
  XYLThreadGuard guard(startLock());
  NamedEntry *entry = item->entry;
  --entry->lent;
  if (!retired(entry) && entry->idleCount < kNamedIdle) {
    item->next = entry->idle;
    entry->idle = item;
    ++entry->idleCount;
    return;
  }
  closeItem(item);
  if (retired(entry) && entry->lent == 0)
    freeEntry(entry);
}
