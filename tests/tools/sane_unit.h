// A unit that is new and works, for documents: unit 1 on the simulated board, with units 2 and 3
// present, all ports up, and its files.
#pragma once

#include "board/board.h"

void saneUnit_putDevices(Board& board);
void saneUnit_putFiles(const Board& board);
