#include <gmock/gmock.h>

#include "platform/com_types.h"

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  CoInitialize(nullptr);
  const int result = RUN_ALL_TESTS();
  CoUninitialize();
  return result;
}
