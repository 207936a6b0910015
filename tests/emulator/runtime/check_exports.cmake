# The library's dynamic interface: soname exactly libkesh_pattern_25.so and
# exactly the functions of the contract header, each at version KESH_PATTERN.
# Usage: cmake -DLIB=... -DNM=... -DREADELF=... -P check_exports.cmake
include(${CMAKE_CURRENT_LIST_DIR}/../../../cmake/contract.cmake)

execute_process(COMMAND ${READELF} -d ${LIB} OUTPUT_VARIABLE dynamic RESULT_VARIABLE rc)
if(NOT rc EQUAL 0 OR NOT dynamic MATCHES "Library soname: \\[libkesh_pattern_25\\.so\\]")
  message(FATAL_ERROR "soname is not exactly libkesh_pattern_25.so:\n${dynamic}")
endif()

kesh_contract_functions(functions)
set(expected "KESH_PATTERN")
foreach(name IN LISTS functions)
  list(APPEND expected "${name}@@KESH_PATTERN")
endforeach()

execute_process(COMMAND ${NM} -D --defined-only ${LIB} OUTPUT_VARIABLE symbols RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIB}")
endif()
string(REGEX REPLACE "\n$" "" symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")
set(exported "")
foreach(line IN LISTS symbols)
  string(REGEX REPLACE "^[0-9a-fA-F]* *[A-Za-z] " "" name "${line}")
  # The version's own symbol: GNU nm prints its bare name, LLVM's adds the version.
  string(REGEX REPLACE "^KESH_PATTERN@@KESH_PATTERN$" "KESH_PATTERN" name "${name}")
  list(APPEND exported "${name}")
endforeach()
list(SORT expected)
list(SORT exported)
if(NOT expected STREQUAL exported)
  message(FATAL_ERROR "exported symbols differ.\nexpected: ${expected}\nexported: ${exported}")
endif()
