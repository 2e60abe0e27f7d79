// The tests of the proof that the command tests rest on.
#include "board/fpga_self_fixture.h"

namespace
{

// The group flag's setter is the subject: open, word read, value written, close.
class ProofSelf : public FpgaSelf
{
  protected:
    int failures(const Course& course, int32_t result = 0)
    {
        const int count = failures_of([&] {
            prove(
                WR_GROUP_FLAG,
                [this] {
                    board.fpga.words[0x6B2D] = 0xFE3B;
                    return put(byte(1));
                },
                course, result);
        });
        close_left_open(board.open_descriptors()); // whatever a wrong proof has left
        return count;
    }

    static Course right()
    {
        return {opens_to_write(), word_read(0x6B2D), value_write(0x6B2E, 0xFFFF), closes()};
    }

    // The right course but for one step.
    static Course changed(size_t step, const Step& other)
    {
        Course course = right();
        course[step] = other;
        return course;
    }
};

TEST_F(ProofSelf, FindsNothingWrongInTheRightCourse)
{
    EXPECT_EQ(failures(right()), 0);
}

TEST_F(ProofSelf, NoticesAWrongCourse)
{
    EXPECT_GT(failures(changed(0, opens_to_read())), 0);
    EXPECT_GT(failures(changed(1, word_read(0x6B03))), 0);
    EXPECT_GT(failures(changed(1, map_read(0x6B2D))), 0);
    EXPECT_GT(failures(changed(2, value_write(0x6B2E, 0xFFFE))), 0);
    EXPECT_GT(failures(changed(2, value_write(0x6B04, 0xFFFF))), 0);
    EXPECT_GT(failures({opens_to_write(), word_read(0x6B2D), closes()}), 0);
    EXPECT_GT(failures({opens_to_write(), word_read(0x6B2D), value_write(0x6B2E, 0xFFFF)}), 0);
    EXPECT_GT(failures(right() + Course{opens_to_write(), closes()}), 0);
}

TEST_F(ProofSelf, NoticesAWrongResult)
{
    EXPECT_GT(failures(right(), 1), 0);
}

TEST_F(ProofSelf, NoticesAWrongFailureCode)
{
    EXPECT_GT(failures(changed(0, opens_to_write(-2))), 0);
    EXPECT_GT(failures(changed(1, word_read(0x6B2D, -4))), 0);
    EXPECT_GT(failures(changed(2, value_write(0x6B2E, 0xFFFF, -2))), 0);
    EXPECT_GT(failures(changed(2, value_write(0x6B2E, 0xFFFF, -5))), 0);
}

TEST_F(ProofSelf, NoticesAFailureThatIsNotIgnored)
{
    EXPECT_GT(failures(changed(1, word_read(0x6B2D, kIgnored))), 0);
    EXPECT_GT(failures(changed(3, {"close /dev/fpga", -4})), 0);
}

TEST_F(ProofSelf, NoticesADescriptorThatStaysOpen)
{
    const Course course{opens_to_read(), word_read(0x6B21), closes()};
    // Only its failures leave the device open.
    EXPECT_EQ(failures_of([&] { expect_course(RD_DEVICE_WORD_21, put(le16(0)), course); }), 0);
    EXPECT_GT(failures_of([&] { prove(RD_DEVICE_WORD_21, with(le16(0)), course); }), 0);
    close_left_open(2); // one for each of two runs whose read failed
}

// The descriptor alone, with a trace that is right.
TEST_F(ProofSelf, NoticesADescriptorBehindARightTrace)
{
    const int left = board_open(kFpga, O_RDONLY | O_NONBLOCK);
    const Course course{opens_to_read(), word_read(0x6B2D), closes()};
    EXPECT_EQ(failures_of([&] { expect_course(RD_GROUP_FLAG, put(byte(0)), course); }), 1);
    board_close(left);
}

TEST_F(ProofSelf, NoticesACommandThatIsNotRefused)
{
    EXPECT_GT(failures_of([&] { expect_refused(WR_DEVICE_WORD_49, le16(2)); }), 0);
    EXPECT_EQ(failures_of([&] { expect_refused(WR_DEVICE_WORD_49, le16(3)); }), 0);
}

// RD_DEVICE_WORD_40 is never repeated: neither is its course in the proof.
TEST_F(ProofSelf, ExpectsNoSecondRunOfTheWordThatIsHandedOn)
{
    const Course right{opens_to_read(), word_read(0x6B40, -1), closes()};
    const Course wrong{opens_to_read(), word_read(0x6B40, -2), closes()};
    EXPECT_EQ(failures_of([&] { prove(RD_DEVICE_WORD_40, with(le16(0)), right); }), 0);
    EXPECT_GT(failures_of([&] { prove(RD_DEVICE_WORD_40, with(le16(0)), wrong); }), 0);
}

} // namespace
