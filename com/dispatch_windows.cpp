// Late binding through the module's own type library.
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/dispatch.h"
#include "com/error.h"
#include "com/late_function.h"
#include "com/module_file.h"

namespace qs {
namespace {

// All type information that was loaded, for releaseAll.
std::mutex loadedMutex;
TypeInfo* lastLoaded = nullptr;

// Case is folded for the letters that names in a type library are made of.
std::wstring folded(std::wstring_view name) {
  std::wstring result(name);
  for (wchar_t& c : result)
    if (c >= L'a' && c <= L'z') c = static_cast<wchar_t>(c - L'a' + L'A');
  return result;
}

}  // namespace

HRESULT TypeInfo::get(ITypeInfo** info) noexcept {
  *info = info_.load(std::memory_order_acquire);
  if (*info) return S_OK;

  return guarded([&] {
    const std::lock_guard lock(loadedMutex);
    if ((*info = info_.load(std::memory_order_relaxed))) return S_OK;
    ComPtr<ITypeLib> library;
    check(LoadTypeLibEx(moduleFile().c_str(), REGKIND_NONE, library.out()));
    check(library->GetTypeInfoOfGuid(iid_, info));
    info_.store(*info, std::memory_order_release);
    nextLoaded_ = std::exchange(lastLoaded, this);
    return S_OK;
  });
}

void TypeInfo::releaseAll() noexcept {
  for (TypeInfo* type = std::exchange(lastLoaded, nullptr); type; type = std::exchange(type->nextLoaded_, nullptr))
    type->info_.exchange(nullptr)->Release();
}

HRESULT typeInfoCount(TypeInfo&, UINT* count) noexcept {
  if (!count) return E_POINTER;
  *count = 1;
  return S_OK;
}

HRESULT typeInfoOf(TypeInfo& type, UINT index, ITypeInfo** info) noexcept {
  if (!info) return E_POINTER;
  *info = nullptr;
  if (index != 0) return DISP_E_BADINDEX;
  ITypeInfo* lent = nullptr;
  if (const HRESULT hr = type.get(&lent); FAILED(hr)) return hr;
  lent->AddRef();
  *info = lent;
  return S_OK;
}

HRESULT idsOfNames(TypeInfo& type, const NameQuery& query) noexcept {
  if (!query.names || !query.ids || query.count == 0) return E_INVALIDARG;
  ITypeInfo* info = nullptr;
  if (const HRESULT hr = type.get(&info); FAILED(hr)) return hr;
  return info->GetIDsOfNames(query.names, query.count, query.ids);
}

HRESULT invoke(TypeInfo& type, IDispatch* object, const Invocation& call) noexcept {
  if (!call.parameters) return E_INVALIDARG;
  ITypeInfo* info = nullptr;
  if (const HRESULT hr = type.get(&info); FAILED(hr)) return hr;
  return info->Invoke(object, call.member, call.flags, call.parameters, call.result, call.exception,
                      call.argumentError);
}

struct SharedNames::Table {
  struct Function {
    std::size_t face;
    LateFunction function;
  };
  struct Member {
    DISPID id;
    std::vector<Function> functions;
  };

  std::map<std::wstring, std::size_t> byName;
  std::map<DISPID, std::size_t> byId;
  std::vector<Member> members;

  Member& member(std::wstring_view name, std::size_t face, DISPID documented) {
    const auto [found, inserted] = byName.try_emplace(folded(name), members.size());
    if (inserted) {
      const DISPID id = face == 0 ? documented : kFirstSharedId + static_cast<DISPID>(members.size());
      byId.emplace(id, members.size());
      members.push_back({id, {}});
    }
    return members[found->second];
  }

  // Adds the functions of an interface, from its virtual table.
  void add(std::size_t face, ITypeInfo& dispatch) {
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> type;
    check(dispatch.GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
    check(dispatch.GetRefTypeInfo(reference, type.out()));
    TYPEATTR* attributes = nullptr;
    check(type->GetTypeAttr(&attributes));
    const WORD count = attributes->cFuncs;
    type->ReleaseTypeAttr(attributes);
    for (UINT i = 0; i < count; ++i) {
      FUNCDESC* description = nullptr;
      check(type->GetFuncDesc(i, &description));
      const HRESULT added = guarded([&] {
        // What a late-bound caller must not use, as what is lent without a reference.
        if (description->wFuncFlags & FUNCFLAG_FRESTRICTED) return S_OK;
        Bstr name;
        UINT got = 0;
        check(type->GetNames(description->memid, name.out(), 1, &got));
        member(name.view(), face, description->memid)
            .functions.push_back({face, LateFunction(*type.get(), *description)});
        return S_OK;
      });
      type->ReleaseFuncDesc(description);
      check(added);
    }
  }
};

SharedNames::~SharedNames() { delete table_.load(); }

const SharedNames::Table& SharedNames::table() {
  if (const Table* built = table_.load(std::memory_order_acquire)) return *built;

  const std::lock_guard lock(mutex_);
  if (!table_.load(std::memory_order_relaxed)) {
    auto table = std::make_unique<Table>();
    for (std::size_t face = 0; face < types_.size(); ++face) {
      ITypeInfo* info = nullptr;
      check(types_[face]->get(&info));
      table->add(face, *info);
    }
    table_.store(table.release(), std::memory_order_release);
  }
  return *table_.load(std::memory_order_relaxed);
}

HRESULT SharedNames::idsOfNames(const NameQuery& query) noexcept {
  const HRESULT own = qs::idsOfNames(*types_[0], query);
  if (own != DISP_E_UNKNOWNNAME) return own;

  return guarded([&] {
    const Table& names = table();
    const auto found = names.byName.find(folded(query.names[0]));
    if (found == names.byName.end()) return own;
    const Table::Member& member = names.members[found->second];
    // The further names are those of the arguments; the interface that has the member knows them.
    const HRESULT hr = qs::idsOfNames(*types_[member.functions[0].face], query);
    query.ids[0] = member.id;
    return hr;
  });
}

HRESULT SharedNames::find(DISPID member, WORD flags, Target& target) noexcept {
  return guarded([&] {
    const Table& names = table();
    const auto found = names.byId.find(member);
    if (found == names.byId.end()) return DISP_E_MEMBERNOTFOUND;
    for (const Table::Function& entry : names.members[found->second].functions)
      if (entry.function.answers(flags)) {
        target = {entry.face, &entry.function};
        return S_OK;
      }
    return DISP_E_MEMBERNOTFOUND;
  });
}

HRESULT SharedNames::call(const Target& target, IDispatch* object, const Invocation& call) noexcept {
  return target.function->call(object, call);
}

}  // namespace qs
