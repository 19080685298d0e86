// qsdb, the tool for databases and installations.
#include <exception>
#include <iostream>

#include "tools/arguments.h"
#include "tools/qsdb.h"

int main(int argc, char** argv) {
  try {
    return qs::tools::runQsdb(qs::tools::utf8Arguments(argc, argv), std::cout, std::cerr);
  } catch (const std::exception& error) {
    std::cerr << "qsdb: " << error.what() << '\n';
    return 2;
  }
}
