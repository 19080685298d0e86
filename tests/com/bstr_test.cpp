#include "com/bstr.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace qs {
namespace {

#if SIZE_MAX > UINT_MAX  // no text of a 32-bit program is as long
TEST(Bstr, IsNeverShorterThanItsText) {
  const OLECHAR first = 'x';
  const WideView text(&first, (std::size_t{1} << 32) + 1);
  EXPECT_THROW(Bstr{text}, CQSCOMError) << "refused before it is read";
}
#endif

}  // namespace
}  // namespace qs
