# The worked driver of the plug-in guide is the one the installed-package
# test builds: the code block of docs/plugins.md that begins with
# "// my_driver.cpp" must equal tests/consumer/my_driver.cpp.
#
# Expects: GUIDE (docs/plugins.md), EXAMPLE (tests/consumer/my_driver.cpp).
cmake_minimum_required(VERSION 3.25)

file(READ "${GUIDE}" guide)
file(READ "${EXAMPLE}" example)
string(FIND "${guide}" "```cpp\n// my_driver.cpp\n" start)
if(start EQUAL -1)
  message(FATAL_ERROR "${GUIDE} has no code block beginning with // my_driver.cpp")
endif()
math(EXPR start "${start} + 7")
string(SUBSTRING "${guide}" ${start} -1 rest)
string(FIND "${rest}" "```\n" end)
string(SUBSTRING "${rest}" 0 ${end} block)
if(NOT block STREQUAL example)
  message(FATAL_ERROR "the driver in ${GUIDE} differs from ${EXAMPLE}: change both together")
endif()
