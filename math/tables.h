// The tables and coefficients of the elementary functions; functions.h describes them. Written by derive.py.
#pragma once

#include <cstdint>

namespace qs::math {

// clang-format off

// ln 2 / 16: its high part has so few bits that its product with k is exact.
inline constexpr double kExpStepsPerUnit = 0x1.71547652b82fep+4;
inline constexpr double kExpStepHigh = 0x1.62e42fefa0000p-5;
inline constexpr double kExpStepLow = 0x1.cf79abc9e3b3ap-44;

// 2^(j/16): the bits of the nearest double less j << 48, and what the double lacks, relative to it.
struct ExpEntry {
  std::uint64_t bits;
  double tail;
};
inline constexpr ExpEntry kExpTable[16] = {
    {0x3ff0000000000000, 0x0.0p+0},
    {0x3fefb5586cf9890f, 0x1.79aa65d837b6dp-54},
    {0x3fef72b83c7d517b, -0x1.01b15eaa59348p-55},
    {0x3fef387a6e756238, 0x1.68efde3a8a894p-54},
    {0x3fef06fe0a31b715, 0x1.34d754db0abb6p-55},
    {0x3feedea64c123422, 0x1.59f48a72a4c6dp-55},
    {0x3feebfdad5362a27, 0x1.690cebb7aafb0p-56},
    {0x3feeab07dd485429, 0x1.063e1e21c5409p-54},
    {0x3feea09e667f3bcd, -0x1.3b3efbf5e2228p-54},
    {0x3feea11473eb0187, -0x1.b32dcb94da51dp-56},
    {0x3feeace5422aa0db, 0x1.db72fc1f0eab4p-55},
    {0x3feec49182a3f090, 0x1.1affc2b91ce27p-56},
    {0x3feee89f995ad3ad, 0x1.c1a7792cb3387p-55},
    {0x3fef199bdd85529c, 0x1.36eae30af0cb3p-56},
    {0x3fef5818dcfba487, 0x1.4a385a63d07a7p-56},
    {0x3fefa4afa2a490da, -0x1.ff7128fd391f0p-55},
};

// e^r = 1 + r + r^2 (c[0] + c[1] r + ...).
// Largest error: 2^-56.3.
inline constexpr double kExp[] = {
    0x1.0000000000005p-1,
    0x1.555555548f86ap-3,
    0x1.555555545e73cp-5,
    0x1.11123aafea5f0p-7,
    0x1.6c185e181accdp-10,
};

// (sinh r)/r = 1 + r^2 (c[0] + c[1] r^2 + ...), cosh r = 1 + r^2 (c[0] + c[1] r^2 + ...).
// Largest error: 2^-69.5.
inline constexpr double kSinh[] = {
    0x1.5555555555557p-3,
    0x1.11111110b1ff9p-7,
    0x1.a01b56f98dfc9p-13,
};
// Largest error: 2^-66.3.
inline constexpr double kCosh[] = {
    0x1.0000000000004p-1,
    0x1.555555547f6dep-5,
    0x1.6c184170daa7ep-10,
};

// ln 2 and ln c: high parts are multiples of 2^-42, so sums of them are exact.
inline constexpr double kLn2High = 0x1.62e42fefa3800p-1;
inline constexpr double kLn2Low = 0x1.ef35793c76730p-45;

// For c = n/32: 1/c - 1 and ln c, at n mod 32; n goes from 22 to 44.
struct LogEntry {
  double inverseLess1;
  double high;
  double low;
  double c;
};
inline constexpr LogEntry kLogTable[32] = {
    {0x0.0p+0, 0x0.0p+0, 0x0.0p+0, 0x1.0000000000000p+0},
    {-0x1.f07c1f07c1f08p-6, 0x1.f829b0e780000p-6, 0x1.980267c7e09e4p-45, 0x1.0800000000000p+0},
    {-0x1.e1e1e1e1e1e1ep-5, 0x1.f0a30c0118000p-5, -0x1.d599e83368e91p-45, 0x1.1000000000000p+0},
    {-0x1.5f15f15f15f16p-4, 0x1.6f0d28ae58000p-4, -0x1.4b4641b664613p-44, 0x1.1800000000000p+0},
    {-0x1.c71c71c71c71cp-4, 0x1.e27076e2b0000p-4, -0x1.a342c2af0003cp-45, 0x1.2000000000000p+0},
    {-0x1.14c1bacf914c2p-3, 0x1.29552f8200000p-3, -0x1.5b967f4471dfcp-44, 0x1.2800000000000p+0},
    {-0x1.435e50d79435ep-3, 0x1.5ff3070a7a000p-3, -0x1.8586f183bebf2p-44, 0x1.3000000000000p+0},
    {-0x1.6f96f96f96f97p-3, 0x1.9525a9cf46000p-3, -0x1.297137d9f158fp-44, 0x1.3800000000000p+0},
    {-0x1.999999999999ap-3, 0x1.c8ff7c79aa000p-3, -0x1.7794f689f8434p-45, 0x1.4000000000000p+0},
    {-0x1.c18f9c18f9c19p-3, 0x1.fb9186d5e4000p-3, -0x1.d572aab993c87p-47, 0x1.4800000000000p+0},
    {-0x1.e79e79e79e79ep-3, 0x1.1675cababa000p-2, 0x1.8380e731f55c4p-44, 0x1.5000000000000p+0},
    {-0x1.05f417d05f418p-2, 0x1.2e8e2bae12000p-2, -0x1.67b1e99b72bd8p-45, 0x1.5800000000000p+0},
    {-0x1.1745d1745d174p-2, 0x1.4618bc21c6000p-2, -0x1.3d82f484c84ccp-46, 0x1.6000000000000p+0},
    {-0x1.27d27d27d27d2p-2, 0x1.5d1bdbf581000p-2, -0x1.8d6bdc9c7c238p-44, 0x1.6800000000000p+0},
    {-0x1.37a6f4de9bd38p-2, 0x1.739d7f6bbd000p-2, 0x1.a7389314feb50p-52, 0x1.7000000000000p+0},
    {-0x1.46cefa8d9df52p-2, 0x1.89a3386c14000p-2, 0x1.2d5ad38c40882p-45, 0x1.7800000000000p+0},
    {-0x1.5555555555555p-2, 0x1.9f323ecbfa000p-2, -0x1.ed03525ca2643p-44, 0x1.8000000000000p+0},
    {-0x1.6343eb1a1f58dp-2, 0x1.b44f77bcc9000p-2, -0x1.3ae68224aa2cep-47, 0x1.8800000000000p+0},
    {-0x1.70a3d70a3d70ap-2, 0x1.c8ff7c79aa000p-2, -0x1.7794f689f8434p-44, 0x1.9000000000000p+0},
    {-0x1.7d7d7d7d7d7d8p-2, 0x1.dd46a04c1c000p-2, 0x1.282fb989a9274p-44, 0x1.9800000000000p+0},
    {-0x1.89d89d89d89d9p-2, 0x1.f128f5faf0000p-2, 0x1.bb2cd720ec44cp-44, 0x1.a000000000000p+0},
    {0x1.0c30c30c30c31p-1, -0x1.af5295248d000p-2, 0x1.17cc552774458p-45, 0x1.5000000000000p-1},
    {0x1.d1745d1745d17p-2, -0x1.7fafa3bd81000p-2, -0x1.46fb79bf6d4cbp-44, 0x1.6000000000000p-1},
    {0x1.90b21642c8591p-2, -0x1.522ae0738a000p-2, -0x1.ebe708164c759p-45, 0x1.7000000000000p-1},
    {0x1.5555555555555p-2, -0x1.269621134e000p-2, 0x1.1b61f10522625p-44, 0x1.8000000000000p-1},
    {0x1.1eb851eb851ecp-2, -0x1.f991c6cb3c000p-3, 0x1.90d04cd7cc834p-44, 0x1.9000000000000p-1},
    {0x1.d89d89d89d89ep-3, -0x1.a93ed3c8ae000p-3, 0x1.8724350562169p-45, 0x1.a000000000000p-1},
    {0x1.7b425ed097b42p-3, -0x1.5bf406b544000p-3, 0x1.27023eb68981cp-46, 0x1.b000000000000p-1},
    {0x1.2492492492492p-3, -0x1.1178e8227e000p-3, -0x1.1ef78ce2d07f2p-45, 0x1.c000000000000p-1},
    {0x1.a7b9611a7b961p-4, -0x1.9335e5d594000p-4, -0x1.3115c3abd47dap-45, 0x1.d000000000000p-1},
    {0x1.1111111111111p-4, -0x1.08598b59e4000p-4, 0x1.7e5dd7009902cp-46, 0x1.e000000000000p-1},
    {0x1.0842108421084p-5, -0x1.0415d89e78000p-5, 0x1.dddc7f461c516p-44, 0x1.f000000000000p-1},
};

// ln(1 + r) = r - r^2/2 + r^3 (c[0] + c[1] r + ...), relative to the logarithm.
// Largest error: 2^-55.2.
inline constexpr double kLog[] = {
    0x1.555555555b01dp-2,
    -0x1.0000000000db3p-2,
    0x1.999996d992932p-3,
    -0x1.5555547770c27p-3,
    0x1.24c16663bd789p-3,
    -0x1.00192e36f05cdp-3,
};
// Largest error: 2^-68.5.
inline constexpr double kLogLong[] = {
    0x1.5555555555552p-2,
    -0x1.fffffffffffffp-3,
    0x1.99999999c1520p-3,
    -0x1.55555555638d4p-3,
    0x1.249244a654dacp-3,
    -0x1.fffffb2840db2p-4,
    0x1.c780dd57cf244p-4,
    -0x1.99e248e563330p-4,
};

// 1/ln 10; the high part has 26 bits.
inline constexpr double kInverseLn10High = 0x1.bcb7b18000000p-2;
inline constexpr double kInverseLn10Low = -0x1.6c8d78e6acaa4p-29;

// The cube root of z in [1, 2), relative; and of 1, 2 and 4.
// Largest error: 2^-19.6.
inline constexpr double kCubeRoot[] = {
    0x1.e4b0ce470a83ep-2,
    0x1.ad234a75794acp-1,
    -0x1.e07d6ab940c9ep-2,
    0x1.9f498a0b4abe8p-3,
    -0x1.9cc406c402666p-5,
    0x1.5e857d32dc16fp-8,
};
inline constexpr double kCubeRootOf[] = {1.0, 0x1.428a2f98d728bp+0, 0x1.965fea53d6e3dp+0};

// clang-format on

}  // namespace qs::math
