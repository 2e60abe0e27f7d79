#include "tools/sane_unit.h"

#include "board/board_test.h"

namespace
{

constexpr unsigned kVpnId = 12; // of all units here
constexpr unsigned kPeers = 30;
constexpr unsigned kPresent = 3;                            // units 1 to 3
constexpr uint16_t kPhyAddresses[] = {9, 1, 2, 3, 4, 5, 8}; // by port

void phys_put(FpgaModel& fpga)
{
    for (const uint16_t address : kPhyAddresses) { // 100 Mb/s, full duplex, negotiated
        auto& registers = fpga.phys[address];
        registers = {};
        registers[0] = 0x3100;
        registers[1] = 0x782D;
        registers[4] = 0x01E1;
        registers[5] = 0x45E1;
    }
}

void peer_put(FpgaModel& fpga, uint16_t unit)
{
    fpga.id_values[unit] = kVpnId;
    fpga.id_entries[unit] = Bytes(12, '\0');
    if (unit > kPresent) {
        return;
    }
    const Bytes address = hex("01 00 a8 c0"); // 192.168.n.1, as a number
    fpga.addresses[unit] = address;
    fpga.addresses[unit][1] = static_cast<char>(unit);
    fpga.address_sets[unit] = fpga.addresses[unit] + Bytes(12, '\0');
    fpga.unit_words[{unit, 0}] = {0x1507, 0x7777};               // its panel's registers B and A
    fpga.unit_words[{unit, 1}] = {0x0000, 0x0150};               // channel word, register C
    fpga.port_entries[static_cast<uint16_t>(8 * unit)] = 0x1000; // which stands for the code 1
}

Bytes config_text()
{
    const Bytes id = "='" + std::to_string(kVpnId) + "'\n";
    Bytes text = "OWN_VPN_ID" + id +
                 "WAN_TYPE='5'\n"
                 "SELECT_MTU='PPPOE_MTU'\n"
                 "PPPOE_MTU='1454'\n"
                 "IPSEC_ENABLE='0'\n";
    for (unsigned unit = 1; unit <= kPeers; ++unit) {
        text += (unit < 10 ? "PPPOEOFF_VPN_ID0" : "PPPOEOFF_VPN_ID") + std::to_string(unit) + id;
    }
    return text;
}

} // namespace

void saneUnit_putDevices(Board& board)
{
    FpgaModel& fpga = board.fpga;
    fpga.device_info = hex("00 01 02 03 a1 20 00 00"); // tells 01 00 03 02 and "20a1"
    fpga.own_address = hex("01 01 a8 c0");
    fpga.own_address_set = fpga.own_address + Bytes(12, '\0');
    fpga.words = {
        {0x6B02, 0x00F0},     // status: inputs, which are active low
        {0x6B09, 0x10F0},     // port flags
        {0x6B0F, 0x7777},     // panel: groups 3 to 6 lit
        {0x6B11, 0x1507},     // panel: A, B, C and group 7 lit, no alert
        {0x6B29, 0x0001},     // own identifier
        {0x6B2D, 0x0003},     // the mode switch is off
        {0x6B3B, 0x0000000E}, // present: units 1, 2, 3
        {0x6B3D, 0x00000000}, // marked: none
        {0x6B48, 0x0002},     // one of its three values
        {0x6B4F, 0x0150},     // panel: D and E lit, line mode 1
    };
    fpga.registers = {
        {0x0012, 0x0040}, // bandwidth: no limit below 100 Mb/s
        {0x0054, 0x057C}, // MTU limit 1404
        {0x0056, 0x057C}, {0x0158, 0x0020}, {0x0168, 0x1000}, {0x0180, 0x0001}, // identity
        {0x0182, 0x0100}, {0x0184, 0x20A1}, {0x0186, 0x0000}, {0x0188, 0x0000},
        {0x018A, 0x0000}, {0x018C, 0x0001},
    };
    for (const char port : {'\1', '\2', '\4'}) {
        FpgaModel::Record& held = fpga.switch_ports[static_cast<uint8_t>(port)];
        held = hex("00 00 01 01 01 00 00 00");
        held[0] = port;
    }
    phys_put(fpga);
    for (uint16_t unit = 1; unit <= kPeers; ++unit) {
        peer_put(fpga, unit);
    }
    board.rtc.time = {7, 5, 9, 1, 2, 106, 3, 59, 0}; // as board.now
}

void saneUnit_putFiles(const Board& board)
{
    Bytes sizes;
    for (const unsigned size : {1454U, 1428U, 1446U}) { // less 26, less 8
        sizes += le16(size) + le16(size) + le16(size);
    }
    board.file_put("/conf/config", config_text());
    board.file_put("/conf/statistics", Bytes(496, '\0'));
    board.file_put("/conf/user.log", "");
    board.file_put("/conf/system.log", Bytes("\0\0\0\0\0\0\0\0\1\0\0\0", 12));
    board.file_put("/tmp/serialno", "A00000001");
    board.file_put("/tmp/mtu_datasize", sizes + le16(0));
    board.file_put("/tmp/vornapppoe.mtu", "VORNAMRU=1454\n");
    board.file_put("/tmp/ks8995_nor.dat", Bytes(128, '\0'));
    board.file_put("/tmp/ks8995_pri.dat", Bytes(128, '\0'));
}
