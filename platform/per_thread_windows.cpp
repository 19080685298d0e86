#include "platform/per_thread.h"

#include <new>

#include "platform/com_types.h"

namespace qs {
namespace {

void WINAPI destroy(void* value) { delete static_cast<ThreadSlot::Value*>(value); }

}  // namespace

ThreadSlot::ThreadSlot() : key_(FlsAlloc(destroy)) {
  if (key_ == FLS_OUT_OF_INDEXES) throw std::bad_alloc();
}

// Destroys the values of all threads.
ThreadSlot::~ThreadSlot() { FlsFree(key_); }

ThreadSlot::Value* ThreadSlot::get() const { return static_cast<Value*>(FlsGetValue(key_)); }

void ThreadSlot::set(std::unique_ptr<Value> value) {
  if (!FlsSetValue(key_, value.get())) throw std::bad_alloc();
  value.release();
}

}  // namespace qs
