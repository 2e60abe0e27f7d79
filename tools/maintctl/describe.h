// A command line that the program takes, made from a command's description.
#pragma once

#include "catalogue/catalogue.h"
#include "tools/maintctl/text.h"

// "WR_RTC_TIME year=1 month=1" or "-x WR_CONTROL_BLOCK record=01", without "maintctl".
void example_add(Text& text, const CommandDescription& command);
