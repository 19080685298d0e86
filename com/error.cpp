#include "com/error.h"

#include <new>

namespace qs {

HRESULT resultOfException() noexcept {
  try {
    throw;
  } catch (const CQSCOMError& error) {
    return error.result();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace qs
