// A unit's folder as a whole: devices and files, made and started anew.
#pragma once

#include <string>

#include "tools/maintsim/unit.h"

// What a new unit is made of; an empty path: a sample.
struct NewUnit {
    bool blank = false;   // devices of zeros, erased flash, no files
    std::string image;    // the flash image of the system log
    std::string config;   // /conf/config
    std::string snapshot; // what `maintctl snapshot` wrote
};

// Makes the folder, which must not exist or be empty; nobody sees half of it. False: `error` says in
// one line why not, and nothing is left.
bool unitFolder_make(const std::string& folder, const NewUnit& choice, std::string& error);

// A start of the unit. Its system clock begins with the time of its clock. With the power gone, the
// devices are as they were made, and /tmp and the working log are lost. False: `error` says why not.
enum class Restart { kPowerCycle, kWarm };
bool unit_restart(Unit* unit, const std::string& folder, Restart kind, std::string& error);
