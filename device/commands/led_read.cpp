#include "device/commands/led_read.h"

#include <cstddef>

#include "device/access/fpga.h"
#include "device/access/peer_id.h"
#include "device/access/unit_bit.h"
#include "device/access/unit_records.h"
#include "device/commands/led_panel.h"
#include "maint/vpn_id.h"

static_assert(sizeof(UnitStatusFlag) == 8 && offsetof(UnitStatusFlag, unit) == 4);

namespace
{

// What a dark unit keeps of its register B: ledA and ledB.
constexpr uint16_t kDarkRegisterB = kLedALow | kLedAHigh | kLedB.low | kLedB.high;

// What the local panel is read from. The channel word says nothing of the panel, but the panel
// counts as read only with it.
struct Source {
    FpgaRequest request;
    void (*decode)(uint16_t word, LedStateRecord& record);
};
constexpr Source kSources[] = {{kLedRegisterA.read, ledRegA_decode},
                               {kLedRegisterB.read, ledRegB_decode},
                               {kLedRegisterC.read, ledRegC_decode},
                               {kChannelWord.read, nullptr}};

// One page of another unit's LED registers.
int32_t unitWords_read(Fpga fpga, uint32_t unit, uint16_t page, UnitWordsRequest& words)
{
    words = {};
    words.unit = unit;
    words.page = page;
    return record_read(fpga, kUnitWordsRead, &words);
}

} // namespace

int32_t vpnId_match(uint32_t unit)
{
    return fpga_run(FpgaAccess::kRead, [unit](Fpga fpga) -> int32_t {
        IdValueRequest request{};
        request.id = unit;
        request.select = kIdValueSelect;
        uint32_t configured = 0;
        if (record_read(fpga, kIdValueRead, &request) != DEVICE_OK ||
            Get_Conf_VpnId(static_cast<int32_t>(unit), &configured) != 0) {
            return -1;
        }
        return request.value == configured ? 1 : 0;
    });
}

int32_t ledState_readLocal(LedStateRecord* record)
{
    return fpga_run(FpgaAccess::kRead, [record](Fpga fpga) -> int32_t {
        for (const Source& source : kSources) {
            uint16_t word = 0;
            const int32_t status = word_read(fpga, source.request, word);
            if (status != DEVICE_OK) {
                return status;
            }
            if (source.decode != nullptr) {
                source.decode(word, *record);
            }
        }
        return DEVICE_OK;
    });
}

int32_t ledState_readRemote(LedStateRecord* record)
{
    return fpga_run(FpgaAccess::kRead, [record](Fpga fpga) -> int32_t {
        const uint32_t unit = record->targetId;
        uint32_t darkUnits = 0;
        int32_t status = record_read(fpga, kUnitMapDRead, &darkUnits);
        if (status != DEVICE_OK) {
            return status;
        }
        const bool dark = (darkUnits & unit_bit(unit)) != 0 || vpnId_match(unit) == 0;

        UnitWordsRequest words;
        status = unitWords_read(fpga, unit, 0, words);
        if (status != DEVICE_OK) {
            return status;
        }
        ledRegA_decode(dark ? 0 : words.second, *record);
        ledRegB_decode(dark ? words.first & kDarkRegisterB : words.first, *record);

        status = unitWords_read(fpga, unit, 1, words);
        if (status != DEVICE_OK) {
            return status;
        }
        ledRegC_decode(dark ? 0 : words.second, *record);
        return DEVICE_OK;
    });
}

int32_t read_led_state(LedStateRecord* record)
{
    if (!peerId_isValid(record->ownId) || !peerId_isValid(record->targetId)) {
        return DEVICE_BAD_ARGUMENT;
    }
    return record->ownId == record->targetId ? ledState_readLocal(record)
                                             : ledState_readRemote(record);
}

int32_t read_unit_status_map(uint32_t* map)
{
    uint16_t ownId = 0;
    uint32_t present = 0;
    const int32_t status = fpga_run(FpgaAccess::kRead, [&, map](Fpga fpga) {
        int32_t result = record_read(fpga, kPortMaskRead, map);
        if (result == DEVICE_OK) {
            result = word_read(fpga, kOwnIdRead, ownId);
        }
        return result == DEVICE_OK ? record_read(fpga, kUnitMapERead, &present) : result;
    });
    if (status != DEVICE_OK) {
        return status;
    }
    uint32_t mismatched = 0;
    for (uint32_t unit = kPeerIdMin; unit <= kPeerIdMax; ++unit) {
        const uint32_t bit = unit_bit(unit);
        if (unit != ownId && (present & bit) != 0 && (*map & bit) == 0 && vpnId_match(unit) == 0) {
            mismatched |= bit;
        }
    }
    *map = (*map & ~unit_bit(ownId) & present) | mismatched;
    return DEVICE_OK;
}

int32_t read_unit_status_flag(UnitStatusFlag* record)
{
    uint32_t map = 0;
    const int32_t status = command_readRecord(kUnitMapDRead, &map);
    if (status != DEVICE_OK) {
        return status;
    }
    const bool set = (map & unit_bit(record->unit)) != 0;
    // A match that cannot be asked leaves the bit as it is.
    record->status = vpnId_match(record->unit) == 0 || set ? 1 : 0;
    return DEVICE_OK;
}
