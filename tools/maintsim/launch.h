// Runs a program on a unit.
#pragma once

#include <string>

// The program and its arguments, with a null at the end. An empty folder: a new unit that is gone
// afterwards. Returns the exit status; does not return where the program takes this one's place.
// 126: the program cannot be run on a unit; 127: it is not there.
int launch(const std::string& folder, char** program);
