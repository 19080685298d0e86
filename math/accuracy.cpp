// Measures one of the elementary functions against quadruple precision, for accuracy.py, which builds and runs this:
//   accuracy FUNCTION POINTS
// For each range of arguments it prints a line `POINTS DESCRIPTION`, then the arguments of the largest errors, as
// `X Y RESULT ERROR`, largest first. Errors are in units of the last place of the exact value, and of 2^-1074 for
// subnormal ones. The same points each time.
#include <quadmath.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "math/functions.h"

namespace {

using Quad = __float128;

struct Point {
  double x, y = 0.0;
};

struct Function {
  std::string_view name;
  double (*own)(Point);
  Quad (*exact)(Point);
};
constexpr Function kFunctions[] = {
#define QS_FUNCTION(f)                                                              \
  {                                                                                 \
#f, [](Point p) { return qs::math::f(p.x); }, [](Point p) { return f##q(p.x); } \
  }
    QS_FUNCTION(exp),
    QS_FUNCTION(log),
    QS_FUNCTION(log10),
    QS_FUNCTION(sinh),
    QS_FUNCTION(cosh),
    QS_FUNCTION(cbrt),
#undef QS_FUNCTION
    {"pow", [](Point p) { return qs::math::pow(p.x, p.y); }, [](Point p) { return powq(p.x, p.y); }}};

// Infinity stands for 2^1024, which it is rounded from.
double errorOf(double result, Quad exact) {
  const int exponent = std::clamp(ilogbq(exact), -1022, 1023);
  const Quad limit = scalbnq(1, 1024);
  if (std::isinf(result) && fabsq(exact) >= limit) return 0.0;
  const Quad value = std::isinf(result) ? copysignq(limit, result) : Quad{result};
  return static_cast<double>(fabsq(scalbnq(value - exact, 52 - exponent)));
}

std::mt19937_64 engine(1);

int whole(int low, int high) { return std::uniform_int_distribution(low, high)(engine); }
double between(double low, double high) { return std::uniform_real_distribution(low, high)(engine); }
double eitherSign(double x) { return whole(0, 1) ? x : -x; }
// Each power of two from 2^low to 2^high is as likely.
double ofExponents(int low, int high) { return std::ldexp(between(1.0, 2.0), whole(low, high)); }
double moved(double x, int most) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) + static_cast<std::uint64_t>(whole(-most, most)));
}

// Where the reductions end and begin.
double stepOfExp(int least, int most) { return moved(whole(2 * least, 2 * most) * (M_LN2 / 32.0), 20); }
double boundaryOfLog() {
  const int n = whole(21, 43);
  return std::ldexp(moved(n == 21 ? 0.68 : (n + 0.5) / 32.0, 200), whole(-1022, 1022));
}
// A base, and an exponent that makes the result e^low to e^high.
Point powerOf(double base, double low, double high) { return {base, between(low, high) / std::log(base)}; }
double near1() { return 1.0 + eitherSign(ofExponents(-52, -3)); }

double powerOfTen(int n) {
  const std::string text = "1e" + std::to_string(n);
  double power = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), power);
  return power;
}

struct Range {
  std::string_view function, description;
  Point (*next)();
  int points = 0;                // all that there are; as many as the caller says if 0
  Point (*each)(int) = nullptr;  // the point of a number, where there are so few
};
const Range kRanges[] = {
    {"exp", "all with finite results", [] { return Point{between(-745.2, 709.79)}; }},
    {"exp", "subnormal results", [] { return Point{between(-745.14, -708.39)}; }},
    {"exp", "largest results", [] { return Point{between(709.0, 709.79)}; }},
    {"exp", "2^-56 to 1, either sign", [] { return Point{eitherSign(ofExponents(-56, -1))}; }},
    {"exp", "next to multiples of (ln 2)/32", [] { return Point{stepOfExp(-17190, 16384)}; }},
    {"log", "every exponent", [] { return Point{ofExponents(-1022, 1023)}; }},
    {"log", "subnormal", [] { return Point{ofExponents(-1074, -1023)}; }},
    {"log", "0.75 to 1.25", [] { return Point{between(0.75, 1.25)}; }},
    {"log", "63/64 to 65/64", [] { return Point{between(63.0 / 64.0, 65.0 / 64.0)}; }},
    {"log", "2^-52 to 2^-2 from 1", [] { return Point{near1()}; }},
    {"log", "next to the ends of intervals", [] { return Point{boundaryOfLog()}; }},
    {"log10", "every exponent", [] { return Point{ofExponents(-1022, 1023)}; }},
    {"log10", "subnormal", [] { return Point{ofExponents(-1074, -1023)}; }},
    {"log10", "0.75 to 1.25", [] { return Point{between(0.75, 1.25)}; }},
    {"log10", "2^-52 to 2^-2 from 1", [] { return Point{near1()}; }},
    {"log10", "next to the ends of intervals", [] { return Point{boundaryOfLog()}; }},
    {"log10", "all powers of ten", nullptr, 632, [](int i) { return Point{powerOfTen(i - 323)}; }},
    {"sinh", "all with finite results", [] { return Point{between(-710.48, 710.48)}; }},
    {"sinh", "largest results", [] { return Point{between(709.0, 710.48)}; }},
    {"sinh", "2^-30 to 1, either sign", [] { return Point{eitherSign(ofExponents(-30, -1))}; }},
    {"sinh", "1 to 32, either sign", [] { return Point{eitherSign(ofExponents(0, 4))}; }},
    {"sinh", "next to multiples of (ln 2)/32", [] { return Point{stepOfExp(-16400, 16400)}; }},
    {"cosh", "all with finite results", [] { return Point{between(-710.48, 710.48)}; }},
    {"cosh", "largest results", [] { return Point{between(709.0, 710.48)}; }},
    {"cosh", "2^-30 to 1, either sign", [] { return Point{eitherSign(ofExponents(-30, -1))}; }},
    {"cosh", "1 to 32, either sign", [] { return Point{eitherSign(ofExponents(0, 4))}; }},
    {"cosh", "next to multiples of (ln 2)/32", [] { return Point{stepOfExp(-16400, 16400)}; }},
    {"cbrt", "every exponent, either sign", [] { return Point{eitherSign(ofExponents(-1022, 1023))}; }},
    {"cbrt", "subnormal", [] { return Point{ofExponents(-1074, -1023)}; }},
    {"cbrt", "1 to 8", [] { return Point{between(1.0, 8.0)}; }},
    {"cbrt", "cubes of 1 to 200,000", nullptr, 200000, [](int i) { return Point{std::pow(i + 1.0, 3.0)}; }},
    {"pow", "results of properties: 10^-3 to 10^3, to the power of -10 to 10",
     [] {
       return Point{std::pow(10.0, between(-3.0, 3.0)), between(-10.0, 10.0)};
     }},
    {"pow", "10^-6 to 10^6, to the power of twelfths from -5 to 5",
     [] {
       return Point{std::pow(10.0, between(-6.0, 6.0)), whole(-60, 60) / 12.0};
     }},
    {"pow", "every exponent, all with finite results",
     [] { return powerOf(ofExponents(-1022, 1023), -745.1, 709.78); }},
    {"pow", "2^-52 to 2^-2 from 1, all with finite results", [] { return powerOf(near1(), -745.1, 709.78); }},
    {"pow", "31/32 to 33/32, all with finite results",
     [] { return powerOf(between(31.0 / 32.0, 33.0 / 32.0), -745.1, 709.78); }},
    {"pow", "0.98 to 63/64, largest results", [] { return powerOf(between(0.98, 63.0 / 64.0), 600.0, 709.78); }},
    {"pow", "subnormal bases", [] { return powerOf(ofExponents(-1074, -1023), -745.1, 709.78); }},
    {"pow", "subnormal results", [] { return powerOf(ofExponents(-1022, 1023), -745.1, -708.4); }},
    {"pow", "largest results", [] { return powerOf(ofExponents(-1022, 1023), 709.0, 709.79); }},
    {"pow", "bases next to the ends of intervals", [] { return powerOf(boundaryOfLog(), -745.1, 709.78); }},
};

// The largest errors, largest first.
class Worst {
 public:
  explicit Worst(const Function& function) : function_(function) {}

  void measure(Point p) {
    const Quad exact = function_.exact(p);
    const double result = function_.own(p);
    const double error = errorOf(result, exact);
    if (found_.size() == kKept && !(error > found_.back().error)) return;
    const auto same = [&](const Found& f) { return f.at.x == p.x && f.at.y == p.y; };
    if (std::ranges::any_of(found_, same)) return;
    if (found_.size() == kKept) found_.pop_back();
    const auto less = [](const Found& a, const Found& b) { return a.error > b.error; };
    const Found found{p, result, error};
    found_.insert(std::upper_bound(found_.begin(), found_.end(), found, less), found);
  }
  // The doubles next to those with the largest errors so far.
  void measureNeighbours() {
    constexpr int kNeighbours = 1000;
    for (const Found& f : std::vector(found_))
      for (int step = -kNeighbours; step <= kNeighbours; ++step)
        measure(
            {std::bit_cast<double>(std::bit_cast<std::uint64_t>(f.at.x) + static_cast<std::uint64_t>(step)), f.at.y});
  }
  void print() const {
    for (const Found& f : found_)
      std::cout << std::hexfloat << f.at.x << ' ' << f.at.y << ' ' << f.result << ' ' << std::defaultfloat << f.error
                << '\n';
  }

 private:
  static constexpr std::size_t kKept = 10;
  struct Found {
    Point at;
    double result, error;
  };

  const Function& function_;
  std::vector<Found> found_;
};

}  // namespace

int main(int argc, char** argv) {
  const std::string_view name = argc == 3 ? argv[1] : "";
  const auto* function = std::ranges::find(kFunctions, name, &Function::name);
  if (function == std::end(kFunctions)) {
    std::cerr << "usage: accuracy FUNCTION POINTS\n";
    return 1;
  }
  std::cout.precision(17);
  for (const Range& range : kRanges) {
    if (range.function != name) continue;
    const int points = range.each ? range.points : std::stoi(argv[2]);
    Worst worst(*function);
    for (int i = 0; i < points; ++i) worst.measure(range.each ? range.each(i) : range.next());
    if (!range.each) worst.measureNeighbours();
    std::cout << points << ' ' << range.description << '\n';
    worst.print();
  }
}
