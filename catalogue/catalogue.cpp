#include "catalogue/catalogue.h"

#include <iterator>

#include "catalogue/groups.h"

namespace
{

// As maint/device_commands.h has them.
constexpr const CommandGroup* kGroups[] = {
    &kUnitGroup,          &kStatusGroup,       &kPortGroup,       &kPhyGroup,
    &kBandwidthGroup,     &kMtuGroup,          &kLedGroup,        &kDeviceWordGroup,
    &kChannelWordGroup,   &kModeSwitchGroup,   &kIdEntryGroup,    &kAddressEntryGroup,
    &kAddressPairGroup,   &kAddressTableGroup, &kPrefixGroup,     &kRuleGroup,
    &kFlagSetGroup,       &kSwitchTablesGroup, &kRegisterGroup,   &kRegisterFieldGroup,
    &kRegisterBlockGroup, &kCounterGroup,      &kStatisticsGroup, &kDriverGroup,
    &kRtcGroup,
};

constexpr const char* kPlaceNames[] = {
    "/dev/fpga",           "/dev/rtc",
    "the system clock",    "/conf/config",
    "/conf/statistics",    "/conf/system.log",
    "/conf/user.log",      "/tmp/Saveing",
    "/tmp/flashsave",      "/tmp/led_rewrite_inh",
    "/tmp/mtu_datasize",   "/tmp/vornapppoe.mtu",
    "/tmp/serialno",       "/tmp/ks8995_nor.dat",
    "/tmp/ks8995_pri.dat",
};
static_assert(std::size(kPlaceNames) == kPlaceCount);

} // namespace

const char* place_name(Place place)
{
    return kPlaceNames[static_cast<unsigned>(place)];
}

const char* unit_name(Unit unit)
{
    return unit == Unit::kBytes ? "bytes" : unit == Unit::kKib ? "KiB" : "";
}

std::span<const CommandGroup* const> catalogue_get()
{
    return kGroups;
}

const CommandDescription* command_find(DeviceCommandCode code)
{
    for (const CommandGroup* group : kGroups) {
        for (const CommandDescription& command : group->commands) {
            if (command.code == code) {
                return &command;
            }
        }
    }
    return nullptr;
}
