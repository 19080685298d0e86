// Late binding from the type library. dispatch_windows.cpp implements it. Elsewhere there is no type library, and
// dispatch_posix.cpp returns E_NOTIMPL.
#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <span>

#include "interfaces/interfaces.h"

namespace qs {

// Type information of one interface, loaded from the module's type libraries at first use and kept until the module is
// unloaded. Only for objects of static storage.
class TypeInfo {
 public:
  constexpr explicit TypeInfo(const IID& iid) : iid_(iid) {}

  // The information, without a reference of its own. On failure the result of loading the type library.
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

// The type information of one interface, as IDispatch returns it.
HRESULT typeInfoCount(TypeInfo& type, UINT* count) noexcept;
HRESULT typeInfoOf(TypeInfo& type, UINT index, ITypeInfo** info) noexcept;

class LateFunction;

// The names that late-bound callers can use on an interface: its own, under their documented DISPIDs. The default
// interface of a class also has the names of the class's other dual interfaces in their order, under DISPIDs from
// kFirstSharedId on, which stay the same as long as the module is loaded; standard members keep theirs, up to 0. A name
// with a getter in one interface and a setter in another is one member. What a name of the default interface lacks is
// looked up in the others.
class SharedNames {
 public:
  static constexpr DISPID kFirstSharedId = 0x40000000;

  // `types` are those of the object's interfaces, the one that is called first; null for those that are not dual. Not
  // owned.
  explicit SharedNames(std::span<TypeInfo* const> types) : types_(types) {}
  ~SharedNames();

  HRESULT idsOfNames(const NameQuery& query) noexcept;

  // Calls the function that the call means, of the first interface that has it; `interfaceAt` returns the object's
  // interface of a position in `types`.
  template <class InterfaceAt>
  HRESULT invoke(const Invocation& call, InterfaceAt&& interfaceAt) noexcept {
    Target target;
    if (const HRESULT hr = find(call, target); FAILED(hr)) return hr;
    return invoke(target, interfaceAt(target.position), call);
  }

 private:
  struct Table;
  // A function of the interface at a position in `types`.
  struct Target {
    std::size_t position;
    const LateFunction* function;
  };

  const Table& table();
  HRESULT find(const Invocation& call, Target& target) noexcept;
  static HRESULT invoke(const Target& target, IDispatch* object, const Invocation& call) noexcept;

  std::span<TypeInfo* const> types_;
  std::mutex mutex_;
  std::atomic<const Table*> table_ = nullptr;
};

}  // namespace qs
