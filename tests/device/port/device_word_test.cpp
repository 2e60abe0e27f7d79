// Commands that move one word between the caller and the device.
#include "device/device_test.h"

namespace
{

class DeviceWord : public DeviceTest
{
  protected:
    uint8_t flag = 0;
};

TEST_F(DeviceWord, WritesTheGroupFlagByReadingFirst)
{
    prove(WR_GROUP_FLAG,
          [this] {
              board.fpga.words[0x6B2D] = 0xFE3B;
              flag = 1;
              return &flag;
          },
          {opens_to_write(), word_read(0x6B2D), value_write(0x6B2E, 0xFFFF), closes()});
}

} // namespace
