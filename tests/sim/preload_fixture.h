// Tests that run on a unit themselves: their calls of the C library are the preloaded object's.
#pragma once

#include <string>

#include <gtest/gtest.h>

// The unit's folder. The tests do not begin before it is sure that they run on it.
const std::string& unit_folder();

// A file of the unit at its place in the unit's folder.
std::string unit_place(const std::string& path);

// What the kernel says, with nothing in between.
bool machine_has(const std::string& path);
long machine_seconds();
bool same_file(const std::string& one, const std::string& other);

std::string file_text(const std::string& path); // by the kernel's own calls
void file_make(const std::string& path, const std::string& text);

// Where an entry of the C library is, for this program.
bool taken_over(const char* name);
