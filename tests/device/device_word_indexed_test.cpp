// Indexed words.
#include "device/command_test.h"

namespace
{

class IndexedWords : public CommandTest
{
};

TEST_F(IndexedWords, ReadsTheLowHalfOfAnIndexedNumber)
{
    board.fpga.indexed_words[0x1234] = 0x9ABC5678;
    prove_record(RD_INDEXED_WORD, hex("34 12 CD AB"),
                 {opens_to_write(), record_read(0x6B83, hex("34 12 00 00 00 00 00 00")), closes()},
                 hex("34 12 78 56"));
    expect_kept(RD_INDEXED_WORD, hex("34 12 CD AB"));
}

TEST_F(IndexedWords, WritesAnIndexedWord)
{
    prove_record(WR_INDEXED_WORD, hex("34 12 CD AB"),
                 {opens_to_write(), record_write(0x6B84, hex("34 12 00 00 CD AB 00 00")), closes()},
                 hex("34 12 CD AB"));
    EXPECT_EQ(board.fpga.indexed_words[0x1234], 0xABCDU);
}

TEST_F(IndexedWords, EveryIndexHasItsOwnWord)
{
    for_every_word([&](uint16_t index) {
        const Bytes written = le16(index) + le16(index ^ 0xA5A5U);
        ASSERT_EQ(record_after(WR_INDEXED_WORD, written), written);
    });
    for_every_word([&](uint16_t index) {
        ASSERT_EQ(record_after(RD_INDEXED_WORD, le16(index) + le16(0)),
                  le16(index) + le16(index ^ 0xA5A5U));
    });
}

} // namespace
