// SPDX-License-Identifier: Apache-2.0
// The converter pools: prototypes opened at start-up, last-in-first-out
// pools of their clones behind the helper classes, fronted by one slot per
// thread.
#include "i18n/cpp/i18n_internal.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThreadGuard.h>

#include <unicode/ucnv.h>

#include <atomic>
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

void I18NConverterPools::releaseAll() {
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
