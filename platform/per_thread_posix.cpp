#include "platform/per_thread.h"

#include <pthread.h>

#include <new>

namespace qs {
namespace {

void destroy(void* value) { delete static_cast<ThreadSlot::Value*>(value); }

}  // namespace

ThreadSlot::ThreadSlot() {
  static_assert(sizeof(pthread_key_t) == sizeof key_);
  if (::pthread_key_create(&key_, destroy) != 0) throw std::bad_alloc();
}

// The values of other threads stay: only a thread can reach its own.
ThreadSlot::~ThreadSlot() {
  destroy(get());
  ::pthread_key_delete(key_);
}

ThreadSlot::Value* ThreadSlot::get() const { return static_cast<Value*>(::pthread_getspecific(key_)); }

void ThreadSlot::set(std::unique_ptr<Value> value) {
  if (::pthread_setspecific(key_, value.get()) != 0) throw std::bad_alloc();
  static_cast<void>(value.release());
}

}  // namespace qs
