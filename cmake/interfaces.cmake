# The C++ header and the type library, made from interfaces/qscontainers.idl.
#   qs_interfaces     what code that includes interfaces/interfaces.h links
#   QS_TYPE_LIBRARY   the type library's path
find_program(QS_WIDL NAMES x86_64-w64-mingw32-widl widl REQUIRED DOC "IDL compiler (Debian: mingw-w64-tools)")
find_path(QS_WIDL_INCLUDE oaidl.idl NO_CMAKE_FIND_ROOT_PATH REQUIRED
          PATH_SUFFIXES wine/wine/windows wine/windows DOC "Imported interface definitions (Debian: libwine-dev)")
find_path(QS_WIDL_LIBRARY stdole2.tlb NO_CMAKE_FIND_ROOT_PATH REQUIRED
          PATHS /usr/lib /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu
          PATH_SUFFIXES wine/x86_64-windows wine/i386-windows DOC "Imported type library (Debian: libwine)")

set(QS_IDL ${CMAKE_SOURCE_DIR}/interfaces/qscontainers.idl)
set(QS_GENERATED ${CMAKE_BINARY_DIR}/generated)
set(QS_HEADER ${QS_GENERATED}/qscontainers.h)
set(QS_TYPE_LIBRARY ${QS_GENERATED}/qscontainers.tlb)
file(MAKE_DIRECTORY ${QS_GENERATED})

set(widl_options -I${QS_WIDL_INCLUDE} -L${QS_WIDL_LIBRARY})
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  list(APPEND widl_options --win32)
else()
  list(APPEND widl_options --win64)
endif()
add_custom_command(OUTPUT ${QS_HEADER} DEPENDS ${QS_IDL}
                   COMMAND ${QS_WIDL} ${widl_options} -h -o ${QS_HEADER} ${QS_IDL})
add_custom_command(OUTPUT ${QS_TYPE_LIBRARY} DEPENDS ${QS_IDL}
                   COMMAND ${QS_WIDL} ${widl_options} -t -o ${QS_TYPE_LIBRARY} ${QS_IDL})
add_custom_target(qs_generated DEPENDS ${QS_HEADER} ${QS_TYPE_LIBRARY})

add_library(qs_interfaces INTERFACE)
add_dependencies(qs_interfaces qs_generated)
target_link_libraries(qs_interfaces INTERFACE qs_platform)
target_include_directories(qs_interfaces SYSTEM INTERFACE $<BUILD_INTERFACE:${QS_GENERATED}>
                           $<INSTALL_INTERFACE:include/qscontainers>)
