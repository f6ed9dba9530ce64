# Installs the build into a scratch prefix, moves the prefix, and imports
# the installed Python package from there with PYTHONPATH naming its folder:
# the package must come from the moved prefix, find the moved library, and
# compute (the first patch of the 24-patch chart under D50: CIELab 38.4422
# 13.6031 14.5311).
#
# Expects: BUILD_DIR, WORK_DIR, PYTHON (the interpreter), PYTHON_DIR (the
# package folder relative to the prefix) and SAMPLE
# (chart24_babelcolor_avg.cgats).
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
set(moved "${WORK_DIR}/moved-prefix")

execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}"
  RESULT_VARIABLE result OUTPUT_QUIET)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "the install failed (${result})")
endif()
foreach(file IN ITEMS __init__.py errors.py)
  if(NOT EXISTS "${prefix}/${PYTHON_DIR}/qvimanager/${file}")
    message(FATAL_ERROR "${PYTHON_DIR}/qvimanager/${file} is not installed")
  endif()
endforeach()
file(RENAME "${prefix}" "${moved}")

set(script [=[
import sys
import qvimanager
assert qvimanager.__file__.startswith(sys.argv[1]), qvimanager.__file__
assert qvimanager._core.__file__.startswith(sys.argv[1]), qvimanager._core.__file__
lab = qvimanager.color(qvimanager.read_cgats(sys.argv[2]).spectra[0], illuminant="D50")
print("%.4f %.4f %.4f" % tuple(lab))
]=])
execute_process(
  COMMAND ${CMAKE_COMMAND} -E env "PYTHONPATH=${moved}/${PYTHON_DIR}" --unset=LD_LIBRARY_PATH
    "${PYTHON}" -c "${script}" "${moved}/" "${SAMPLE}"
  WORKING_DIRECTORY "${WORK_DIR}"
  RESULT_VARIABLE result
  OUTPUT_VARIABLE output
  ERROR_VARIABLE errors)
if(NOT result EQUAL 0)
  message(NOTICE "${output}${errors}")
  message(FATAL_ERROR "the installed package did not import or compute (${result})")
endif()
if(NOT output STREQUAL "38.4422 13.6031 14.5311\n")
  message(FATAL_ERROR "the installed package computed ${output}")
endif()
message("installed Python package: ${output}")
