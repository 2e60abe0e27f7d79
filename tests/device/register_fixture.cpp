#include "device/register_fixture.h"

namespace
{

// What a call writes to the registers, if it does.
void write_apply(const std::string& call, Registers& registers)
{
    unsigned a[4];
    unsigned v[2];
    if (sscanf(call.c_str(), "ioctl 6B43 %x %x %x %x %x %x", &a[0], &a[1], &a[2], &a[3], &v[0],
               &v[1]) == 6) {
        registers[a[0] | a[1] << 8 | a[2] << 16 | a[3] << 24] =
            static_cast<uint16_t>(v[0] | v[1] << 8);
    }
}

} // namespace

Course reads_register(uint32_t address)
{
    return {opens_to_read(), register_read(address), closes()};
}

Course changes_register(uint32_t address, uint16_t value, int32_t read_failure)
{
    return {opens_to_write(), register_read(address, read_failure),
            register_write(address, kHigh | value), closes()};
}

Course registers_read(uint32_t address, unsigned count)
{
    Course course;
    for (unsigned i = 0; i < count; ++i) {
        course.push_back(register_read(address + 2 * i));
    }
    return course;
}

void RegisterTest::prove_registers(const RegisterProof& proof)
{
    SCOPED_TRACE(command_name(proof.command));
    device_put = [&] { board.fpga.registers = proof.registers; };
    Registers expected = proof.registers;
    size_t open = 0;
    for (size_t i = 0; i < proof.course.size(); ++i) {
        const auto& [call, failure] = proof.course[i];
        if (failure != kIgnored) {
            SCOPED_TRACE("failing in both runs: " + call);
            board.restart();
            fail_in_both_runs(i + 1, open);
            EXPECT_EQ(run(proof.command, proof.record), failure);
            EXPECT_EQ(board.fpga.registers, expected);
            EXPECT_EQ(record(), proof.record);
        }
        write_apply(call, expected);
        open += call.rfind("open ", 0) == 0 ? 1 : 0;
        open -= call.rfind("close ", 0) == 0 ? 1 : 0;
    }
    prove_record(proof.command, proof.record, proof.course, proof.after, proof.result);
    EXPECT_EQ(board.fpga.registers, expected);
    device_put = nullptr;
}

void RegisterTest::write_over_every_value(DeviceCommandCode command, uint32_t address,
                                          const Bytes& before, const RegisterAfter& expected)
{
    SCOPED_TRACE(command_name(command));
    board.fpga.registers.clear();
    uint16_t& held = at(address);
    for_every_word([&](uint16_t word) {
        held = word;
        ASSERT_EQ(run(command, before), 0);
        ASSERT_EQ(held, expected(word)) << hex_number(word);
        ASSERT_EQ(record(), before);
    });
    EXPECT_EQ(board.fpga.registers.size(), 1U);
}

void RegisterTest::read_every_value(DeviceCommandCode command, uint32_t address,
                                    const Bytes& before, const RecordAfter& expected)
{
    SCOPED_TRACE(command_name(command));
    board.fpga.registers.clear();
    uint16_t& held = at(address);
    for_every_word([&](uint16_t word) {
        held = word;
        ASSERT_EQ(run(command, before), 0);
        ASSERT_EQ(record(), expected(word)) << hex_number(word);
        ASSERT_EQ(held, word);
    });
    EXPECT_EQ(board.fpga.registers.size(), 1U);
}

void RegisterTest::refuse_all_but(DeviceCommandCode command,
                                  const std::function<Bytes(uint16_t)>& record_with,
                                  const std::function<bool(uint16_t)>& accepted)
{
    SCOPED_TRACE(command_name(command));
    for_every_word([&](uint16_t number) {
        const size_t calls = board.call_count();
        const int32_t result = run(command, record_with(number));
        if (accepted(number)) {
            ASSERT_EQ(result, 0) << hex_number(number);
            ASSERT_GT(board.call_count(), calls);
        } else {
            ASSERT_EQ(result, DEVICE_BAD_ARGUMENT) << hex_number(number);
            ASSERT_EQ(board.call_count(), calls);
            ASSERT_EQ(record(), record_with(number));
        }
    });
}
