# What is installed and packed. On Windows the programs of each bitness lie in a folder of their own (x64, x86, component
# `programs`) beside what both share (component `common`), and a package unpacks anywhere. Elsewhere the layout is that
# of bin, lib, include and share.
if(CMAKE_CROSSCOMPILING)
  set(QS_QSDB ${CMAKE_SOURCE_DIR}/build/native/bin/qsdb CACHE FILEPATH "A qsdb that runs here, to make the database")
else()
  set(QS_QSDB $<TARGET_FILE:qsdb>)
endif()

set(programs qsdb vapour_pressure first_steps property_table collection flash evaluation)
if(WIN32)
  list(APPEND programs without_registration)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(binaries x86)
  else()
    set(binaries x64)
  endif()
  set(include include)
  set(shared .)
  set(documents .)
  set(package cmake)
  install(TARGETS qscontainers qshostkit ${programs} RUNTIME DESTINATION ${binaries} COMPONENT programs)
  install(FILES ${QS_TYPE_LIBRARY} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/qscontainers.sxs.manifest
                ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/qshostkit.sxs.manifest
          DESTINATION ${binaries} COMPONENT programs)
else()
  include(GNUInstallDirs)
  set(include ${CMAKE_INSTALL_INCLUDEDIR}/qscontainers)
  set(shared ${CMAKE_INSTALL_DATADIR}/qscontainers)
  set(documents ${CMAKE_INSTALL_DOCDIR})
  set(package ${CMAKE_INSTALL_LIBDIR}/cmake/qscontainers)
  install(TARGETS qscontainers qshostkit ${programs} COMPONENT programs)
  # Hosts made for 1.0 link qscontainers::qs_host and use the headers below, interfaces.h as com/interfaces.h.
  install(TARGETS qs_host qs_com qs_platform qs_interfaces EXPORT qscontainers COMPONENT programs)
  install(FILES com/bstr.h com/error.h interfaces/interfaces.h DESTINATION ${include}/com COMPONENT common)
  install(FILES platform/text.h DESTINATION ${include}/platform COMPONENT common)
  install(DIRECTORY platform/posix DESTINATION ${include}/platform COMPONENT common)
  install(FILES hostkit/module_loader.h DESTINATION ${include}/hostkit COMPONENT common)
  # Headers that no host needs have a folder of their own, which qs_host alone has among its own.
  install(DIRECTORY com platform DESTINATION ${include}-internal COMPONENT common FILES_MATCHING PATTERN "*.h"
          PATTERN "*_windows.h" EXCLUDE PATTERN posix EXCLUDE
          REGEX "/(bstr|com_ptr|com_types|error|not_set|text)\\.h$" EXCLUDE)
  configure_file(cmake/qscontainers.pc.in qscontainers.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/qscontainers.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT common)
endif()

# For hosts in C++: the public headers, and find_package(qscontainers).
install(FILES ${QS_HEADER} ${QS_IDL} sdk/qscontainers.hpp DESTINATION ${include} COMPONENT common)
install(FILES com/com_ptr.h com/not_set.h DESTINATION ${include}/com COMPONENT common)
install(FILES interfaces/interfaces.h DESTINATION ${include}/interfaces COMPONENT common)
install(FILES platform/com_types.h DESTINATION ${include}/platform COMPONENT common)
install(TARGETS qs_sdk EXPORT qscontainers COMPONENT common)
install(EXPORT qscontainers NAMESPACE qscontainers:: DESTINATION ${package} FILE qscontainers-targets.cmake
        COMPONENT common)
include(CMakePackageConfigHelpers)
set(database ${shared}/database)
set(modules .)
configure_package_config_file(cmake/qscontainers-config.cmake.in qscontainers-config.cmake
                              INSTALL_DESTINATION ${package} PATH_VARS database modules)
set(version_file ${CMAKE_BINARY_DIR}/qscontainers-config-version.cmake)
if(WIN32)
  # One for the programs of either bitness.
  write_basic_package_version_file(${version_file} COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
else()
  write_basic_package_version_file(${version_file} COMPATIBILITY SameMajorVersion)
endif()
install(FILES ${CMAKE_BINARY_DIR}/qscontainers-config.cmake ${version_file} DESTINATION ${package} COMPONENT common)

install(FILES README.md DESTINATION ${documents} COMPONENT common)
install(DIRECTORY docs DESTINATION ${documents} COMPONENT common)
install(DIRECTORY examples data DESTINATION ${shared} COMPONENT common)
install(CODE "execute_process(COMMAND \"${QS_QSDB}\" build --force \"${CMAKE_SOURCE_DIR}/data/compounds.json\"
                \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${shared}/database\" COMMAND_ERROR_IS_FATAL ANY)"
        COMPONENT common)

add_custom_target(qs_product DEPENDS qscontainers qshostkit ${programs} COMMENT "All that is installed")
if(NOT WIN32)
  add_dependencies(qs_product qs_host)
endif()

set(CPACK_PACKAGE_NAME qscontainers)
set(CPACK_PACKAGE_VENDOR qscontainers)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Containers of thermodynamic calculations")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME qscontainers-${PROJECT_VERSION}-windows)
else()
  set(CPACK_GENERATOR TGZ)
  set(CPACK_PACKAGE_FILE_NAME qscontainers-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
endif()
include(CPack)
