// The catalogues of the databases in use, which all threads of the process share.
#pragma once

#include <memory>

#include "persist/database_catalogue.h"

namespace qs::database {

// The catalogue of the database in a directory, which is given without a trailing separator; null when it has no index
// file that can be opened. An index file is read again when it has changed, by one thread while the others that want it
// wait; a thread that has opened it before takes no lock. Whoever keeps the pointer keeps the catalogue, and equal
// pointers are the same catalogue. Raises CQSCOMError(E_FAIL) when the directory is empty, holds a NUL or has more than
// 1024 bytes as 8-bit text, or when its index file cannot be read or positioned.
std::shared_ptr<const Catalogue> openCatalogue(WideView directory);

// While one exists, the catalogues of the last few directories stay for the next opening. Each object that opens
// databases has one: then the last object takes the catalogues with it, before the module may be unloaded.
class CatalogueUse {
 public:
  CatalogueUse() noexcept;
  CatalogueUse(const CatalogueUse&) = delete;
  CatalogueUse& operator=(const CatalogueUse&) = delete;
  ~CatalogueUse();
};

}  // namespace qs::database
