# A module of the component server: `target` from the sources given and from those that each module compiles for itself,
# because they refer to its classes, its file and its resources. Its only exports are the entry points.
function(qs_module target)
  add_library(${target} SHARED ${ARGN})
  set(com ${CMAKE_SOURCE_DIR}/com)
  set(automation ${CMAKE_SOURCE_DIR}/automation)
  target_sources(${target} PRIVATE ${com}/entry_points.cpp)
  target_link_libraries(${target} PRIVATE qs_automation)
  qs_warnings(${target})
  if(WIN32)
    target_sources(${target} PRIVATE ${com}/entry_points_windows.cpp ${com}/registrar_windows.cpp ${com}/module.def
                                     ${automation}/dispatch_windows.cpp ${automation}/late_function_windows.cpp)
    target_link_options(${target} PRIVATE -Wl,--enable-stdcall-fixup)
    set_target_properties(${target} PROPERTIES PREFIX "")
    # Resource scripts name the type library and the registration script without a folder.
    target_include_directories(${target} PRIVATE ${QS_GENERATED} ${com})
  else()
    target_sources(${target} PRIVATE ${com}/entry_points_posix.cpp ${automation}/dispatch_posix.cpp)
    qs_versioned(${target})
    if(NOT QS_SANITIZE)
      target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
  endif()
endfunction()
