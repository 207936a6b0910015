# The 26 functions of the library contract, read from its header: the version
# script, the host library's list of entry points (trace and fault names) and the
# export check are all derived from this one reading, so the header is the only
# place a function is named.
set(KESH_CONTRACT_HEADER ${CMAKE_CURRENT_LIST_DIR}/../include/kesh/kesh_pattern.h)

# kesh_contract_functions(<var>): the function names of the header, in header order.
function(kesh_contract_functions out)
  file(STRINGS ${KESH_CONTRACT_HEADER} declarations REGEX "^[A-Za-z_][A-Za-z0-9_ ]*\\** *kesh[A-Za-z]+\\(")
  set(names "")
  foreach(line IN LISTS declarations)
    string(REGEX MATCH "kesh[A-Za-z]+\\(" name "${line}")
    string(REPLACE "(" "" name "${name}")
    list(APPEND names ${name})
  endforeach()
  set(${out} ${names} PARENT_SCOPE)
endfunction()
