# Installs the built library into a scratch prefix, then checks that a
# separate project builds and runs against that prefix alone, with CMake
# (and against the build tree), with pkg-config, and that the installed qvi
# starts on its own.
#
# Expects: BUILD_DIR, SOURCE_DIR (tests/consumer), WORK_DIR, GENERATOR,
# CXX_COMPILER, BINDIR, INCLUDEDIR and LIBDIR (relative to the prefix), SAMPLE_DIR, and
# CHECK_QVI (whether qvi was built).
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")

# Runs a command (after an optional ENV list for `cmake -E env`) and fails
# on a non-zero exit. Its standard output goes to the variable named by
# OUTPUT when given, to the log otherwise.
function(run)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "OUTPUT" "ENV;COMMAND")
  if(arg_OUTPUT)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env ${arg_ENV} -- ${arg_COMMAND}
      RESULT_VARIABLE result OUTPUT_VARIABLE output)
    set(${arg_OUTPUT} "${output}" PARENT_SCOPE)
  else()
    execute_process(COMMAND ${CMAKE_COMMAND} -E env ${arg_ENV} -- ${arg_COMMAND}
      RESULT_VARIABLE result)
  endif()
  if(NOT result EQUAL 0)
    list(JOIN arg_COMMAND " " command)
    message(NOTICE "${output}")
    message(FATAL_ERROR "failed (${result}): ${command}")
  endif()
endfunction()

# Runs a consumer program and requires its success line.
function(expect_ok program line)
  run(COMMAND "${program}" OUTPUT output)
  if(NOT output MATCHES "(^|\n)${line}\n")
    message(NOTICE "${output}")
    message(FATAL_ERROR "${program} did not print '${line}'")
  endif()
  message(STATUS "${program}: ${line}")
endfunction()

run(COMMAND ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}" OUTPUT installed)

# CMake, from the install prefix and from the build tree.
foreach(package IN ITEMS installed build-tree)
  if(package STREQUAL "installed")
    set(locate "-DCMAKE_PREFIX_PATH=${prefix}")
  else()
    set(locate "-DQVIManager_DIR=${BUILD_DIR}")
  endif()
  set(build "${WORK_DIR}/cmake-${package}")
  run(COMMAND ${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${build}" -G "${GENERATOR}"
      "${locate}" -DCMAKE_BUILD_TYPE=Release -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
  run(COMMAND ${CMAKE_COMMAND} --build "${build}")
  expect_ok("${build}/app" "consumer: ok")
  expect_ok("${build}/cgats_app" "consumer cgats: ok")
  expect_ok("${build}/plugin_host" "consumer plugin: ok")
  expect_ok("${build}/thread_host" "consumer threads: ok")
  expect_ok("${build}/instruments/instrument_app" "consumer instruments: ok")
  # The driver's trace point, with tracing switched on, in a working
  # directory of its own.
  set(trace_dir "${build}/trace")
  file(MAKE_DIRECTORY "${trace_dir}")
  execute_process(COMMAND ${CMAKE_COMMAND} -E env QVIMANAGER_TRACE=1 -- "${build}/instruments/instrument_app"
    WORKING_DIRECTORY "${trace_dir}" RESULT_VARIABLE result OUTPUT_QUIET)
  file(READ "${trace_dir}/DebugOutput.txt" trace)
  if(NOT result EQUAL 0 OR NOT trace MATCHES "CALL - 0x[0-9a-f]+ - MyDrivers::MyDriver::Connect - \\(\\)")
    message(NOTICE "${trace}")
    message(FATAL_ERROR "the driver's trace point did not reach DebugOutput.txt")
  endif()
  message(STATUS "${build}/instruments/instrument_app traced: ok")
endforeach()

# The kit refuses a plug-in without sources, saying why.
execute_process(
  COMMAND ${CMAKE_COMMAND} -S "${SOURCE_DIR}/bad_plugin" -B "${WORK_DIR}/bad-plugin" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${prefix}" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(result EQUAL 0 OR NOT errors MATCHES "qvimanager_add_plugin\\(no_sources\\): SOURCES names no file")
  message(NOTICE "${output}${errors}")
  message(FATAL_ERROR "qvimanager_add_plugin accepted a plug-in without sources")
endif()
message(STATUS "qvimanager_add_plugin refuses a plug-in without sources: ok")

# pkg-config: its flags alone compile and link the consumer; the shared
# library's flags carry the numeric options its inline code needs.
find_program(PKG_CONFIG_EXECUTABLE pkg-config REQUIRED)
run(ENV "PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig"
    COMMAND "${PKG_CONFIG_EXECUTABLE}" --cflags QVIManager OUTPUT cflags)
run(ENV "PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig"
    COMMAND "${PKG_CONFIG_EXECUTABLE}" --libs QVIManager OUTPUT libs)
string(STRIP "${cflags}" cflags)
string(STRIP "${libs}" libs)
message(STATUS "pkg-config --cflags: ${cflags}")
message(STATUS "pkg-config --libs: ${libs}")
separate_arguments(cflag_list UNIX_COMMAND "${cflags}")
separate_arguments(lib_list UNIX_COMMAND "${libs}")
foreach(flag IN ITEMS "-I${prefix}/${INCLUDEDIR}" -ffp-contract=off -fno-fast-math)
  if(NOT flag IN_LIST cflag_list)
    message(FATAL_ERROR "pkg-config --cflags lacks ${flag}: ${cflags}")
  endif()
endforeach()
set(build "${WORK_DIR}/build-pkg-config")
file(MAKE_DIRECTORY "${build}")
run(COMMAND "${CXX_COMPILER}" ${cflag_list} "${SOURCE_DIR}/main.cpp" -o "${build}/app" ${lib_list})
# The CGATS reader is a static library beside the shared one.
run(COMMAND "${CXX_COMPILER}" ${cflag_list} "${SOURCE_DIR}/cgats_main.cpp" -o "${build}/cgats_app"
    -lQVIManagerCgats ${lib_list})
set(ENV{LD_LIBRARY_PATH} "${prefix}/${LIBDIR}")
expect_ok("${build}/app" "consumer: ok")
expect_ok("${build}/cgats_app" "consumer cgats: ok")
unset(ENV{LD_LIBRARY_PATH})

# The installed qvi finds the installed library by itself, wherever the
# prefix lies: it runs after the prefix is moved, with no LD_LIBRARY_PATH.
if(CHECK_QVI)
  set(moved "${WORK_DIR}/moved-prefix")
  file(RENAME "${prefix}" "${moved}")
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH --
      "${moved}/${BINDIR}/qvi" color chart24_babelcolor_avg.cgats --illuminant D50
    WORKING_DIRECTORY "${SAMPLE_DIR}"
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message(NOTICE "${errors}")
    message(FATAL_ERROR "the installed qvi failed (${result})")
  endif()
  # The first row: patch 1 under D50.
  if(NOT output MATCHES "\nBEGIN_DATA\n1\t\"dark skin\"\t38\\.4422\t13\\.6031\t14\\.5311\n")
    message(NOTICE "${output}")
    message(FATAL_ERROR "the installed qvi did not give patch 1 under D50")
  endif()
  message(STATUS "installed qvi: ok")
endif()

message("installed package: ok")
