// The requests of the driver behind /dev/fpga: 0x6B00 + n, no size or direction bits. Where the
// use of a word is the driver's own, its name is its number. A request takes the address of a
// record unless its group below says otherwise.
#pragma once

#include <cstdint>

using FpgaRequest = uint32_t;

// A word with a read and a write request.
struct FpgaWord {
    FpgaRequest read;
    FpgaRequest write;
};

// Words: read with the address of a 16-bit word, written with the value itself
constexpr FpgaRequest kStatusWordRead = 0x6B02;
constexpr FpgaWord kWord03{0x6B03, 0x6B04};
constexpr FpgaWord kControlWord{0x6B07, 0x6B08};
constexpr FpgaWord kPortFlagsWord{0x6B09, 0x6B0A};
constexpr FpgaWord kEnableWord{0x6B0B, 0x6B0C};
constexpr FpgaWord kLedRegisterA{0x6B0F, 0x6B10};
constexpr FpgaWord kLedRegisterB{0x6B11, 0x6B12};
constexpr FpgaWord kGroupFlagWord{0x6B2D, 0x6B2E}; // also the mode switch
constexpr FpgaWord kWord35{0x6B35, 0x6B36};
constexpr FpgaWord kWord48{0x6B48, 0x6B49};
constexpr FpgaWord kLedRegisterC{0x6B4F, 0x6B50}; // the line control word
constexpr FpgaWord kChannelWord{0x6B51, 0x6B52};

// Words that pass through the caller's pointer; kWord28Write and kWord2AWrite take the value itself
constexpr FpgaRequest kWord21Read = 0x6B21;
constexpr FpgaRequest kWord22Write = 0x6B22;
constexpr FpgaRequest kWord27Read = 0x6B27;
constexpr FpgaRequest kWord28Write = 0x6B28;
constexpr FpgaRequest kOwnIdRead = 0x6B29;
constexpr FpgaRequest kWord2AWrite = 0x6B2A;
constexpr FpgaRequest kWord40Read = 0x6B40;
constexpr FpgaRequest kWord41Write = 0x6B41;
constexpr FpgaRequest kWord4ERead = 0x6B4E;

// 32-bit bitmaps; bit n stands for unit, port or identifier n
constexpr FpgaRequest kUnitMapERead = 0x6B3B;
constexpr FpgaRequest kUnitMapDRead = 0x6B3D;
constexpr FpgaRequest kPortMaskRead = 0x6B8D;
constexpr FpgaRequest kPortMaskWrite = 0x6B8E; // the 32-bit value itself

// Registers: RegisterAccessRequest
constexpr FpgaRequest kRegisterRead = 0x6B42;
constexpr FpgaRequest kRegisterWrite = 0x6B43;

// PHYs: PhyRegisterRequest; port 0 has requests of its own
constexpr FpgaRequest kPhyRead = 0x6B87;
constexpr FpgaRequest kPhyWrite = 0x6B88;
constexpr FpgaRequest kPort0PhyRead = 0x6B98;
constexpr FpgaRequest kPort0PhyWrite = 0x6B99;

// Switch ports, also known as flag sets
constexpr FpgaRequest kSwitchPortRead = 0x6B72;
constexpr FpgaRequest kSwitchPortWrite = 0x6B73;

// Addresses and identifiers
constexpr FpgaRequest kDeviceInfoRead = 0x6B01;
constexpr FpgaRequest kOwnAddressRead = 0x6B23;
constexpr FpgaRequest kOwnAddressWrite = 0x6B24;
constexpr FpgaRequest kAddressRead = 0x6B39;
constexpr FpgaRequest kAddressWrite = 0x6B3A;
constexpr FpgaRequest kOwnAddressSetRead = 0x6B5C;
constexpr FpgaRequest kOwnAddressSetWrite = 0x6B5D;
constexpr FpgaRequest kAddressSetRead = 0x6B5E;
constexpr FpgaRequest kAddressSetWrite = 0x6B5F;
constexpr FpgaRequest kIdEntryRead = 0x6B4A;
constexpr FpgaRequest kIdEntryWrite = 0x6B4B;
constexpr FpgaRequest kIdValueRead = 0x6B4C;
constexpr FpgaRequest kUnitWordsRead = 0x6B3E; // LED words or channel word of another unit
constexpr FpgaRequest kAddressPairRead = 0x6B67;
constexpr FpgaRequest kAddressPairWrite = 0x6B68;
constexpr FpgaRequest kAddressTableRead = 0x6B85;
constexpr FpgaRequest kAddressTableWrite = 0x6B86;

// Counters, port entries, rules and driver control; kByteAction and kWordAction take the value
// itself, kDriverStateRead nothing
constexpr FpgaRequest kPortEntryRead = 0x6B60;
constexpr FpgaRequest kPortEntryWrite = 0x6B61;
constexpr FpgaRequest kStatusWordWrite = 0x6B62;
constexpr FpgaRequest kPortEntryWriteRanged = 0x6B63;
constexpr FpgaRequest kPairEnableWrite = 0x6B69;
constexpr FpgaRequest kRuleRead = 0x6B6A;
constexpr FpgaRequest kRuleWrite = 0x6B6B;
constexpr FpgaRequest kDriverControlRead = 0x6B6E;
constexpr FpgaRequest kDriverControlWrite = 0x6B6F;
constexpr FpgaRequest kControlBlockWrite = 0x6B70;
constexpr FpgaRequest kKeyBytesWrite = 0x6B71;
constexpr FpgaRequest kByteAction = 0x6B74;
constexpr FpgaRequest kPairWordsWrite = 0x6B77;
constexpr FpgaRequest kSwitchTablesWrite2 = 0x6B78;
constexpr FpgaRequest kSwitchTablesWrite1 = 0x6B79;
constexpr FpgaRequest kWordAction = 0x6B7A;
constexpr FpgaRequest kIndexedWordRead = 0x6B83;
constexpr FpgaRequest kIndexedWordWrite = 0x6B84;
constexpr FpgaRequest kCounterRead = 0x6B9A;
constexpr FpgaRequest kCounterBlockSmallWrite = 0x6B9B;
constexpr FpgaRequest kCounterBlockLargeWrite = 0x6B9C;
constexpr FpgaRequest kCounterWrite = 0x6B9F;
constexpr FpgaRequest kCounterAltRead = 0x6BA0;
constexpr FpgaRequest kCounterAltWrite = 0x6BA1;
constexpr FpgaRequest kDriverStateRead = 0x6BA2;
constexpr FpgaRequest kExtStatusARead = 0x6BA3;
constexpr FpgaRequest kExtControlAWrite = 0x6BA4;
constexpr FpgaRequest kExtStatusBRead = 0x6BA5;
constexpr FpgaRequest kExtControlBWrite = 0x6BA6;
