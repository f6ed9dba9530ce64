# The platform code of the library stays in qvimanager/platform/posix/:
# no other file of the library includes a POSIX header or a header of that
# folder, and the platform classes (the "_PC" classes) are named only in
# the files that hold their abstract classes' NewInstance.
#
# Expects: SOURCE_DIR (the repository root).
cmake_minimum_required(VERSION 3.25)

# The files that hold a NewInstance of a platform class.
set(new_instance_files
  qvimanager/components/dll_loader.cpp
  qvimanager/platform/directory.cpp
  qvimanager/platform/file.cpp
  qvimanager/platform/string_converter.cpp)

set(posix_headers "dlfcn|dirent|pthread|unistd|fcntl|fnmatch|iconv|semaphore|spawn|termios|poll|glob|pwd|grp|sys/[a-z_]+")

file(GLOB_RECURSE files RELATIVE "${SOURCE_DIR}" "${SOURCE_DIR}/qvimanager/*.h" "${SOURCE_DIR}/qvimanager/*.cpp")
set(violations "")
foreach(file IN LISTS files)
  if(file MATCHES "^qvimanager/platform/posix/")
    continue()
  endif()
  file(STRINGS "${SOURCE_DIR}/${file}" lines)
  set(number 0)
  foreach(line IN LISTS lines)
    math(EXPR number "${number} + 1")
    if(line MATCHES "^[ \t]*#[ \t]*include[ \t]*<(${posix_headers})\\.h>")
      string(APPEND violations "\n  ${file}:${number}: includes a POSIX header: ${line}")
    endif()
    if(NOT file IN_LIST new_instance_files)
      if(line MATCHES "qvimanager/platform/posix/")
        string(APPEND violations "\n  ${file}:${number}: includes a platform class: ${line}")
      elseif(line MATCHES "[A-Za-z]_PC([^A-Za-z0-9]|$)")
        string(APPEND violations "\n  ${file}:${number}: names a platform class outside NewInstance: ${line}")
      endif()
    endif()
  endforeach()
endforeach()

if(violations)
  message(FATAL_ERROR "platform code outside qvimanager/platform/posix/:${violations}")
endif()
list(LENGTH files count)
message(STATUS "${count} files of the library checked: platform code only in qvimanager/platform/posix/")
