# Side-by-side manifests. They repeat what registration writes, from the same sources: the interface definitions, the
# module's class table and its registration script.
set(QS_REGISTRATION ${CMAKE_SOURCE_DIR}/com/class.rgs)
set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QS_IDL} ${QS_REGISTRATION})

# Brackets would bind the elements of a list together.
file(READ ${QS_IDL} qs_idl)
string(REPLACE "[" "<" qs_idl "${qs_idl}")
string(REPLACE "]" ">" qs_idl "${qs_idl}")

# The identifier, in braces, of what is defined as `definition`, for instance "coclass COQSPhase".
function(qs_identifier definition result)
  if(NOT qs_idl MATCHES "uuid\\(([0-9A-F-]+)\\)[^<>]*>[ \n]*${definition}[ \n]")
    message(FATAL_ERROR "${QS_IDL} has no identifier of ${definition}")
  endif()
  set(${result} "{${CMAKE_MATCH_1}}" PARENT_SCOPE)
endfunction()

# The lines that stand for a class, a row of a class table.
function(qs_manifest_class row result)
  if(NOT row MATCHES "^QS_CLASS\\(([A-Za-z]+), [0-9]+, \"([^\"]+)\", \"([^\"]+)\"")
    message(FATAL_ERROR "not a row of a class table: ${row}")
  endif()
  set(program ${CMAKE_MATCH_2})
  set(description ${CMAKE_MATCH_3})
  qs_identifier("coclass ${CMAKE_MATCH_1}" clsid)
  file(READ ${QS_REGISTRATION} script)
  string(REGEX MATCH "ThreadingModel = s '([A-Za-z]+)'" match "${script}")
  set(threads ${CMAKE_MATCH_1})
  string(REGEX MATCH " ProgID = s '%PROGID%([.0-9]+)'" match "${script}")
  string(CONCAT lines
    "    <comClass clsid=\"${clsid}\" threadingModel=\"${threads}\" description=\"${description}\"\n"
    "              progid=\"${program}${CMAKE_MATCH_1}\">\n"
    "      <progid>${program}</progid>\n"
    "    </comClass>\n")
  set(${result} "${lines}" PARENT_SCOPE)
endfunction()

# Writes TARGET.sxs.manifest beside the module. With TYPE_LIBRARY it also names the type library and, for calls between
# apartments, the interfaces that the automation marshaller serves.
function(qs_manifest target)
  cmake_parse_arguments(option TYPE_LIBRARY "" "" ${ARGN})
  set(table ${CMAKE_CURRENT_SOURCE_DIR}/classes.def)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${table})
  set(content "")
  file(STRINGS ${table} rows REGEX "^QS_CLASS")
  foreach(row IN LISTS rows)
    qs_manifest_class("${row}" lines)
    string(APPEND content "${lines}")
  endforeach()
  # A program's manifest names the exact version: it stays as long as the interfaces do, whatever that of the packages.
  string(REGEX MATCH "version\\(([0-9.]+)\\)[^<>]*>[ \n]*library" match "${qs_idl}")
  set(interfaces_version ${CMAKE_MATCH_1})
  set(interfaces "")
  if(option_TYPE_LIBRARY)
    qs_identifier("library QsContainersLib" library)
    string(APPEND content "    <typelib tlbid=\"${library}\" version=\"${interfaces_version}\" helpdir=\"\"/>\n")
    string(REGEX REPLACE "^.*\nlibrary " "" inside "${qs_idl}")
    string(REGEX MATCHALL "oleautomation, uuid[^<>]*>[ \n]*interface [A-Za-z0-9]+" definitions "${inside}")
    foreach(definition IN LISTS definitions)
      string(REGEX MATCH "interface ([A-Za-z0-9]+)$" match "${definition}")
      set(name ${CMAKE_MATCH_1})
      qs_identifier("interface ${name}" iid)
      string(APPEND interfaces
        "  <comInterfaceExternalProxyStub name=\"${name}\" iid=\"${iid}\" tlbid=\"${library}\"\n"
        "                                 proxyStubClsid32=\"{00020424-0000-0000-C000-000000000046}\"/>\n")
    endforeach()
  endif()
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(architecture x86)
  else()
    set(architecture amd64)
  endif()
  configure_file(${CMAKE_SOURCE_DIR}/com/module.manifest.in ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.sxs.manifest
                 @ONLY)
endfunction()
