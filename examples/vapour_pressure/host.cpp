#include <qscontainers.hpp>

#include <iostream>

int main(int, char** argv) {
  const auto session = qs::Session::open().value();
  const auto water = qs::Compound::read(argv[1], 19).value();
  const auto pressure = water["VP"].at(373.15);
  std::cout << water.name().value() << " " << pressure.value_or(0) << " " << water["VP"].unit() << "\n";
}
