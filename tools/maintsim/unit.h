// A simulated unit: a folder, and what programs and people ask of it. Any number of processes may
// have the same unit open; requests are served one at a time, in the order in which they come. What
// has been answered stays, whoever is killed.
//
//   DIR/unit      what kind of folder this is, and its version
//   DIR/state     the devices' state as text, an item a line, as `maintsim show` prints it
//   DIR/journal   every request since that state, with its answer; shared memory of all processes
//   DIR/calls     the journal's requests of before that state: only to be told
//   DIR/made      the devices' state after a power cycle, as text
//   DIR/files     /conf, /tmp and /dev/mtd_systemlog of the unit, as files
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

struct Unit; // open in this process

// Opens a unit's folder; null: `error` says in one line why not.
Unit* unit_open(const std::string& folder, std::string& error);
void unit_close(Unit* unit);

enum class UnitDevice : uint8_t { kFpga, kRtc };

// An open, a close or a request of the calling process, as the journal keeps it. A request's argument
// is an address or a value, as the driver takes it (sim/fpga_model.h knows which). Returns what the
// driver returns; -1 with errno set for a failure, also for a request that the driver does not know.
int unit_opened(Unit* unit, UnitDevice device, int flags);
void unit_closed(Unit* unit, UnitDevice device);
int unit_request(Unit* unit, UnitDevice device, unsigned long request, unsigned long argument);

// The unit's system clock, as a difference to the machine's, in nanoseconds; 0 until it is set.
int64_t unit_clockDifference(Unit* unit);
void unit_setClock(Unit* unit, int64_t difference);
