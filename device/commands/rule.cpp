#include "device/commands/rule.h"

#include <cstddef>
#include <cstring>

#include "device/access/fpga.h"
#include "device/access/numbers.h"

static_assert(sizeof(RuleEntry) == 496 && sizeof(RuleEntry) == DEVICE_RECORD_MAX);
static_assert(offsetof(RuleEntry, value) == 22);
static_assert(offsetof(RuleEntry, word_c) == 28);
static_assert(offsetof(RuleEntry, switches) == 34);

namespace
{

// The driver's record of one entry.
struct RuleRequest {
    uint16_t index;
    uint16_t present; // which of the parts below are meant
    uint16_t value;
    uint8_t spare_6[2];
    uint32_t address_a;
    uint8_t prefix_a;
    uint8_t spare_13[3];
    uint32_t address_b;
    uint8_t prefix_b;
    uint8_t spare_21;
    uint16_t word_c;
    uint16_t word_d;
    uint8_t byte_e;
    uint8_t spare_27[6];
    uint8_t class_bits; // one of bits 0..3
    uint8_t spare_34[2];
    uint8_t switches[4];
    uint8_t spare_40[8];
    uint8_t address_6_a[6];
    uint8_t address_6_b[6];
    uint8_t spare_60[2];
    uint8_t companion_c;
    uint8_t companion_d;
    uint8_t spare_64[2];
    uint8_t address_6_a_present;
    uint8_t address_6_b_present;
    uint8_t spare_68[8];
    uint8_t enabled;
    uint8_t spare_77[3];
};
static_assert(sizeof(RuleRequest) == 80);
static_assert(offsetof(RuleRequest, address_a) == 8);
static_assert(offsetof(RuleRequest, address_b) == 16);
static_assert(offsetof(RuleRequest, word_c) == 22);
static_assert(offsetof(RuleRequest, byte_e) == 26);
static_assert(offsetof(RuleRequest, class_bits) == 33);
static_assert(offsetof(RuleRequest, switches) == 36);
static_assert(offsetof(RuleRequest, address_6_a) == 48);
static_assert(offsetof(RuleRequest, companion_c) == 62);
static_assert(offsetof(RuleRequest, address_6_a_present) == 66);
static_assert(offsetof(RuleRequest, enabled) == 76);

enum Present : uint16_t {
    kPresentValue = 0x0001,
    kPresentAddressA = 0x0002,
    kPresentAddressB = 0x0004,
    kPresentWordC = 0x0008,
    kPresentWordD = 0x0010,
    kPresentByteE = 0x0020,
    kPresentClass = 0x0200
};

constexpr uint8_t kIndexMax = 127;
constexpr uint8_t kClassMax = 4;

using Address = uint8_t[4];
using Address6 = uint8_t[6];

uint8_t class_code(uint8_t bits)
{
    for (uint8_t code = 1; code <= kClassMax; ++code) {
        if ((bits & (1U << (code - 1))) != 0) {
            return code; // the lowest bit wins
        }
    }
    return 0;
}

void switches_copy(const uint8_t (&from)[4], uint8_t (&to)[4])
{
    for (size_t n = 0; n < sizeof from; ++n) {
        to[n] = from[n] != 0 ? 1 : 0;
    }
}

void request_unpack(const RuleRequest& request, RuleEntry& entry)
{
    const auto present = [&request](Present part) { return (request.present & part) != 0; };
    if (present(kPresentAddressA)) {
        bigEndian_store(request.address_a, entry.address_a);
        entry.prefix_a = request.prefix_a;
    }
    if (present(kPresentAddressB)) {
        bigEndian_store(request.address_b, entry.address_b);
        entry.prefix_b = request.prefix_b;
    }
    if (request.address_6_a_present != 0) {
        memcpy(entry.address_6_a, request.address_6_a, sizeof entry.address_6_a);
    }
    if (request.address_6_b_present != 0) {
        memcpy(entry.address_6_b, request.address_6_b, sizeof entry.address_6_b);
    }
    if (present(kPresentValue)) {
        entry.value = request.value;
    }
    if (present(kPresentClass)) {
        entry.class_code = class_code(request.class_bits);
    }
    if (present(kPresentByteE)) {
        entry.byte_e = request.byte_e;
    }
    if (present(kPresentWordC)) {
        entry.word_c = request.word_c;
        entry.companion_c = request.companion_c;
    }
    if (present(kPresentWordD)) {
        entry.word_d = request.word_d;
        entry.companion_d = request.companion_d;
    }
    switches_copy(request.switches, entry.switches);
}

// An address is present when its most significant byte is not 0.
bool address_put(const Address& bytes, uint8_t prefix, uint32_t& address, uint8_t& prefixOut)
{
    if (bytes[0] == 0) {
        return false;
    }
    address = bigEndian_load(bytes);
    prefixOut = prefix;
    return true;
}

void address6_put(const Address6& bytes, Address6& address, uint8_t& present)
{
    memcpy(address, bytes, sizeof address);
    for (const uint8_t byte : bytes) {
        if (byte != 0) {
            present = 1;
        }
    }
}

bool word_put(uint16_t word, uint8_t companion, uint16_t& wordOut, uint8_t& companionOut)
{
    wordOut = word;
    companionOut = word != 0 ? companion : uint8_t{0};
    return word != 0;
}

RuleRequest request_pack(const RuleEntry& entry)
{
    RuleRequest request{};
    const auto mark = [&request](Present part, bool present) {
        request.present = static_cast<uint16_t>(request.present | (present ? part : 0));
    };
    request.index = entry.index;
    request.enabled = 1;
    mark(kPresentAddressA,
         address_put(entry.address_a, entry.prefix_a, request.address_a, request.prefix_a));
    mark(kPresentAddressB,
         address_put(entry.address_b, entry.prefix_b, request.address_b, request.prefix_b));
    address6_put(entry.address_6_a, request.address_6_a, request.address_6_a_present);
    address6_put(entry.address_6_b, request.address_6_b, request.address_6_b_present);
    request.value = entry.value;
    mark(kPresentValue, entry.value != 0);
    if (entry.class_code >= 1 && entry.class_code <= kClassMax) {
        request.class_bits = static_cast<uint8_t>(1U << (entry.class_code - 1));
        mark(kPresentClass, true);
    }
    request.byte_e = entry.byte_e;
    mark(kPresentByteE, entry.byte_e != 0);
    mark(kPresentWordC,
         word_put(entry.word_c, entry.companion_c, request.word_c, request.companion_c));
    mark(kPresentWordD,
         word_put(entry.word_d, entry.companion_d, request.word_d, request.companion_d));
    switches_copy(entry.switches, request.switches);
    return request;
}

} // namespace

int32_t read_rule_entry(RuleEntry* entry)
{
    if (entry->index > kIndexMax) {
        return DEVICE_BAD_ARGUMENT;
    }
    RuleRequest request{};
    request.index = entry->index;
    const int32_t status = command_readRecord(kRuleRead, &request, FpgaAccess::kWrite);
    if (status != DEVICE_OK) {
        return status;
    }
    *entry = {};
    entry->index = static_cast<uint8_t>(request.index);
    entry->enabled = request.enabled;
    if (request.enabled != 0) {
        request_unpack(request, *entry);
    }
    return DEVICE_OK;
}

int32_t write_rule_entry(const RuleEntry* entry)
{
    if (entry->index > kIndexMax) {
        return DEVICE_BAD_ARGUMENT;
    }
    const RuleRequest request = request_pack(*entry);
    return command_writeRecord(kRuleWrite, &request);
}

int32_t write_rule_delete(const uint8_t* index)
{
    if (*index > kIndexMax) {
        return DEVICE_BAD_ARGUMENT;
    }
    RuleRequest request{};
    request.index = *index;
    return command_writeRecord(kRuleWrite, &request);
}
