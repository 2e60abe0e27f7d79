// The requests of the driver behind /dev/fpga: 0x6B00 + n, no size or direction bits. Where the
// use of a word is the driver's own, its name is its number. A request takes the address of a
// record unless its group below says otherwise.
#pragma once

#include <cstdint>

// A request's number; a byte holds what tells them apart.
enum class RequestNumber : uint8_t {};

constexpr unsigned kRequestBase = 0x6B00;

RequestNumber request_isNoneOfTheDrivers(); // nowhere defined: such a number does not compile

consteval RequestNumber request_of(unsigned number)
{
    return number >> 8 == kRequestBase >> 8 ? static_cast<RequestNumber>(number & 0xFF)
                                            : request_isNoneOfTheDrivers();
}

// A word of the device that can be read and written: its read request. The write request is the
// next.
enum class Word : uint8_t {};

consteval Word word_of(unsigned read, unsigned write)
{
    return static_cast<Word>(write == read + 1 ? request_of(read) : request_isNoneOfTheDrivers());
}

constexpr RequestNumber request_reading(Word word)
{
    return static_cast<RequestNumber>(word);
}

constexpr RequestNumber request_writing(Word word)
{
    return static_cast<RequestNumber>(static_cast<unsigned>(word) + 1);
}

// Words: read with the address of a 16-bit word, written with the value itself
constexpr RequestNumber kStatusWordRead = request_of(0x6B02);
constexpr Word kWord03 = word_of(0x6B03, 0x6B04);
constexpr Word kControlWord = word_of(0x6B07, 0x6B08);
constexpr Word kPortFlagsWord = word_of(0x6B09, 0x6B0A);
constexpr Word kEnableWord = word_of(0x6B0B, 0x6B0C);
constexpr Word kLedRegisterA = word_of(0x6B0F, 0x6B10);
constexpr Word kLedRegisterB = word_of(0x6B11, 0x6B12);
constexpr Word kGroupWord = word_of(0x6B2D, 0x6B2E); // also the mode switch
constexpr Word kWord35 = word_of(0x6B35, 0x6B36);
constexpr Word kWord48 = word_of(0x6B48, 0x6B49);
constexpr Word kLedRegisterC = word_of(0x6B4F, 0x6B50); // the line control word
constexpr Word kChannelWord = word_of(0x6B51, 0x6B52);

// Words that pass through the caller's pointer; kWord28Write and kWord2AWrite take the value itself
constexpr RequestNumber kWord21Read = request_of(0x6B21);
constexpr RequestNumber kWord22Write = request_of(0x6B22);
constexpr RequestNumber kWord27Read = request_of(0x6B27);
constexpr RequestNumber kWord28Write = request_of(0x6B28);
constexpr RequestNumber kOwnIdRead = request_of(0x6B29); // read as a word, too
constexpr RequestNumber kWord2AWrite = request_of(0x6B2A);
constexpr RequestNumber kWord40Read = request_of(0x6B40);
constexpr RequestNumber kWord41Write = request_of(0x6B41);
constexpr RequestNumber kWord4ERead = request_of(0x6B4E);

// 32-bit bitmaps; bit n stands for unit, port or identifier n. E: present, D: marked by the
// hardware (a marked unit's panel is shown dark). The port mask also marks units
// (RD_UNIT_STATUS_MAP).
constexpr RequestNumber kUnitMapERead = request_of(0x6B3B);
constexpr RequestNumber kUnitMapDRead = request_of(0x6B3D);
constexpr RequestNumber kPortMaskRead = request_of(0x6B8D);
constexpr RequestNumber kPortMaskWrite = request_of(0x6B8E); // the 32-bit value itself

// Registers: RegisterAccessRequest
constexpr RequestNumber kRegisterRead = request_of(0x6B42);
constexpr RequestNumber kRegisterWrite = request_of(0x6B43);

// PHYs: PhyRegisterRequest; port 0 has requests of its own
constexpr RequestNumber kPhyRead = request_of(0x6B87);
constexpr RequestNumber kPhyWrite = request_of(0x6B88);
constexpr RequestNumber kPort0PhyRead = request_of(0x6B98);
constexpr RequestNumber kPort0PhyWrite = request_of(0x6B99);

// Switch ports, also known as flag sets
constexpr RequestNumber kSwitchPortRead = request_of(0x6B72);
constexpr RequestNumber kSwitchPortWrite = request_of(0x6B73);

// Addresses and identifiers
constexpr RequestNumber kDeviceInfoRead = request_of(0x6B01);
constexpr RequestNumber kOwnAddressRead = request_of(0x6B23);
constexpr RequestNumber kOwnAddressWrite = request_of(0x6B24);
constexpr RequestNumber kAddressRead = request_of(0x6B39);
constexpr RequestNumber kAddressWrite = request_of(0x6B3A);
constexpr RequestNumber kOwnAddressSetRead = request_of(0x6B5C);
constexpr RequestNumber kOwnAddressSetWrite = request_of(0x6B5D);
constexpr RequestNumber kAddressSetRead = request_of(0x6B5E);
constexpr RequestNumber kAddressSetWrite = request_of(0x6B5F);
constexpr RequestNumber kIdEntryRead = request_of(0x6B4A);
constexpr RequestNumber kIdEntryWrite = request_of(0x6B4B);
constexpr RequestNumber kIdValueRead = request_of(0x6B4C);
constexpr RequestNumber kUnitWordsRead =
    request_of(0x6B3E); // LED words or channel word of another unit
constexpr RequestNumber kAddressPairRead = request_of(0x6B67);
constexpr RequestNumber kAddressPairWrite = request_of(0x6B68);
constexpr RequestNumber kAddressTableRead = request_of(0x6B85);
constexpr RequestNumber kAddressTableWrite = request_of(0x6B86);

// Counters, port entries, rules and driver control; kByteAction and kWordAction take the value
// itself, kDriverStateRead nothing
constexpr RequestNumber kPortEntryRead = request_of(0x6B60);
constexpr RequestNumber kPortEntryWrite = request_of(0x6B61);
constexpr RequestNumber kWord62Write = request_of(0x6B62); // WR_STATUS_WORD
constexpr RequestNumber kPortEntryWriteRanged = request_of(0x6B63);
constexpr RequestNumber kPairEnableWrite = request_of(0x6B69);
constexpr RequestNumber kRuleRead = request_of(0x6B6A);
constexpr RequestNumber kRuleWrite = request_of(0x6B6B);
constexpr RequestNumber kDriverControlRead = request_of(0x6B6E);
constexpr RequestNumber kDriverControlWrite = request_of(0x6B6F);
constexpr RequestNumber kControlBlockWrite = request_of(0x6B70);
constexpr RequestNumber kKeyBytesWrite = request_of(0x6B71);
constexpr RequestNumber kByteAction = request_of(0x6B74);
constexpr RequestNumber kPairWordsWrite = request_of(0x6B77);
constexpr RequestNumber kSwitchTablesWrite2 = request_of(0x6B78);
constexpr RequestNumber kSwitchTablesWrite1 = request_of(0x6B79);
constexpr RequestNumber kWordAction = request_of(0x6B7A);
constexpr RequestNumber kIndexedWordRead = request_of(0x6B83);
constexpr RequestNumber kIndexedWordWrite = request_of(0x6B84);
constexpr RequestNumber kCounterRead = request_of(0x6B9A);
constexpr RequestNumber kCounterBlockSmallWrite = request_of(0x6B9B);
constexpr RequestNumber kCounterBlockLargeWrite = request_of(0x6B9C);
constexpr RequestNumber kCounterWrite = request_of(0x6B9F);
constexpr RequestNumber kCounterAltRead = request_of(0x6BA0);
constexpr RequestNumber kCounterAltWrite = request_of(0x6BA1);
constexpr RequestNumber kDriverStateRead = request_of(0x6BA2);
constexpr RequestNumber kExtStatusARead = request_of(0x6BA3);
constexpr RequestNumber kExtControlAWrite = request_of(0x6BA4);
constexpr RequestNumber kExtStatusBRead = request_of(0x6BA5);
constexpr RequestNumber kExtControlBWrite = request_of(0x6BA6);
