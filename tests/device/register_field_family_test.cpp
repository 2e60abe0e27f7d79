#include "device/register_test.h"

namespace
{

constexpr unsigned char kGuardByte = 0x5A;

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

Bytes big16(uint32_t word)
{
    return byte(word >> 8) + byte(word & 0xFF);
}

void* RegisterTest::put(const Bytes& record)
{
    size_ = record.size();
    memset(caller_, kGuardByte, sizeof caller_);
    memcpy(caller_ + kGuard, record.data(), size_);
    return this->record();
}

Bytes RegisterTest::get()
{
    for (size_t i = 0; i < sizeof caller_; ++i) {
        if ((i < kGuard || i >= kGuard + size_) && caller_[i] != kGuardByte) {
            ADD_FAILURE() << "written at " << static_cast<long>(i) - static_cast<long>(kGuard)
                          << " of a record of " << size_;
        }
    }
    return {reinterpret_cast<const char*>(caller_) + kGuard, size_};
}

int32_t RegisterTest::run_failing(DeviceCommandCode command, const Bytes& record, size_t n)
{
    put(record);
    board.restart();
    // The first run ends with a close and usleep.
    board.fail_calls({n, n + 2 + n});
    const int32_t result = run(command);
    board.restart();
    return result;
}

void RegisterTest::expect_left(DeviceCommandCode command, const Bytes& record,
                               const Registers& before, size_t n, int32_t result,
                               const Registers& after)
{
    SCOPED_TRACE(testing::Message() << "command " << std::hex << command << " call " << n);
    board.fpga.registers = before;
    EXPECT_EQ(run_failing(command, record, n), result);
    EXPECT_EQ(board.fpga.registers, after);
    EXPECT_EQ(get(), record);
}

void RegisterTest::prove_all(const CommandProofs& proofs)
{
    for (const CommandProof& proof : proofs) {
        const auto prepare = [&] {
            board.fpga.registers = proof.registers;
            return put(proof.record);
        };
        prove(proof.command, prepare, proof.course);

        SCOPED_TRACE(testing::Message() << "command " << std::hex << proof.command);
        expect_course(proof.command, prepare(), proof.course);
        EXPECT_EQ(get(), proof.record_after);
        for (size_t n = 1; n <= proof.course.size(); ++n) {
            if (proof.course[n - 1].failure != kIgnored && n > 1) {
                board.fpga.registers = proof.registers;
                EXPECT_EQ(run_failing(proof.command, proof.record, n), proof.course[n - 1].failure);
                EXPECT_EQ(get(), proof.record);
            }
        }
        board.fpga_present = false;
        prepare();
        EXPECT_EQ(run(proof.command), -1);
        EXPECT_EQ(get(), proof.record);
        EXPECT_EQ(board.fpga.registers, proof.registers);
        board.fpga_present = true;
    }
}

void RegisterTest::write_over_every_value(DeviceCommandCode command, uint32_t address,
                                          const Bytes& record, const RegisterAfter& expected)
{
    SCOPED_TRACE(testing::Message() << "command " << std::hex << command);
    board.fpga.registers.clear();
    uint16_t& held = at(address);
    for_every_word([&](uint16_t word) {
        held = word;
        put(record);
        ASSERT_EQ(run(command), 0);
        ASSERT_EQ(held, expected(word)) << std::hex << word;
        ASSERT_EQ(get(), record);
    });
    EXPECT_EQ(board.fpga.registers.size(), 1U);
}

void RegisterTest::read_every_value(DeviceCommandCode command, uint32_t address,
                                    const Bytes& record, const RecordAfter& expected)
{
    SCOPED_TRACE(testing::Message() << "command " << std::hex << command);
    board.fpga.registers.clear();
    uint16_t& held = at(address);
    for_every_word([&](uint16_t word) {
        held = word;
        put(record);
        ASSERT_EQ(run(command), 0);
        ASSERT_EQ(get(), expected(word)) << std::hex << word;
        ASSERT_EQ(held, word);
    });
    EXPECT_EQ(board.fpga.registers.size(), 1U);
}

void RegisterTest::refuse_all_but(DeviceCommandCode command,
                                  const std::function<Bytes(uint16_t)>& record_with,
                                  const std::function<bool(uint16_t)>& accepted)
{
    SCOPED_TRACE(testing::Message() << "command " << std::hex << command);
    for_every_word([&](uint16_t number) {
        const size_t before = board.call_count();
        put(record_with(number));
        const int32_t result = run(command);
        if (accepted(number)) {
            ASSERT_EQ(result, 0) << number;
            ASSERT_GT(board.call_count(), before);
        } else {
            ASSERT_EQ(result, -5) << number;
            ASSERT_EQ(board.call_count(), before);
            ASSERT_EQ(get(), record_with(number));
        }
    });
}

namespace
{

constexpr DeviceCommandCode kRegisterCommands[] = {
    0x058, 0x059, 0x062, 0x063, 0x092, 0x093, 0x068, 0x06A, 0x06B, 0x06C, 0x06D, 0x06E,
    0x06F, 0x070, 0x071, 0x090, 0x091, 0x072, 0x073, 0x074, 0x075, 0x076, 0x077, 0x078,
    0x079, 0x07A, 0x07B, 0x07C, 0x07E, 0x07F, 0x080, 0x081, 0x082, 0x083, 0x084, 0x085,
    0x086, 0x087, 0x0AA, 0x0AB, 0x088, 0x089, 0x08A, 0x08B, 0x098, 0x099, 0x09A, 0x09B,
    0x0AC, 0x0AD, 0x0A4, 0x0A5, 0x606, 0x607, 0x122, 0x123,
};

TEST(RegisterCommands, AreFiftySixAndEachIsProven)
{
    std::set<DeviceCommandCode> proven;
    size_t files = 0;
    for (const CommandProofs& proofs :
         {field_proofs(), state_proofs(), mode_proofs(), record_proofs(), indexed_proofs()}) {
        std::set<DeviceCommandCode> codes;
        for (const CommandProof& proof : proofs) {
            codes.insert(proof.command);
        }
        files += codes.size();
        proven.merge(codes);
    }
    EXPECT_EQ(proven.size(), 56U);
    EXPECT_EQ(files, 56U);
    EXPECT_EQ(proven, std::set<DeviceCommandCode>(std::begin(kRegisterCommands),
                                                  std::end(kRegisterCommands)));
}

} // namespace
