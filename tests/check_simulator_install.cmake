# Installs the built library into a scratch prefix, moves the prefix, and
# runs the simulator's test host from the installed bin folder, beside the
# installed folder "plugins": without QVIMANAGER_SIMULATOR the simulated
# spectrophotometer takes the installed configuration beside it, whose
# devices read the installed 24-patch chart.
#
# Expects: BUILD_DIR, WORK_DIR, BINDIR (relative to the prefix) and HOST
# (the test host simulator_host).
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
set(moved "${WORK_DIR}/moved-prefix")

execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}"
  RESULT_VARIABLE result OUTPUT_QUIET)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "the install failed (${result})")
endif()
file(RENAME "${prefix}" "${moved}")
foreach(file IN ITEMS simulated_spectrophotometer.dll console_message_service.dll simulated_instruments.conf)
  if(NOT EXISTS "${moved}/${BINDIR}/plugins/${file}")
    message(FATAL_ERROR "${BINDIR}/plugins/${file} is not installed")
  endif()
endforeach()
file(COPY "${HOST}" DESTINATION "${moved}/${BINDIR}")
get_filename_component(host_name "${HOST}" NAME)

execute_process(
  COMMAND ${CMAKE_COMMAND} -E env --unset=QVIMANAGER_SIMULATOR --unset=QVIMANAGER_MESSAGES --
    "${moved}/${BINDIR}/${host_name}" devices find measure:SimulatedSpectrophotometer_SIM-0001:1
  WORKING_DIRECTORY "${WORK_DIR}"
  RESULT_VARIABLE result
  OUTPUT_VARIABLE output
  ERROR_VARIABLE errors)
if(NOT result EQUAL 0)
  message(NOTICE "${output}${errors}")
  message(FATAL_ERROR "the host failed (${result})")
endif()
# The devices, and the first patch of the chart: 0.05475 at 380 nm and
# 0.05833 at 390 nm, each the nearest float.
set(expected
  "device: SIM-0001 name=Simulated Spectrophotometer driver=SimulatedSpectrophotometer "
  "transport=Simulated port=sim-1 baud=115200 available=yes\n"
  "device: SIM-0002 name=Simulated Spectrophotometer \\(spare\\) driver=SimulatedSpectrophotometer "
  "transport=Simulated port=sim-2 baud=115200 available=no\n"
  "found: SimulatedSpectrophotometer_SIM-0001 SimulatedSpectrophotometer_SIM-0002\n"
  "reading: 0\\.0547499992 0\\.0583299994 ")
string(CONCAT expected ${expected})
if(NOT output MATCHES "^${expected}")
  message(NOTICE "${output}${errors}")
  message(FATAL_ERROR "the installed simulator did not read the installed chart")
endif()
message("installed simulator: ok")

# The installed qvi, beside the installed plug-ins: it lists the simulated
# devices and measures the first patch of the chart (CIELab under D50:
# 38.4422 13.6031 14.5311), with a preferences file of the test's own.
if(EXISTS "${moved}/${BINDIR}/qvi")
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env --unset=QVIMANAGER_SIMULATOR --unset=QVIMANAGER_MESSAGES
      "QVIMANAGER_PREFERENCES=${WORK_DIR}/preferences.ini" --
      "${moved}/${BINDIR}/qvi" measure --device SimulatedSpectrophotometer_SIM-0001 --illuminant D50 --format csv
    WORKING_DIRECTORY "${WORK_DIR}"
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE errors)
  if(NOT result EQUAL 0 OR NOT output STREQUAL "SAMPLE_ID,LAB_L,LAB_A,LAB_B\n1,38.4422,13.6031,14.5311\n")
    message(NOTICE "${output}${errors}")
    message(FATAL_ERROR "the installed qvi did not measure with the installed simulator (${result})")
  endif()
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env --unset=QVIMANAGER_SIMULATOR
      "QVIMANAGER_PREFERENCES=${WORK_DIR}/preferences.ini" --
      "${moved}/${BINDIR}/qvi" instruments
    WORKING_DIRECTORY "${WORK_DIR}"
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE errors)
  if(NOT result EQUAL 0 OR NOT output MATCHES "recent: +Simulated Spectrophotometer_SIM-0001 \\(SimulatedSpectrophotometer\\)")
    message(NOTICE "${output}${errors}")
    message(FATAL_ERROR "the installed qvi did not list the instruments and the recent one (${result})")
  endif()
  message("installed qvi measure and instruments: ok")
endif()
