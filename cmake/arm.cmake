# The tests for the board's processor: Debian's compiler for ARM with its own C and C++ library
# (package g++-arm-linux-gnueabi), run by an emulator of user programs (package qemu-user-static).
# The C library is not the board's: see board.cmake for what goes there.
set(MAINT_CROSS_PREFIX arm-linux-gnueabi- CACHE STRING "Prefix of the toolchain's programs")
include(${CMAKE_CURRENT_LIST_DIR}/board.cmake)

set(CMAKE_C_FLAGS_INIT "-march=armv5te -mfloat-abi=soft")
# One compiler makes all of it: notes on what another version passes otherwise are about nothing here.
set(CMAKE_CXX_FLAGS_INIT "-march=armv5te -mfloat-abi=soft -Wno-psabi")
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/arm_emulator)
