#!/usr/bin/env bash
# Builds library, program, tools and tests, and runs all tests. Arguments go to ctest.
set -euo pipefail
. "$(dirname "$0")/setup.sh"
setup_need "${build_needs[@]}" gtest/gtest.h=libgtest-dev pkg-config=pkg-config

cmake --preset release
cmake --build --preset release
ctest --preset release "$@"
