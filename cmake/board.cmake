# The board: ARM Linux, little-endian, uClibc. CROSS_COMPILE in the environment is the prefix of the
# toolchain's programs, with their folder where that is not in PATH.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(prefix "$ENV{CROSS_COMPILE}")
if(MAINT_CROSS_PREFIX)
  if(NOT prefix STREQUAL "" AND NOT prefix STREQUAL MAINT_CROSS_PREFIX)
    message(FATAL_ERROR "This build folder is for the toolchain ${MAINT_CROSS_PREFIX}, not for "
      "${prefix}: another needs another folder (-B), or this one anew (--fresh)")
  endif()
  set(prefix "${MAINT_CROSS_PREFIX}")
endif()
if(prefix STREQUAL "")
  message(FATAL_ERROR "CROSS_COMPILE is not set; for example: CROSS_COMPILE=arm-linux-")
endif()
foreach(tool gcc g++)
  find_program(compiler ${prefix}${tool} NO_CACHE)
  if(NOT compiler)
    find_program(with_hyphen ${prefix}-${tool} NO_CACHE)
    if(with_hyphen)
      message(FATAL_ERROR "No program ${prefix}${tool}, but there is ${prefix}-${tool}: "
        "CROSS_COMPILE needs its last character, CROSS_COMPILE=${prefix}-")
    endif()
    message(FATAL_ERROR "No program ${prefix}${tool}: CROSS_COMPILE is what the names of the "
      "toolchain's programs begin with, with their folder where that is not in PATH")
  endif()
  unset(compiler)
  unset(with_hyphen)
endforeach()
# Kept, so that a later build can configure anew without the environment; only now, so that a wrong
# one is not kept.
set(MAINT_CROSS_PREFIX "${prefix}" CACHE STRING "Prefix of the toolchain's programs")
unset(prefix)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MAINT_CROSS_PREFIX)
set(CMAKE_C_COMPILER ${MAINT_CROSS_PREFIX}gcc)
set(CMAKE_CXX_COMPILER ${MAINT_CROSS_PREFIX}g++)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
