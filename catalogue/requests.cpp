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

// Whether the part begins and ends where fields do.
consteval bool layout_hasPart(const char* layout, size_t from, size_t count)
{
    RequestField field{};
    bool begins = count == 0;
    bool ends = count == 0;
    for (const char* rest = layout; (rest = requestField_next(rest, field)) != nullptr;) {
        begins = begins || field.offset == from;
        ends = ends || field.offset + size_t{field.width} * field.count == from + count;
    }
    return begins && ends;
}

consteval RequestDescription described(RequestNumber request, const char* name, size_t size,
                                       const char* layout, RequestVerb verb, bool changes,
                                       size_t fills = 0, size_t fills_count = 0)
{
    if (!layout_fills(layout, size) || !layout_hasPart(layout, fills, fills_count) ||
        fills > UINT8_MAX || fills_count > UINT8_MAX) {
        description_isWrong();
    }
    return {kRequestBase + static_cast<unsigned>(request),
            name,
            layout,
            static_cast<uint16_t>(size),
            static_cast<uint8_t>(fills),
            static_cast<uint8_t>(fills_count),
            RequestArgument::kRecord,
            verb,
            changes};
}

// The driver fills a part of the record.
consteval RequestDescription reading(RequestNumber request, const char* name, size_t size,
                                     const char* layout, size_t fills, size_t fills_count)
{
    return described(request, name, size, layout, RequestVerb::kRead, false, fills, fills_count);
}

// Reading it restarts what is read.
consteval RequestDescription restarting(RequestNumber request, const char* name, size_t size,
                                        const char* layout, size_t fills, size_t fills_count)
{
    return described(request, name, size, layout, RequestVerb::kRead, true, fills, fills_count);
}

consteval RequestDescription writing(RequestNumber request, const char* name, size_t size,
                                     const char* layout, RequestVerb verb = RequestVerb::kWrite)
{
    return described(request, name, size, layout, verb, true);
}

consteval RequestDescription sending(RequestNumber request, const char* name, size_t size = 2,
                                     RequestVerb verb = RequestVerb::kWrite)
{
    RequestDescription description = described(request, name, 0, "", verb, true);
    description.size = static_cast<uint16_t>(size);
    description.argument = RequestArgument::kValue;
    return description;
}

// What its name says.
consteval RequestDescription acting(RequestNumber request, const char* name, size_t size)
{
    return sending(request, name, size, RequestVerb::kNone);
}

consteval RequestDescription bare(RequestNumber request, const char* name)
{
    RequestDescription description = described(request, name, 0, "", RequestVerb::kRead, false);
    description.argument = RequestArgument::kNothing;
    return description;
}

consteval RequestDescription word_reading(RequestNumber request, const char* name)
{
    return reading(request, name, 2, "word:2", 0, 2);
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
    return reading(request, name, 4, "bits:4", 0, 4);
}

// The clock's: as the kernel's interface has them.
consteval RequestDescription clock_request(uint32_t number, RequestDescription description)
{
    description.number = number;
    return description;
}
constexpr RequestNumber kClock{}; // the number is replaced

constexpr RequestDescription kRequests[] = {
    reading(kDeviceInfoRead, "device information", sizeof(DeviceInfo), "bytes:1*8", 0, 8),
    word_reading(kStatusWordRead, "status word"),
    word_reading(kWord03, "word 03"),
    word_sending(kWord03, "word 03"),
    word_reading(kControlWord, "control word"),
    word_sending(kControlWord, "control word"),
    word_reading(kPortFlagsWord, "port flags"),
    word_sending(kPortFlagsWord, "port flags"),
    word_reading(kEnableWord, "enable word"),
    word_sending(kEnableWord, "enable word"),
    word_reading(kLedRegisterA, "LED register A"),
    word_sending(kLedRegisterA, "LED register A"),
    word_reading(kLedRegisterB, "LED register B"),
    word_sending(kLedRegisterB, "LED register B"),
    word_reading(kWord21Read, "word 21"),
    word_writing(kWord22Write, "word 22"),
    reading(kOwnAddressRead, "own address", 4, "address:1*4", 0, 4),
    writing(kOwnAddressWrite, "own address", 4, "address:1*4"),
    word_reading(kWord27Read, "word 27"),
    sending(kWord28Write, "word 28"),
    reading(kOwnIdRead, "own identifier", 2, "id:2d", 0, 2),
    sending(kWord2AWrite, "word 2A"),
    word_reading(kGroupWord, "group word"),
    word_sending(kGroupWord, "group word"),
    word_reading(kWord35, "word 35"),
    word_sending(kWord35, "word 35"),
    reading(kAddressRead, "address", 36, "id:4d mode:4d value:4 -:4*4 -:1*8", 8, 4),
    writing(kAddressWrite, "address", 36, "id:4d mode:4d value:4 -:4*4 -:1*8"),
    map_reading(kUnitMapERead, "unit bitmap E"),
    map_reading(kUnitMapDRead, "unit bitmap D"),
    reading(kUnitWordsRead, "unit words", 16, "unit:4d first:2 second:2 page:2d -:2 -:1*4", 4, 4),
    word_reading(kWord40Read, "word 40"),
    word_writing(kWord41Write, "word 41"),
    reading(kRegisterRead, "register", sizeof(RegisterAccessRequest), "address:4 value:4", 4, 4),
    writing(kRegisterWrite, "register", sizeof(RegisterAccessRequest), "address:4 value:4"),
    word_reading(kWord48, "word 48"),
    word_sending(kWord48, "word 48"),
    reading(kIdEntryRead, "identifier entry", 12, "id:2d field_a:2 -:2 field_b:2 field_c:2 -:2", 2,
            10),
    writing(kIdEntryWrite, "identifier entry", 12, "id:2d field_a:2 -:2 field_b:2 field_c:2 -:2"),
    reading(kIdValueRead, "identifier value", 16, "id:4d -:1*6 select:2d value:2 -:2", 12, 2),
    word_reading(kWord4ERead, "word 4E"),
    word_reading(kLedRegisterC, "LED register C"),
    word_sending(kLedRegisterC, "LED register C"),
    word_reading(kChannelWord, "channel word"),
    word_sending(kChannelWord, "channel word"),
    reading(kOwnAddressSetRead, "own address set", 16, "set:1*16", 0, 16),
    writing(kOwnAddressSetWrite, "own address set", 16, "set:1*16"),
    reading(kAddressSetRead, "address set", 36, "id:4d mode:4d -:4 set:4*4 -:1*8", 12, 16),
    writing(kAddressSetWrite, "address set", 36, "id:4d mode:4d -:4 set:4*4 -:1*8"),
    reading(kPortEntryRead, "port entry", 8, "address:2d flag:2d value:2 -:2", 4, 2),
    writing(kPortEntryWrite, "port entry", 8, "address:2d flag:2d value:2 -:2"),
    word_writing(kWord62Write, "word 62"),
    writing(kPortEntryWriteRanged, "ranged port entry", 8, "address:2d flag:2d value:2 -:2"),
    reading(kAddressPairRead, "address pair", 20, "index:4d -:4 address:1*4 address_6:1*6 -:1*2", 8,
            12),
    writing(kAddressPairWrite, "address pair", 20, "index:4d -:4 address:1*4 address_6:1*6 -:1*2"),
    writing(kPairEnableWrite, "pair enable", 8, "enable:1*2 -:1*2 select:1d -:1*3"),
    reading(kRuleRead, "rule", 80,
            "index:2d present:2 value:2 -:1*2 address_a:4 prefix_a:1d -:1*3 address_b:4 "
            "prefix_b:1d -:1 word_c:2 word_d:2 byte_e:1 -:1*6 class_bits:1 -:1*2 switches:1*4 "
            "-:1*8 address_6_a:1*6 address_6_b:1*6 -:1*2 companion_c:1 companion_d:1 -:1*2 "
            "address_6_a_present:1d address_6_b_present:1d -:1*8 enabled:1d -:1*3",
            2, 78),
    writing(kRuleWrite, "rule", 80,
            "index:2d present:2 value:2 -:1*2 address_a:4 prefix_a:1d -:1*3 address_b:4 "
            "prefix_b:1d -:1 word_c:2 word_d:2 byte_e:1 -:1*6 class_bits:1 -:1*2 switches:1*4 "
            "-:1*8 address_6_a:1*6 address_6_b:1*6 -:1*2 companion_c:1 companion_d:1 -:1*2 "
            "address_6_a_present:1d address_6_b_present:1d -:1*8 enabled:1d -:1*3"),
    word_reading(kDriverControlRead, "driver control"),
    word_writing(kDriverControlWrite, "driver control"),
    writing(kControlBlockWrite, "control block", 16, "bytes:1*16"),
    writing(kKeyBytesWrite, "key bytes", 12, "number:1d bytes:1*4 -:1*7"),
    reading(kSwitchPortRead, "switch port", sizeof(SwitchPortRequest),
            "port:1d -:1 full_duplex:1d speed100:1d link:1d -:1*3", 1, 7),
    writing(kSwitchPortWrite, "switch port", sizeof(SwitchPortRequest),
            "port:1d -:1 full_duplex:1d speed100:1d link:1d -:1*3"),
    acting(kByteAction, "byte action", 1),
    writing(kPairWordsWrite, "pair words", sizeof(PairWords), "words:4*2"),
    writing(kSwitchTablesWrite2, "switch tables write 2", 260,
            "status:2 normal:1*128 priority:1*128 -:1*2", RequestVerb::kNone),
    writing(kSwitchTablesWrite1, "switch tables write 1", 260,
            "status:2 normal:1*128 priority:1*128 -:1*2", RequestVerb::kNone),
    acting(kWordAction, "word action", 2),
    reading(kIndexedWordRead, "indexed word", 8, "index:4d value:4", 4, 4),
    writing(kIndexedWordWrite, "indexed word", 8, "index:4d value:4"),
    reading(kAddressTableRead, "address table", 24,
            "index:4d -:4 valid:4d address:1*4 address_6:1*6 attribute:1 -:1", 4, 20),
    writing(kAddressTableWrite, "address table", 24,
            "index:4d -:4 valid:4d address:1*4 address_6:1*6 attribute:1 -:1"),
    reading(kPhyRead, "PHY", 8, "address:2d number:2d -:2 value:2", 6, 2),
    writing(kPhyWrite, "PHY", 8, "address:2d number:2d value:2 -:2"),
    map_reading(kPortMaskRead, "port mask"),
    sending(kPortMaskWrite, "port mask", 4),
    reading(kPort0PhyRead, "port 0 PHY", 8, "address:2d number:2d -:2 value:2", 6, 2),
    writing(kPort0PhyWrite, "port 0 PHY", 8, "address:2d number:2d value:2 -:2"),
    restarting(kCounterRead, "counter", sizeof(CounterRecord), "index:4d value:4d selector:4d", 4,
               4),
    writing(kCounterBlockSmallWrite, "small counter block", sizeof(CounterBlockSmall),
            "bytes:1*68"),
    writing(kCounterBlockLargeWrite, "large counter block", sizeof(CounterBlockLarge),
            "bytes:1*160"),
    writing(kCounterWrite, "counter", sizeof(CounterRecord), "index:4d value:4d selector:4d"),
    restarting(kCounterAltRead, "other counter", sizeof(CounterRecord),
               "index:4d value:4d selector:4d", 4, 4),
    writing(kCounterAltWrite, "other counter", sizeof(CounterRecord),
            "index:4d value:4d selector:4d"),
    bare(kDriverStateRead, "driver state"),
    word_reading(kExtStatusARead, "extended status A"),
    word_writing(kExtControlAWrite, "extended control A"),
    word_reading(kExtStatusBRead, "extended status B"),
    word_writing(kExtControlBWrite, "extended control B"),
    clock_request(0x40047014, writing(kClock, "clock status", 4, "status:4")),
    clock_request(0x4024700A, writing(kClock, "clock time", 36,
                                      "second:4i minute:4i hour:4i day:4i month:4i year:4i "
                                      "weekday:4i day_of_year:4i daylight_saving:4i")),
    clock_request(0x80047013, reading(kClock, "clock status", 4, "status:4", 0, 4)),
    clock_request(0x80247009, reading(kClock, "clock time", 36,
                                      "second:4i minute:4i hour:4i day:4i month:4i year:4i "
                                      "weekday:4i day_of_year:4i daylight_saving:4i",
                                      0, 36)),
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

const char* request_verb(const RequestDescription& request)
{
    return request.verb == RequestVerb::kRead    ? " read"
           : request.verb == RequestVerb::kWrite ? " write"
                                                 : "";
}

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
