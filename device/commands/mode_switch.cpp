#include "device/commands/mode_switch.h"

#include "device/access/fpga.h"
#include "device/access/shared_words.h"

namespace
{

// The three places of the mode. Its bits of the word are clear while it is on, those of the
// registers set.
struct ModePlaces {
    uint16_t word;
    RegisterAccessRequest reg114;
    RegisterAccessRequest reg158;
};

ModePlaces modePlaces_read(Fpga& fpga)
{
    ModePlaces places{0, {kRegister114, 0}, {kRegister158, 0}};
    places.word = word_read(fpga, kGroupWord);
    record_read(fpga, kRegisterRead, &places.reg114);
    record_read(fpga, kRegisterRead, &places.reg158);
    return places;
}

} // namespace

int32_t read_mode_switch(uint16_t* mode)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    const ModePlaces places = modePlaces_read(fpga);
    if (fpga_good(fpga)) {
        *mode = (places.word & kGroupMode) == 0 && (~places.reg114.value & kMode114) == 0 &&
                        (~places.reg158.value & kMode158) == 0
                    ? 1
                    : 0;
    }
    return fpga_close(fpga);
}

int32_t write_mode_switch(const uint16_t* mode)
{
    const bool on = *mode == 1;
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    ModePlaces places = modePlaces_read(fpga);
    if (on) {
        places.word &= static_cast<uint16_t>(~kGroupMode);
        places.reg114.value |= kMode114;
        places.reg158.value |= kMode158;
    } else {
        places.word |= kGroupMode;
        places.reg114.value &= ~uint32_t{kMode114};
        places.reg158.value &= ~uint32_t{kMode158};
    }
    word_write(fpga, kGroupWord, places.word);
    record_write(fpga, kRegisterWrite, &places.reg114);
    record_write(fpga, kRegisterWrite, &places.reg158);
    return fpga_close(fpga);
}
