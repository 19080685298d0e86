# Boost, CLI11, Eigen and nlohmann-json are headers only. They are seen through links of their own, so that a
# cross-compiler does not get the rest of the host's headers with them.
add_library(qs_header_libraries INTERFACE)
target_include_directories(qs_header_libraries SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/header_libraries)
# Boost has a message for mingw's lack of one feature of C++11, which we do not use.
target_compile_definitions(qs_header_libraries INTERFACE BOOST_MATH_DISABLE_DEPRECATED_03_WARNING)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/header_libraries)
find_path(QS_BOOST boost/math/tools/toms748_solve.hpp REQUIRED NO_CMAKE_FIND_ROOT_PATH
          DOC "Quadrature and root finding (Debian: libboost-dev)")
find_path(QS_CLI11 CLI/CLI.hpp REQUIRED NO_CMAKE_FIND_ROOT_PATH DOC "Command line (Debian: libcli11-dev)")
find_path(QS_EIGEN eigen3/Eigen/QR REQUIRED NO_CMAKE_FIND_ROOT_PATH DOC "Linear algebra (Debian: libeigen3-dev)")
find_path(QS_JSON nlohmann/json.hpp REQUIRED NO_CMAKE_FIND_ROOT_PATH DOC "JSON (Debian: nlohmann-json3-dev)")
file(CREATE_LINK ${QS_BOOST}/boost ${CMAKE_BINARY_DIR}/header_libraries/boost SYMBOLIC)
file(CREATE_LINK ${QS_CLI11}/CLI ${CMAKE_BINARY_DIR}/header_libraries/CLI SYMBOLIC)
file(CREATE_LINK ${QS_EIGEN}/eigen3/Eigen ${CMAKE_BINARY_DIR}/header_libraries/Eigen SYMBOLIC)
file(CREATE_LINK ${QS_JSON}/nlohmann ${CMAKE_BINARY_DIR}/header_libraries/nlohmann SYMBOLIC)
