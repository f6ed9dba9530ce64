# The Python interpreter of the module qvimanager (QVIMANAGER_PYTHON): the
# one given as Python3_EXECUTABLE, or else the first python3 on the PATH
# that has numpy and pybind11, or else /usr/bin/python3 if it has them (a
# python3 of a version manager often comes first on the PATH without the
# distribution's packages). The choice is cached, so that every
# find_package(Python3) of the build takes the same interpreter.
if(NOT DEFINED Python3_EXECUTABLE)
  set(_qvimanager_python_candidates)
  find_program(_qvimanager_path_python python3 NO_CACHE)
  if(_qvimanager_path_python)
    list(APPEND _qvimanager_python_candidates "${_qvimanager_path_python}")
  endif()
  list(APPEND _qvimanager_python_candidates /usr/bin/python3)
  foreach(_qvimanager_python IN LISTS _qvimanager_python_candidates)
    if(EXISTS "${_qvimanager_python}")
      execute_process(COMMAND "${_qvimanager_python}" -c "import numpy, pybind11"
        RESULT_VARIABLE _qvimanager_python_result OUTPUT_QUIET ERROR_QUIET)
      if(_qvimanager_python_result EQUAL 0)
        set(Python3_EXECUTABLE "${_qvimanager_python}" CACHE FILEPATH "The Python interpreter of the module qvimanager")
        break()
      endif()
    endif()
  endforeach()
  if(NOT DEFINED Python3_EXECUTABLE)
    message(FATAL_ERROR "QVIMANAGER_PYTHON needs a python3 with numpy and pybind11 (on Debian: apt-get install "
      "python3-dev python3-numpy python3-pybind11 python3-pytest), or -DPython3_EXECUTABLE=... naming one")
  endif()
endif()
find_package(Python3 REQUIRED COMPONENTS Interpreter Development.Module)
execute_process(COMMAND "${Python3_EXECUTABLE}" -c "import numpy, pybind11"
  RESULT_VARIABLE _qvimanager_python_result OUTPUT_QUIET ERROR_VARIABLE _qvimanager_python_error)
if(NOT _qvimanager_python_result EQUAL 0)
  message(FATAL_ERROR "${Python3_EXECUTABLE} lacks numpy or pybind11: ${_qvimanager_python_error}")
endif()
message(STATUS "Python module qvimanager for ${Python3_EXECUTABLE} (Python ${Python3_VERSION})")
