// Calls on the board's devices as text, alike wherever they are recorded.
#pragma once

#include <string>

#include "sim/fpga_model.h"

// The flags of an open: "O_RDWR|O_NONBLOCK".
std::string openFlags_text(int flags);

// A request and its argument: "6B04 =1234", a value; "6B42 12 00 00 00 00 00 00 00", a record's
// bytes as the driver gets them.
std::string request_text(const RequestForm& form, const void* record, unsigned long value);
