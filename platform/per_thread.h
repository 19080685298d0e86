// An object for each thread that uses it, destroyed when the thread ends or with the PerThread. It replaces
// thread_local objects with destructors, whose memory the mingw runtime frees before it destroys them.
#pragma once

#include <cstdint>
#include <memory>

namespace qs {

// One pointer per thread.
class ThreadSlot {
 public:
  struct Value {
    virtual ~Value() = default;
  };

  ThreadSlot();  // throws std::bad_alloc when the system has no slot left
  ThreadSlot(const ThreadSlot&) = delete;
  ThreadSlot& operator=(const ThreadSlot&) = delete;
  ~ThreadSlot();

  Value* get() const;                      // null for a thread that has set none
  void set(std::unique_ptr<Value> value);  // once per thread; throws std::bad_alloc

 private:
  std::uint32_t key_;
};

// Make it a static object within a function.
template <class T>
class PerThread {
 public:
  T& get() {
    if (!slot_.get()) slot_.set(std::make_unique<Holder>());
    return static_cast<Holder*>(slot_.get())->object;
  }

 private:
  struct Holder final : ThreadSlot::Value {
    T object{};
  };

  ThreadSlot slot_;
};

}  // namespace qs
