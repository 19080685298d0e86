// Late binding through the module's own type library.
#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "automation/dispatch.h"
#include "automation/late_function.h"
#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/error.h"
#include "com/module.h"
#include "com/module_file.h"

namespace qs {
namespace {

// All type information that was loaded, for releaseAll.
std::mutex loadedMutex;
TypeInfo* lastLoaded = nullptr;

// In upper case, for the letters that names in a type library have.
std::wstring folded(std::wstring_view name) {
  std::wstring result(name);
  for (wchar_t& c : result)
    if (c >= L'a' && c <= L'z') c = static_cast<wchar_t>(c - L'a' + L'A');
  return result;
}

// The names of a function and of its parameters, at most `most` in all.
std::vector<std::wstring> namesOf(ITypeInfo& type, MEMBERID member, std::size_t most) {
  std::vector<BSTR> names(most);
  UINT count = 0;
  check(type.GetNames(member, names.data(), static_cast<UINT>(most), &count));
  std::vector<Bstr> owned;
  for (BSTR name : names) owned.push_back(Bstr::adopt(name));
  std::vector<std::wstring> result;
  for (UINT i = 0; i < count; ++i) result.emplace_back(owned[i].view());
  return result;
}

}  // namespace

HRESULT TypeInfo::get(ITypeInfo** info) noexcept {
  *info = info_.load(std::memory_order_acquire);
  if (*info) return S_OK;

  return contained([&] {
    const std::lock_guard lock(loadedMutex);
    if ((*info = info_.load(std::memory_order_relaxed))) return S_OK;
    ComPtr<ITypeLib> library;
    check(LoadTypeLibEx(moduleFile().c_str(), REGKIND_NONE, library.out()));
    if (FAILED(library->GetTypeInfoOfGuid(iid_, info))) {
      // Interfaces that the system's own library lacks are in a second one of the module.
      check(LoadTypeLibEx((moduleFile() + L"\\2").c_str(), REGKIND_NONE, library.out()));
      check(library->GetTypeInfoOfGuid(iid_, info));
    }
    info_.store(*info, std::memory_order_release);
    nextLoaded_ = std::exchange(lastLoaded, this);
    return S_OK;
  });
}

void TypeInfo::releaseAll() noexcept {
  for (TypeInfo* type = std::exchange(lastLoaded, nullptr); type; type = std::exchange(type->nextLoaded_, nullptr))
    type->info_.exchange(nullptr)->Release();
}

void releaseKept() noexcept { TypeInfo::releaseAll(); }

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

struct SharedNames::Table {
  struct Function {
    std::size_t position;
    LateFunction function;
    std::vector<std::wstring> arguments;  // names that may stand for positions, folded

    // The positions of the arguments named after the member.
    HRESULT positions(const NameQuery& query) const {
      HRESULT result = S_OK;
      for (UINT i = 1; i < query.count; ++i) {
        const auto found = std::ranges::find(arguments, folded(query.names[i]));
        const bool known = found != arguments.end();
        query.ids[i] = known ? static_cast<DISPID>(found - arguments.begin()) : DISPID_UNKNOWN;
        if (!known) result = DISP_E_UNKNOWNNAME;
      }
      return result;
    }
  };
  struct Member {
    DISPID id;
    std::vector<Function> functions;
  };

  std::map<std::wstring, std::size_t> byName;
  std::map<DISPID, std::size_t> byId;
  std::vector<Member> members;

  // The member of a folded name.
  Member& member(const std::wstring& name, std::size_t position, DISPID documented) {
    const auto [found, inserted] = byName.try_emplace(name, members.size());
    if (inserted) {
      // Standard members, such as the default member, have identifiers up to 0.
      const bool keeps = position == 0 || documented <= DISPID_VALUE;
      const DISPID id = keeps ? documented : kFirstSharedId + static_cast<DISPID>(members.size());
      byId.emplace(id, members.size());
      members.push_back({id, {}});
    }
    return members[found->second];
  }

  // Adds the functions of an interface, from its virtual table.
  void add(std::size_t position, ITypeInfo& dispatch) {
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
      const HRESULT added = contained([&] {
        // Late-bound callers must not use these, because they return objects without a reference.
        if (description->wFuncFlags & FUNCFLAG_FRESTRICTED) return S_OK;
        const auto parameters = static_cast<std::size_t>(description->cParams);
        const std::vector<std::wstring> names = namesOf(*type.get(), description->memid, 1 + parameters);
        Function function{position, {*type.get(), *description, std::span(names).subspan(1)}, {}};
        for (std::size_t at = 1; at < std::min(names.size(), 1 + function.function.inputs()); ++at)
          function.arguments.push_back(folded(names[at]));
        member(folded(names[0]), position, description->memid).functions.push_back(std::move(function));
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
    for (std::size_t position = 0; position < types_.size(); ++position) {
      if (!types_[position]) continue;
      ITypeInfo* info = nullptr;
      check(types_[position]->get(&info));
      table->add(position, *info);
    }
    table_.store(table.release(), std::memory_order_release);
  }
  return *table_.load(std::memory_order_relaxed);
}

HRESULT SharedNames::idsOfNames(const NameQuery& query) noexcept {
  if (!query.names || !query.ids || std::count(query.names, query.names + query.count, nullptr)) return E_INVALIDARG;
  if (query.count == 0) return E_INVALIDARG;
  return contained([&] {
    const Table& names = table();
    const auto found = names.byName.find(folded(query.names[0]));
    if (found == names.byName.end()) {
      std::fill_n(query.ids, query.count, DISPID_UNKNOWN);
      return DISP_E_UNKNOWNNAME;
    }
    // A getter and a setter may name different arguments.
    const Table::Member& member = names.members[found->second];
    HRESULT hr = DISP_E_UNKNOWNNAME;
    for (auto next = member.functions.begin(); FAILED(hr) && next != member.functions.end(); ++next)
      hr = next->positions(query);
    query.ids[0] = member.id;
    return hr;
  });
}

HRESULT SharedNames::find(const Invocation& call, Target& target) noexcept {
  return contained([&] {
    const Table& names = table();
    const auto member = names.byId.find(call.member);
    if (member == names.byId.end()) return DISP_E_MEMBERNOTFOUND;
    const std::vector<Table::Function>& functions = names.members[member->second].functions;
    // Some engines ask for an enumerator as for a method.
    const auto flags = static_cast<WORD>(call.flags | (call.member == DISPID_NEWENUM ? DISPATCH_PROPERTYGET : 0));
    auto found = std::ranges::find_if(functions, [flags](const auto& entry) { return entry.function.answers(flags); });
    // A put of more arguments than the property takes goes to the object that the property returns.
    const bool puts = call.flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
    if (puts && call.parameters && LateFunction::isPut(*call.parameters) &&
        (found == functions.end() || found->function.argumentsBeyond(*call.parameters))) {
      const auto getter = std::ranges::find_if(
          functions, [&](const auto& entry) { return entry.function.leadsToObject(*call.parameters); });
      if (getter != functions.end()) found = getter;
    }
    if (found == functions.end()) return DISP_E_MEMBERNOTFOUND;
    target = {found->position, &found->function};
    return S_OK;
  });
}

HRESULT SharedNames::invoke(const Target& target, IDispatch* object, const Invocation& call) noexcept {
  return target.function->call(object, call);
}

}  // namespace qs
