# Checks the demo's output against README.md: the block of indented lines
# after "The first lines:" in the demo paragraph must be the first lines the
# demo prints, and each of the seven headings (a line that begins with a
# capital and ends in ":") must be followed directly by the header row of
# its table.
#
#   cmake -DQVI=<qvi> -DSAMPLE_DIR=<data/samples> -DDEMO=<qvi_demo.cmake>
#         -DPREFERENCES=<file> -DREADME=<README.md> -P check_demo.cmake
cmake_minimum_required(VERSION 3.25)

# Both streams, in the order written, as a terminal shows them: a note on
# the standard error between a heading and its table counts.
execute_process(
  COMMAND ${CMAKE_COMMAND} -DQVI=${QVI} -DSAMPLE_DIR=${SAMPLE_DIR} -DPREFERENCES=${PREFERENCES} -P ${DEMO}
  RESULT_VARIABLE result
  OUTPUT_VARIABLE output
  ERROR_VARIABLE output)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "the demo failed (${result})")
endif()

# Lines as list elements; a ";" in the output would split a line, so none
# may be there.
if(output MATCHES ";")
  message(FATAL_ERROR "the demo printed a ';', which this check cannot read")
endif()
string(REPLACE "\n" ";" lines "${output}")

set(headings 0)
list(LENGTH lines count)
math(EXPR last "${count} - 2")
foreach(index RANGE 0 ${last})
  list(GET lines ${index} line)
  if(line MATCHES "^[A-Z].*:$")
    math(EXPR headings "${headings} + 1")
    math(EXPR next "${index} + 1")
    list(GET lines ${next} table_header)
    if(NOT table_header MATCHES "^(SAMPLE_ID|DRIVER) ")
      message(FATAL_ERROR "heading '${line}' is followed by '${table_header}', not a table")
    endif()
  endif()
endforeach()
if(NOT headings EQUAL 7)
  message(NOTICE "${output}")
  message(FATAL_ERROR "the demo printed ${headings} headings, not 7")
endif()

file(READ "${README}" readme)
string(FIND "${readme}" "cmake --workflow --preset demo" demo_paragraph)
if(demo_paragraph EQUAL -1)
  message(FATAL_ERROR "README.md does not name the demo workflow")
endif()
string(SUBSTRING "${readme}" ${demo_paragraph} -1 readme)
if(NOT readme MATCHES "The first lines:\n\n((    [^\n]*\n)+)")
  message(FATAL_ERROR "README.md quotes no first lines of the demo")
endif()
string(REGEX REPLACE "(^|\n)    " "\\1" quoted "${CMAKE_MATCH_1}")
string(LENGTH "${quoted}" length)
string(SUBSTRING "${output}" 0 ${length} printed)
if(NOT quoted STREQUAL printed)
  message(NOTICE "README.md quotes:\n${quoted}\nThe demo begins with:\n${printed}")
  message(FATAL_ERROR "README.md does not quote the first lines of the demo")
endif()
message(STATUS "README.md quotes the demo's first lines")
