# What is installed and packed. On Windows the programs of each bitness lie in a folder of their own (x64, x86, component
# `programs`) beside what both share (component `common`), and a package unpacks anywhere. Elsewhere the layout is that
# of bin, lib, include and share.
if(CMAKE_CROSSCOMPILING)
  set(QS_QSDB ${CMAKE_SOURCE_DIR}/build/native/bin/qsdb CACHE FILEPATH "A qsdb that runs here, to make the database")
else()
  set(QS_QSDB $<TARGET_FILE:qsdb>)
endif()

set(programs qsdb first_steps property_table collection flash evaluation)
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
  install(TARGETS qscontainers qshostkit ${programs} RUNTIME DESTINATION ${binaries} COMPONENT programs)
  install(FILES ${QS_TYPE_LIBRARY} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/qscontainers.sxs.manifest
                ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/qshostkit.sxs.manifest
          DESTINATION ${binaries} COMPONENT programs)
else()
  include(GNUInstallDirs)
  set(include ${CMAKE_INSTALL_INCLUDEDIR}/qscontainers)
  set(shared ${CMAKE_INSTALL_DATADIR}/qscontainers)
  set(documents ${CMAKE_INSTALL_DOCDIR})
  install(TARGETS qscontainers qshostkit ${programs} COMPONENT programs)
  # For C++ hosts: find_package(qscontainers), target qscontainers::qs_host.
  install(TARGETS qs_host qs_com qs_platform qs_interfaces EXPORT qscontainers COMPONENT programs)
  install(EXPORT qscontainers NAMESPACE qscontainers:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qscontainers
          FILE qscontainers-config.cmake COMPONENT common)
  install(DIRECTORY com interfaces platform DESTINATION ${include} COMPONENT common FILES_MATCHING PATTERN "*.h"
          PATTERN "*_windows.h" EXCLUDE)
  # Hosts made for 1.0 include it as com/interfaces.h.
  install(FILES interfaces/interfaces.h DESTINATION ${include}/com COMPONENT common)
  install(FILES hostkit/module_loader.h DESTINATION ${include}/hostkit COMPONENT common)
endif()

install(FILES ${QS_HEADER} ${QS_IDL} DESTINATION ${include} COMPONENT common)
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
