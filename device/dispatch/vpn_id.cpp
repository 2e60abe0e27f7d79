// The VPN identity. Which key holds it is a flag of the device, which is asked as any program asks
// it: by a command through the dispatcher. So this lies above the commands, although three of them
// ask for identities. That is no endless loop: the command asked here does not.
#include "maint/vpn_id.h"

#include <cstdio>

#include "config/config_value.h"
#include "device/access/driver_records.h"
#include "maint/fpga.h"
#include "maint/system_log.h"

namespace
{

constexpr uint16_t kMapEnabled = 1;

// A key's name, with an index of up to ten digits and a sign.
constexpr int kKeySize = 32;

// The results for one of the two keys.
struct KeyResults {
    int32_t missing;
    int32_t empty;
};
constexpr KeyResults kIndexedResults{-2, -3};
constexpr KeyResults kOwnResults{-4, -5};

int32_t identity_read(const char* key, KeyResults results, uint32_t* id)
{
    ConfigValue value;
    if (!configValue_find(key, value)) {
        return results.missing;
    }
    if (value[0] == '\0') {
        return results.empty;
    }
    *id = static_cast<uint32_t>(number_parse(value));
    return 0;
}

} // namespace

int32_t Get_Conf_VpnId(int32_t index, uint32_t* id)
{
    WorkRecord<uint16_t> answer{};
    if (Fpga_Register_Set(RD_VLANT_MAP_ENABLE, answer.data()) != DEVICE_OK) {
        // For the log alone.
        systemLog_put("Get_Conf_VpnId 000 : Fpga_Register_Set(RD_VLANT_MAP_ENABLE) didn't read");
        return -1;
    }
    if (answer[0] != kMapEnabled) {
        return identity_read("OWN_VPN_ID", kOwnResults, id);
    }
    char key[kKeySize];
    snprintf(key, sizeof key, "PPPOEOFF_VPN_ID%02d", index);
    return identity_read(key, kIndexedResults, id);
}
