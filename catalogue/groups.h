// The groups of commands, each in the file of its name.
#pragma once

#include "catalogue/catalogue.h"

extern const CommandGroup kAddressEntryGroup;
extern const CommandGroup kAddressPairGroup;
extern const CommandGroup kAddressTableGroup;
extern const CommandGroup kBandwidthGroup;
extern const CommandGroup kChannelWordGroup;
extern const CommandGroup kCounterGroup;
extern const CommandGroup kDeviceWordGroup;
extern const CommandGroup kDriverGroup;
extern const CommandGroup kFlagSetGroup;
extern const CommandGroup kIdEntryGroup;
extern const CommandGroup kLedGroup;
extern const CommandGroup kModeSwitchGroup;
extern const CommandGroup kMtuGroup;
extern const CommandGroup kPhyGroup;
extern const CommandGroup kPortGroup;
extern const CommandGroup kPrefixGroup;
extern const CommandGroup kRegisterGroup;
extern const CommandGroup kRegisterBlockGroup;
extern const CommandGroup kRegisterFieldGroup;
extern const CommandGroup kRtcGroup;
extern const CommandGroup kRuleGroup;
extern const CommandGroup kStatisticsGroup;
extern const CommandGroup kStatusGroup;
extern const CommandGroup kSwitchTablesGroup;
extern const CommandGroup kUnitGroup;
