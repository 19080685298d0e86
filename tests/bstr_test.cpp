#include "com/bstr.h"

#include <gtest/gtest.h>

namespace qs {
namespace {

TEST(Bstr, IsNeverShorterThanItsText) {
  if constexpr (sizeof(std::size_t) > sizeof(UINT)) {
    const OLECHAR first = 'x';
    const WideView text(&first, (std::size_t{1} << 32) + 1);
    EXPECT_THROW(Bstr{text}, CQSCOMError) << "refused before it is read";
  }
}

}  // namespace
}  // namespace qs
