# Runs the table generator into a scratch folder and compares its output
# with the files in the tree.
file(REMOVE_RECURSE "${OUTPUT}")
execute_process(COMMAND "${PYTHON}" "${GENERATOR}" "${OUTPUT}" RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "the generator failed (${result})")
endif()
foreach(name cie_tables.h cie_tables.cpp)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${OUTPUT}/${name}" "${EXPECTED}/${name}"
                  RESULT_VARIABLE different)
  if(different)
    message(FATAL_ERROR "${name} differs from what the generator makes: run tools/tablegen/generate_cie_tables.py")
  endif()
endforeach()
