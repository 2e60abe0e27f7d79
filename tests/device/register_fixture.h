// What the tests of the register commands share: the proof of a command whose device is registers,
// and commands run over every value of a register.
#pragma once

#include "device/command_test.h"
#include "device/record_bytes.h"

// The high half of every value that a register read answers with in the tests: written back by what
// changes a register, absent from what writes a whole register, in no report.
constexpr uint32_t kHigh = 0xCAFE0000;

// For loops over something else than the values of the register.
constexpr uint16_t kSomeWords[] = {0x0000, 0xFFFF, 0xA5C3, 0x5A3C};

using Registers = std::map<uint32_t, uint16_t>;

// One run of a command in which every call succeeds.
struct RegisterProof {
    DeviceCommandCode command;
    Bytes record;
    Registers registers;
    Course course;
    Bytes after; // the record
    int32_t result = DEVICE_OK;
};

// The course of a report of one register, and of a change of one.
Course reads_register(uint32_t address);
Course changes_register(uint32_t address, uint16_t value,
                        int32_t read_failure = DEVICE_READ_FAILED);

// Reads of consecutive registers.
Course registers_read(uint32_t address, unsigned count);

class RegisterTest : public CommandTest
{
  protected:
    RegisterTest() { board.fpga.register_high = kHigh >> 16; }

    uint16_t& at(uint32_t address) { return board.fpga.registers[address]; }

    // prove_record(), and what the course has written; and whichever call fails in both runs: the
    // registers hold what was written before it, and the record is left as it was.
    void prove_registers(const RegisterProof& proof);

    // Runs a command on each value of a register. The register, and the record, hold afterwards
    // what is expected; no other register is changed.
    using RegisterAfter = std::function<uint16_t(uint16_t)>;
    using RecordAfter = std::function<Bytes(uint16_t)>;
    void write_over_every_value(DeviceCommandCode command, uint32_t address, const Bytes& before,
                                const RegisterAfter& expected);
    void read_every_value(DeviceCommandCode command, uint32_t address, const Bytes& before,
                          const RecordAfter& expected);

    // Runs a command with each 16-bit number in its record: those that `accepted` does not name
    // return -5, open nothing and leave the record.
    void refuse_all_but(DeviceCommandCode command,
                        const std::function<Bytes(uint16_t)>& record_with,
                        const std::function<bool(uint16_t)>& accepted);
};
