// What the tests of the register commands share: a caller's record between guards, commands run
// over every value of a register, and the list of proofs that each file adds to.
#pragma once

#include <vector>

#include "device/device_test.h"

// The high half of every value that a register read answers with in the tests: written back by what
// changes a register, absent from what writes a whole register, in no report.
constexpr uint32_t kHigh = 0xCAFE0000;

using Registers = std::map<uint32_t, uint16_t>;

// One run of a command in which every call succeeds.
struct CommandProof {
    DeviceCommandCode command;
    Bytes record;
    Registers registers;
    Course course;
    Bytes record_after;
};

using CommandProofs = std::vector<CommandProof>;

// The proofs of each file; a command has one at least.
CommandProofs field_proofs();
CommandProofs state_proofs();
CommandProofs mode_proofs();
CommandProofs record_proofs();
CommandProofs indexed_proofs();

// The course of a report of one register, and of a change of one.
Course reads_register(uint32_t address);
Course changes_register(uint32_t address, uint16_t value, int32_t read_failure = -2);

Bytes big16(uint32_t word); // the high byte first

class RegisterTest : public DeviceTest
{
  protected:
    RegisterTest() { board.fpga.register_high = kHigh >> 16; }

    // A fresh caller's record, aligned as any record of the caller's would be.
    void* put(const Bytes& record);
    // The record as it stands now, after a check that nothing was written around it.
    Bytes get();

    uint16_t& at(uint32_t address) { return board.fpga.registers[address]; }
    int32_t run(DeviceCommandCode command) { return Fpga_Register_Set(command, record()); }

    // Runs a command on a fresh record in which the nth call fails in both runs, and which has a
    // descriptor open at that call.
    int32_t run_failing(DeviceCommandCode command, const Bytes& record, size_t n);
    // What such a command returns and leaves in the registers; the record is left as it was.
    void expect_left(DeviceCommandCode command, const Bytes& record, const Registers& before,
                     size_t n, int32_t result, const Registers& after);

    // prove() for each; the record afterwards; and that it is untouched when a call fails.
    void prove_all(const CommandProofs& proofs);

    // Runs a command on each value of a register. The register, and the record, hold afterwards
    // what is expected; no other register is changed.
    using RegisterAfter = std::function<uint16_t(uint16_t)>;
    using RecordAfter = std::function<Bytes(uint16_t)>;
    void write_over_every_value(DeviceCommandCode command, uint32_t address, const Bytes& record,
                                const RegisterAfter& expected);
    void read_every_value(DeviceCommandCode command, uint32_t address, const Bytes& record,
                          const RecordAfter& expected);

    // Runs a command with each 16-bit number in its record: those that `accepted` does not name
    // return -5, open nothing and leave the record.
    void refuse_all_but(DeviceCommandCode command,
                        const std::function<Bytes(uint16_t)>& record_with,
                        const std::function<bool(uint16_t)>& accepted);

  private:
    static constexpr size_t kGuard = 16;
    unsigned char* record() { return caller_ + kGuard; }

    alignas(8) unsigned char caller_[64] = {};
    size_t size_ = 0;
};
