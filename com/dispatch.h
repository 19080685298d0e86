// Late binding from the type library. dispatch_windows.cpp implements it; elsewhere there is no type library and
// dispatch_none.cpp answers E_NOTIMPL.
#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <span>

#include "com/interfaces.h"

namespace qs {

// Type information of one interface, loaded from the module's type library at first use and kept until the module is
// unloaded. Only for objects of static storage.
class TypeInfo {
 public:
  constexpr explicit TypeInfo(const IID& iid) : iid_(iid) {}

  // The information, lent: not add-referenced. On failure the result of loading the type library.
  HRESULT get(ITypeInfo** info) noexcept;

  // Releases what all type information of this module holds.
  static void releaseAll() noexcept;

 private:
  const IID& iid_;
  std::atomic<ITypeInfo*> info_ = nullptr;
  TypeInfo* nextLoaded_ = nullptr;
};

// A name, or a DISPID, as GetIDsOfNames and Invoke of IDispatch receive them.
struct NameQuery {
  LPOLESTR* names;
  UINT count;
  DISPID* ids;
};
struct Invocation {
  DISPID member;
  WORD flags;
  DISPPARAMS* parameters;
  VARIANT* result;
  EXCEPINFO* exception;
  UINT* argumentError;
};

// The four methods of IDispatch for one interface.
HRESULT typeInfoCount(TypeInfo& type, UINT* count) noexcept;
HRESULT typeInfoOf(TypeInfo& type, UINT index, ITypeInfo** info) noexcept;
HRESULT idsOfNames(TypeInfo& type, const NameQuery& query) noexcept;
HRESULT invoke(TypeInfo& type, IDispatch* object, const Invocation& call) noexcept;

class LateFunction;

// The names that a class's default interface answers for late-bound callers: its own, under their documented DISPIDs,
// then those of the class's other dual interfaces in their order, under DISPIDs from kFirstSharedId on, which stay the
// same for as long as the module is loaded. A name with a getter in one interface and a setter in another is one
// member, and what a name of the default interface lacks is looked up in the others.
class SharedNames {
 public:
  static constexpr DISPID kFirstSharedId = 0x40000000;

  // A function of the class's interface number `face`.
  struct Target {
    std::size_t face;
    const LateFunction* function;
  };

  // `types` are those of the class's dual interfaces, the default one first; lent.
  explicit SharedNames(std::span<TypeInfo* const> types) : types_(types) {}
  ~SharedNames();

  HRESULT idsOfNames(const NameQuery& query) noexcept;

  // Where a call with the flags of IDispatch::Invoke goes: the first interface that has such a function.
  HRESULT find(DISPID member, WORD flags, Target& target) noexcept;

  // Calls what find found; `object` is the object's interface number `target.face`.
  static HRESULT call(const Target& target, IDispatch* object, const Invocation& call) noexcept;

 private:
  struct Table;
  const Table& table();

  std::span<TypeInfo* const> types_;
  std::mutex mutex_;
  std::atomic<const Table*> table_ = nullptr;
};

}  // namespace qs
