#include "tests/support/files.h"

namespace qs::test {

const std::filesystem::path kSourceFolder = QS_SOURCE_DIR;

}  // namespace qs::test
