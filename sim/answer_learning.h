// The other way round: a state of the device that gives the answers that were seen.
#pragma once

#include <string>

#include "sim/fpga_model.h"

// Takes over what an answer tells of the state: what the driver got, and what it left there. Both have
// the size of the request's record. A request that only writes tells nothing.
void fpgaAnswer_learn(FpgaModel& fpga, const RequestForm& form, const std::string& before,
                      const std::string& after);
