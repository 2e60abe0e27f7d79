#include "sim/new_unit.h"

#include <string>

#include "sim/state_text.h"

namespace
{

constexpr unsigned kNewUnitVpnId = 12; // of all units here
constexpr unsigned kPeers = 30;
constexpr unsigned kPresent = 3; // units 1 to 3
constexpr unsigned kPhys = 7;

// What is not in a table.
constexpr const char* kItems[] = {
    "device_info=00010203a1200000", // tells 01 00 03 02 and "20a1"
    "own_address=0101a8c0",         // 192.168.1.1, as a number
    "own_address_set=0101a8c0000000000000000000000000",
    "word.0x6B02=0x00F0",     // status: inputs, which are active low
    "word.0x6B09=0x10F0",     // port flags
    "word.0x6B0F=0x7777",     // panel: groups 3 to 6 lit
    "word.0x6B11=0x1507",     // panel: ledA, ledB, ledC and group 7 lit, no alert
    "word.0x6B29=0x0001",     // own identifier
    "word.0x6B2D=0x0003",     // the mode switch is off
    "word.0x6B3B=0x0000000E", // present: units 1, 2, 3
    "word.0x6B3D=0x00000000", // marked: none
    "word.0x6B48=0x0002",     // one of its three values
    "word.0x6B4F=0x0150",     // panel: ledD and ledE lit, line mode 1
    "register.0x0012=0x0040", // bandwidth: no limit below 100 Mb/s
    "register.0x0054=0x057C", // MTU limit 1404
    "register.0x0056=0x057C",
    "register.0x0158=0x0020",
    "register.0x0168=0x1000",
    "register.0x0180=0x0001", // identity
    "register.0x0182=0x0100",
    "register.0x0184=0x20A1",
    "register.0x0186=0x0000",
    "register.0x0188=0x0000",
    "register.0x018A=0x0000",
    "register.0x018C=0x0001",
    "switch_port.1=0100010101000000",
    "switch_port.2=0200010101000000",
    "switch_port.4=0400010101000000",
    "rtc.status=0x00000000",
};

constexpr char kConfig[] = "WAN_TYPE='5'\n"
                           "SELECT_MTU='PPPOE_MTU'\n"
                           "PPPOE_MTU='1454'\n"
                           "IPSEC_ENABLE='0'\n";

// A PHY that has negotiated 100 Mb/s, full duplex.
struct Mii {
    unsigned number;
    unsigned value;
};
constexpr Mii kLinked[] = {{0, 0x3100}, {1, 0x782D}, {4, 0x01E1}, {5, 0x45E1}};

void put(UnitState& state, const std::string& item)
{
    std::string fault;
    stateText_put(state, item, 0, fault); // the tests see that it is taken
}

std::string key(const char* kind, unsigned number)
{
    return kind + ("." + std::to_string(number));
}

void peer_put(UnitState& state, unsigned unit)
{
    put(state, key("id_value", unit) + "=" + std::to_string(kNewUnitVpnId));
    put(state, key("id_entry", unit) + "=000000000000000000000000");
    if (unit > kPresent) {
        return;
    }
    const std::string digits = std::to_string(unit); // below 10
    const std::string address = "010" + digits + "a8c0";
    put(state, key("address", unit) + "=" + address);
    put(state, key("address_set", unit) + "=" + address + "000000000000000000000000");
    put(state, key("unit_words", unit) + ".0=0x1507,0x7777"); // its panel's registers B and A
    put(state, key("unit_words", unit) + ".1=0x0000,0x0150"); // channel word, register C
    put(state, key("port_entry", 8 * unit) + "=0x1000");      // which stands for the code 1
}

std::string config_text()
{
    const std::string id = "='" + std::to_string(kNewUnitVpnId) + "'\n";
    std::string text = "OWN_VPN_ID" + id + kConfig;
    for (unsigned unit = 1; unit <= kPeers; ++unit) {
        text += (unit < 10 ? "PPPOEOFF_VPN_ID0" : "PPPOEOFF_VPN_ID") + std::to_string(unit) + id;
    }
    return text;
}

// Six words of 16 bits and the caller's own: sizes of 1454, less 26, less 8.
std::string dataSizes_bytes()
{
    std::string bytes;
    for (const unsigned size : {1454U, 1428U, 1446U}) {
        for (int i = 0; i < 3; ++i) {
            bytes += static_cast<char>(size & 0xFFU);
            bytes += static_cast<char>(size >> 8);
        }
    }
    return bytes + std::string(2, '\0');
}

} // namespace

void newUnit_put(UnitState& state, const RtcTime& time, int64_t now)
{
    state = UnitState();
    for (const char* item : kItems) {
        put(state, item);
    }
    for (unsigned unit = 1; unit <= kPeers; ++unit) {
        peer_put(state, unit);
        for (const unsigned selector : {32U, 33U}) {
            for (const unsigned stream : {0U, 64U}) {
                put(state, key("counter", unit + stream) + "." + std::to_string(selector) + "=0");
            }
        }
    }
    for (unsigned port = 0; port < kPhys; ++port) {
        for (const auto& [number, value] : kLinked) {
            put(state,
                key("phy", port) + "." + std::to_string(number) + "=" + std::to_string(value));
        }
    }
    state.rtc.time = time;
    state.rtc_since = now;
    state.rtc_runs = true;
}

std::vector<UnitFile> newUnit_files()
{
    return {
        {"/conf/config", config_text()},
        {"/conf/statistics", std::string(496, '\0')},
        {"/conf/user.log", std::string(16, '\0')}, // a header: no record yet
        {"/tmp/serialno", "A00000001"},
        {"/tmp/mtu_datasize", dataSizes_bytes()},
        {"/tmp/vornapppoe.mtu", "VORNAMRU=1454\n"},
        {"/tmp/ks8995_nor.dat", std::string(128, '\0')},
        {"/tmp/ks8995_pri.dat", std::string(128, '\0')},
    };
}
