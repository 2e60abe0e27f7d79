# The board: ARM Linux, little-endian, uClibc. CROSS_COMPILE in the environment is the prefix of the
# toolchain's programs, with their folder where that is not in PATH.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

# Kept, so that a later build can configure anew without the environment.
set(MAINT_CROSS_PREFIX "$ENV{CROSS_COMPILE}" CACHE STRING "Prefix of the toolchain's programs")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MAINT_CROSS_PREFIX)
if(NOT MAINT_CROSS_PREFIX)
  message(FATAL_ERROR "CROSS_COMPILE is not set; for example: CROSS_COMPILE=arm-linux-")
endif()
if(NOT "$ENV{CROSS_COMPILE}" STREQUAL "" AND NOT "$ENV{CROSS_COMPILE}" STREQUAL MAINT_CROSS_PREFIX)
  message(FATAL_ERROR "This build folder is for the toolchain ${MAINT_CROSS_PREFIX}, not for "
    "$ENV{CROSS_COMPILE}: another needs another folder (-B), or this one anew (--fresh)")
endif()
set(CMAKE_C_COMPILER ${MAINT_CROSS_PREFIX}gcc)
set(CMAKE_CXX_COMPILER ${MAINT_CROSS_PREFIX}g++)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
