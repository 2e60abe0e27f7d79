// What takes more than a line to lead into the unit.
#pragma once

int path_rename(int from_folder, const char* from, int to_folder, const char* to, unsigned flags);
int path_symlink(const char* target, int folder, const char* path);
int path_link(int from_folder, const char* from, int to_folder, const char* to, int flags);
