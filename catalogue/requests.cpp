#include "catalogue/requests.h"

#include <algorithm>
#include <iterator>

#include "device/access/driver_records.h"
#include "device/access/fpga.h"
#include "device/access/requests.h"
#include "maint/commands/counter.h"
#include "maint/commands/driver.h"
#include "maint/commands/unit.h"

void description_isWrong(); // nowhere defined: such a description does not compile

namespace
{

// Fields of 1, 2 or 4 bytes each, that fill the size.
consteval bool layout_fills(const char* layout, size_t size)
{
    RequestField field{};
    for (const char* rest = layout; (rest = requestField_next(rest, field)) != nullptr;) {
        if ((field.width != 1 && field.width != 2 && field.width != 4) || field.count == 0 ||
            field.name.empty() || field.offset % field.width != 0) {
            return false;
        }
    }
    return field.offset + size_t{field.width} * field.count == size;
}

consteval bool layout_isFilled(const char* layout)
{
    RequestField field{};
    bool filled = false;
    for (const char* rest = layout; (rest = requestField_next(rest, field)) != nullptr;) {
        filled = filled || field.filled;
    }
    return filled;
}

consteval RequestDescription described(RequestNumber request, const char* name, size_t size,
                                       const char* layout, bool reads, bool changes)
{
    if (!layout_fills(layout, size) || layout_isFilled(layout) != reads) {
        description_isWrong();
    }
    return {kRequestBase + static_cast<unsigned>(request),
            name,
            layout,
            static_cast<uint16_t>(size),
            RequestArgument::kRecord,
            changes};
}

consteval RequestDescription reading(RequestNumber request, const char* name, size_t size,
                                     const char* layout)
{
    return described(request, name, size, layout, true, false);
}

// Reading it restarts what is read.
consteval RequestDescription restarting(RequestNumber request, const char* name, size_t size,
                                        const char* layout)
{
    return described(request, name, size, layout, true, true);
}

consteval RequestDescription writing(RequestNumber request, const char* name, size_t size,
                                     const char* layout)
{
    return described(request, name, size, layout, false, true);
}

consteval RequestDescription sending(RequestNumber request, const char* name, size_t size = 2)
{
    RequestDescription description = described(request, name, 0, "", false, true);
    description.size = static_cast<uint16_t>(size);
    description.argument = RequestArgument::kValue;
    return description;
}

consteval RequestDescription bare(RequestNumber request, const char* name)
{
    RequestDescription description = described(request, name, 0, "", false, false);
    description.argument = RequestArgument::kNothing;
    return description;
}

consteval RequestDescription word_reading(RequestNumber request, const char* name)
{
    return reading(request, name, 2, "word<2");
}

consteval RequestDescription word_writing(RequestNumber request, const char* name)
{
    return writing(request, name, 2, "word:2");
}

consteval RequestDescription word_reading(Word word, const char* name)
{
    return word_reading(request_reading(word), name);
}

consteval RequestDescription word_sending(Word word, const char* name)
{
    return sending(request_writing(word), name);
}

consteval RequestDescription map_reading(RequestNumber request, const char* name)
{
    return reading(request, name, 4, "bits<4");
}

// The clock's: as the kernel's interface has them.
consteval RequestDescription clock_request(uint32_t number, RequestDescription description)
{
    description.number = number;
    return description;
}
constexpr RequestNumber kClock{}; // the number is replaced

constexpr RequestDescription kRequests[] = {
    reading(kDeviceInfoRead, "device information read", sizeof(DeviceInfo), "bytes<1*8"),
    word_reading(kStatusWordRead, "status word read"),
    word_reading(kWord03, "word 03 read"),
    word_sending(kWord03, "word 03 write"),
    word_reading(kControlWord, "control word read"),
    word_sending(kControlWord, "control word write"),
    word_reading(kPortFlagsWord, "port flags read"),
    word_sending(kPortFlagsWord, "port flags write"),
    word_reading(kEnableWord, "enable word read"),
    word_sending(kEnableWord, "enable word write"),
    word_reading(kLedRegisterA, "LED register A read"),
    word_sending(kLedRegisterA, "LED register A write"),
    word_reading(kLedRegisterB, "LED register B read"),
    word_sending(kLedRegisterB, "LED register B write"),
    word_reading(kWord21Read, "word 21 read"),
    word_writing(kWord22Write, "word 22 write"),
    reading(kOwnAddressRead, "own address read", 4, "address<1*4"),
    writing(kOwnAddressWrite, "own address write", 4, "address:1*4"),
    word_reading(kWord27Read, "word 27 read"),
    sending(kWord28Write, "word 28 write"),
    reading(kOwnIdRead, "own identifier read", 2, "id<2d"),
    sending(kWord2AWrite, "word 2A write"),
    word_reading(kGroupWord, "group word read"),
    word_sending(kGroupWord, "group word write"),
    word_reading(kWord35, "word 35 read"),
    word_sending(kWord35, "word 35 write"),
    reading(kAddressRead, "address read", 36, "id:4d mode:4d value<4 -:4*4 -:1*8"),
    writing(kAddressWrite, "address write", 36, "id:4d mode:4d value:4 -:4*4 -:1*8"),
    map_reading(kUnitMapERead, "unit bitmap E read"),
    map_reading(kUnitMapDRead, "unit bitmap D read"),
    reading(kUnitWordsRead, "unit words read", 16, "unit:4d first<2 second<2 page:2d -:2 -:1*4"),
    word_reading(kWord40Read, "word 40 read"),
    word_writing(kWord41Write, "word 41 write"),
    reading(kRegisterRead, "register read", sizeof(RegisterAccessRequest), "address:4 value<4"),
    writing(kRegisterWrite, "register write", sizeof(RegisterAccessRequest), "address:4 value:4"),
    word_reading(kWord48, "word 48 read"),
    word_sending(kWord48, "word 48 write"),
    reading(kIdEntryRead, "identifier entry read", 12,
            "id:2d field_a<2 -<2 field_b<2 field_c<2 -<2"),
    writing(kIdEntryWrite, "identifier entry write", 12,
            "id:2d field_a:2 -:2 field_b:2 field_c:2 -:2"),
    reading(kIdValueRead, "identifier value read", 16, "id:4d -:1*6 select:2d value<2 -:2"),
    word_reading(kWord4ERead, "word 4E read"),
    word_reading(kLedRegisterC, "LED register C read"),
    word_sending(kLedRegisterC, "LED register C write"),
    word_reading(kChannelWord, "channel word read"),
    word_sending(kChannelWord, "channel word write"),
    reading(kOwnAddressSetRead, "own address set read", 16, "set<1*16"),
    writing(kOwnAddressSetWrite, "own address set write", 16, "set:1*16"),
    reading(kAddressSetRead, "address set read", 36, "id:4d mode:4d -:4 set<4*4 -:1*8"),
    writing(kAddressSetWrite, "address set write", 36, "id:4d mode:4d -:4 set:4*4 -:1*8"),
    reading(kPortEntryRead, "port entry read", 8, "address:2d flag:2d value<2 -:2"),
    writing(kPortEntryWrite, "port entry write", 8, "address:2d flag:2d value:2 -:2"),
    word_writing(kWord62Write, "word 62 write"),
    writing(kPortEntryWriteRanged, "ranged port entry write", 8, "address:2d flag:2d value:2 -:2"),
    reading(kAddressPairRead, "address pair read", 20,
            "index:4d -:4 address<1*4 address_6<1*6 -<1*2"),
    writing(kAddressPairWrite, "address pair write", 20,
            "index:4d -:4 address:1*4 address_6:1*6 -:1*2"),
    writing(kPairEnableWrite, "pair enable write", 8, "enable:1*2 -:1*2 select:1d -:1*3"),
    reading(kRuleRead, "rule read", 80,
            "index:2d present<2 value<2 -<1*2 address_a<4 prefix_a<1d -<1*3 address_b<4 "
            "prefix_b<1d -<1 word_c<2 word_d<2 byte_e<1 -<1*6 class_bits<1 -<1*2 switches<1*4 "
            "-<1*8 address_6_a<1*6 address_6_b<1*6 -<1*2 companion_c<1 companion_d<1 -<1*2 "
            "address_6_a_present<1d address_6_b_present<1d -<1*8 enabled<1d -<1*3"),
    writing(kRuleWrite, "rule write", 80,
            "index:2d present:2 value:2 -:1*2 address_a:4 prefix_a:1d -:1*3 address_b:4 "
            "prefix_b:1d -:1 word_c:2 word_d:2 byte_e:1 -:1*6 class_bits:1 -:1*2 switches:1*4 "
            "-:1*8 address_6_a:1*6 address_6_b:1*6 -:1*2 companion_c:1 companion_d:1 -:1*2 "
            "address_6_a_present:1d address_6_b_present:1d -:1*8 enabled:1d -:1*3"),
    word_reading(kDriverControlRead, "driver control read"),
    word_writing(kDriverControlWrite, "driver control write"),
    writing(kControlBlockWrite, "control block write", 16, "bytes:1*16"),
    writing(kKeyBytesWrite, "key bytes write", 12, "number:1d bytes:1*4 -:1*7"),
    reading(kSwitchPortRead, "switch port read", sizeof(SwitchPortRequest),
            "port:1d -<1 full_duplex<1d speed100<1d link<1d -<1*3"),
    writing(kSwitchPortWrite, "switch port write", sizeof(SwitchPortRequest),
            "port:1d -:1 full_duplex:1d speed100:1d link:1d -:1*3"),
    sending(kByteAction, "byte action", 1),
    writing(kPairWordsWrite, "pair words write", sizeof(PairWords), "words:4*2"),
    writing(kSwitchTablesWrite2, "switch tables write 2", 260,
            "status:2 normal:1*128 priority:1*128 -:1*2"),
    writing(kSwitchTablesWrite1, "switch tables write 1", 260,
            "status:2 normal:1*128 priority:1*128 -:1*2"),
    sending(kWordAction, "word action"),
    reading(kIndexedWordRead, "indexed word read", 8, "index:4d value<4"),
    writing(kIndexedWordWrite, "indexed word write", 8, "index:4d value:4"),
    reading(kAddressTableRead, "address table read", 24,
            "index:4d -<4 valid<4d address<1*4 address_6<1*6 attribute<1 -<1"),
    writing(kAddressTableWrite, "address table write", 24,
            "index:4d -:4 valid:4d address:1*4 address_6:1*6 attribute:1 -:1"),
    reading(kPhyRead, "PHY read", 8, "address:2d number:2d -:2 value<2"),
    writing(kPhyWrite, "PHY write", 8, "address:2d number:2d value:2 -:2"),
    map_reading(kPortMaskRead, "port mask read"),
    sending(kPortMaskWrite, "port mask write", 4),
    reading(kPort0PhyRead, "port 0 PHY read", 8, "address:2d number:2d -:2 value<2"),
    writing(kPort0PhyWrite, "port 0 PHY write", 8, "address:2d number:2d value:2 -:2"),
    restarting(kCounterRead, "counter read", sizeof(CounterRecord),
               "index:4d value<4d selector:4d"),
    writing(kCounterBlockSmallWrite, "small counter block write", sizeof(CounterBlockSmall),
            "bytes:1*68"),
    writing(kCounterBlockLargeWrite, "large counter block write", sizeof(CounterBlockLarge),
            "bytes:1*160"),
    writing(kCounterWrite, "counter write", sizeof(CounterRecord), "index:4d value:4d selector:4d"),
    restarting(kCounterAltRead, "other counter read", sizeof(CounterRecord),
               "index:4d value<4d selector:4d"),
    writing(kCounterAltWrite, "other counter write", sizeof(CounterRecord),
            "index:4d value:4d selector:4d"),
    bare(kDriverStateRead, "driver state read"),
    word_reading(kExtStatusARead, "extended status A read"),
    word_writing(kExtControlAWrite, "extended control A write"),
    word_reading(kExtStatusBRead, "extended status B read"),
    word_writing(kExtControlBWrite, "extended control B write"),
    clock_request(0x40047014, writing(kClock, "clock status write", 4, "status:4")),
    clock_request(0x4024700A,
                  writing(kClock, "clock time write", 36,
                          "second:4i minute:4i hour:4i day:4i month:4i year:4i weekday:4i "
                          "day_of_year:4i daylight_saving:4i")),
    clock_request(0x80047013, reading(kClock, "clock status read", 4, "status<4")),
    clock_request(0x80247009,
                  reading(kClock, "clock time read", 36,
                          "second<4i minute<4i hour<4i day<4i month<4i year<4i weekday<4i "
                          "day_of_year<4i daylight_saving<4i")),
};

constexpr bool below(const RequestDescription& request, uint32_t number)
{
    return request.number < number;
}
static_assert(std::adjacent_find(std::begin(kRequests), std::end(kRequests),
                                 [](const auto& a, const auto& b) {
                                     return !below(a, b.number);
                                 }) == std::end(kRequests));

} // namespace

const RequestDescription* request_find(uint32_t number)
{
    const auto* request =
        std::lower_bound(std::begin(kRequests), std::end(kRequests), number, below);
    return request == std::end(kRequests) || request->number != number ? nullptr : request;
}

const char* request_device(const RequestDescription& request)
{
    return request.number >> 8 == kRequestBase >> 8 ? "/dev/fpga" : "/dev/rtc";
}
