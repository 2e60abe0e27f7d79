// States of the board's devices, by number: the same number is the same state on every machine.
#pragma once

#include <cstdint>

#include "sim/fpga_model.h"
#include "sim/rtc_model.h"

// Puts the devices into the state of this number. In most states most commands get far: small
// numbers are as likely as any.
void deviceState_put(uint32_t number, FpgaModel& fpga, RtcModel& rtc);
