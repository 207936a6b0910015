# Runs the generator into WORK_DIR and requires exactly the committed set of
# files in EXPECTED_DIR, byte for byte.
# Usage: cmake -DGENERATOR=... -DEXPECTED_DIR=... -DWORK_DIR=... [-DLAUNCHER="qemu-arm -L ..."]
#        -P regenerate_identical.cmake
separate_arguments(launcher UNIX_COMMAND "${LAUNCHER}")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
execute_process(COMMAND ${launcher} "${GENERATOR}" "${WORK_DIR}" RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the generator failed: ${status}")
endif()

file(GLOB expected RELATIVE "${EXPECTED_DIR}" "${EXPECTED_DIR}/*.bin")
file(GLOB produced RELATIVE "${WORK_DIR}" "${WORK_DIR}/*.bin")
list(SORT expected)
list(SORT produced)
if(NOT expected STREQUAL produced)
  message(FATAL_ERROR "file sets differ:\n committed: ${expected}\n generated: ${produced}")
endif()

set(differing "")
foreach(name IN LISTS expected)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${EXPECTED_DIR}/${name}" "${WORK_DIR}/${name}"
                  RESULT_VARIABLE same)
  if(NOT same EQUAL 0)
    list(APPEND differing ${name})
  endif()
endforeach()
if(differing)
  message(FATAL_ERROR "regenerated files differ from the committed ones: ${differing}")
endif()
file(REMOVE_RECURSE "${WORK_DIR}")
