# The demo: qvi on the 24-patch chart samples, four tables, then the
# simulated instruments beside qvi and three tables of them (the devices,
# readings of one named device, readings of the recent instrument), each
# after a heading line that says what it is, with a blank line between
# tables. Fails on the first qvi run that fails.
#
#   cmake -DQVI=<qvi> -DSAMPLE_DIR=<data/samples> -DPREFERENCES=<file> -P qvi_demo.cmake
#
# PREFERENCES is the demo's own preferences file (the recent instrument),
# made anew: the demo never touches the user's.
#
# Headings go through `cmake -E echo`, so they share the standard output of
# the tables and keep their place among them.
cmake_minimum_required(VERSION 3.25)

set(first_table TRUE)

# Prints the heading, then the table of `qvi ARGN`.
function(table heading)
  if(NOT first_table)
    execute_process(COMMAND ${CMAKE_COMMAND} -E echo "")
  endif()
  set(first_table FALSE PARENT_SCOPE)
  execute_process(COMMAND ${CMAKE_COMMAND} -E echo "${heading}")
  execute_process(COMMAND ${CMAKE_COMMAND} -E env "QVIMANAGER_PREFERENCES=${PREFERENCES}" -- "${QVI}" ${ARGN}
    WORKING_DIRECTORY "${SAMPLE_DIR}"
    RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "qvi ${command} failed (${result})")
  endif()
endfunction()

# The sample files hold reflectance factors 0..1 (data/samples/README.md);
# the demo says so, and qvi has no scale to guess and nothing to note.
set(chart chart24_babelcolor_avg.cgats)
table("CIELab of the 24 patches of ${chart} under D50, 2 degree observer:"
  color ${chart} --illuminant D50 --scale 1 --format table)
table("CIELab of the same patches under D65, 2 degree observer:"
  color ${chart} --illuminant D65 --scale 1 --format table)
table("CIE94 differences of chart24_ohta.cgats from ${chart}, tolerance 2:"
  delta-e ${chart} chart24_ohta.cgats --formula 94 --tolerance 2 --scale 1 --format table)
table("DIN densities of the patches of ${chart} relative to the white patch (19):"
  density ${chart} --paper-white 19 --scale 1 --format table)

# The instruments: the simulated spectrophotometer that ships beside qvi,
# with its bundled devices (plugins/simulated_instruments.conf beside qvi),
# one of which reads this chart.
file(REMOVE "${PREFERENCES}")
table("The instruments qvi finds (the simulated ones beside it):"
  instruments)
table("Three readings of the simulated device SIM-0001 (the chart's first patches), CIELab under D50:"
  measure --device SimulatedSpectrophotometer_SIM-0001 --count 3 --illuminant D50 --format table)
table("Two readings of the recent instrument, remembered from the run before:"
  measure --count 2 --illuminant D50 --format table)
