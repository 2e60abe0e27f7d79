#include "tools/maintctl/values.h"

#include <cstring>

#include "maint/fpga.h"
#include "tools/maintctl/text.h"

namespace
{

// A part of what somebody typed.
struct Part {
    const char* begin;
    size_t length;
};

bool part_is(const Part& part, const char* word)
{
    return strlen(word) == part.length && text_same(part.begin, word, part.length);
}

int digit_value(char digit)
{
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    return 16;
}

// Two hexadecimal digits; false: they are none.
bool pair_read(const char* digits, uint8_t& byte)
{
    const int high = digit_value(digits[0]);
    const int low = high < 16 ? digit_value(digits[1]) : 16;
    if (low == 16) {
        return false;
    }
    byte = static_cast<uint8_t>(high << 4 | low);
    return true;
}

bool digits_read(const Part& digits, int base, uint64_t& number)
{
    number = 0;
    for (size_t i = 0; i < digits.length; ++i) {
        const int digit = digit_value(digits.begin[i]);
        if (digit >= base) {
            return false;
        }
        if (number <= UINT32_MAX) { // above that it is out of every range, and grows no more
            number = number * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
        }
    }
    return digits.length != 0;
}

bool begins_withZero(const Part& part)
{
    return part.length > 1 && part.begin[0] == '0';
}

// False: `reason` says why it is no number.
bool number_read(const Part& part, uint64_t& number, Text& reason)
{
    if (number_parse(part.begin, part.length, number)) {
        return true;
    }
    const bool decimal = digits_read(part, 10, number);
    text_add(reason, decimal
                         ? "begins with 0: write a decimal number without it, a hexadecimal one "
                           "with 0x"
                         : "is not a number (decimal, or hexadecimal with 0x)");
    return false;
}

void number_print(const Field& field, uint32_t number, Text& text)
{
    if (field.kind == Kind::kHex || field.kind == Kind::kBits) {
        text_add(text, "0x%0*x", 2 * field.width, static_cast<unsigned>(number));
        return;
    }
    const char* name = field.kind == Kind::kCode ? value_codeName(field, number) : nullptr;
    if (name != nullptr) {
        text_add(text, "%s", name);
    } else {
        text_add(text, "%u", static_cast<unsigned>(number));
    }
}

void codes_add(Text& reason, std::span<const CodeName> codes)
{
    text_add(reason, "is none of");
    const char* before = " ";
    for (const CodeName& code : codes) {
        text_add(reason, "%s%s (%u)", before, code.name, static_cast<unsigned>(code.code));
        before = ", ";
    }
}

bool code_read(const Field& field, const Part& part, uint32_t& number, Text& reason)
{
    for (const CodeName& code : field.codes()) {
        if (part_is(part, code.name)) {
            number = code.code;
            return true;
        }
    }
    uint64_t typed = 0;
    if (number_parse(part.begin, part.length, typed) && typed <= UINT32_MAX &&
        value_codeName(field, static_cast<uint32_t>(typed)) != nullptr) {
        number = static_cast<uint32_t>(typed);
        return true;
    }
    codes_add(reason, field.codes());
    return false;
}

bool flag_read(const Part& part, uint32_t& number, Text& reason)
{
    const bool on = part_is(part, "1") || part_is(part, "on");
    if (!on && !part_is(part, "0") && !part_is(part, "off")) {
        text_add(reason, "is not 0 or 1 (off or on)");
        return false;
    }
    number = on ? 1 : 0;
    return true;
}

bool numberElement_read(const Field& field, const Part& part, uint8_t* bytes, Text& reason)
{
    uint32_t number = 0;
    if (field.kind == Kind::kCode) {
        if (!code_read(field, part, number, reason)) {
            return false;
        }
    } else if (field.kind == Kind::kFlag) {
        if (!flag_read(part, number, reason)) {
            return false;
        }
    } else {
        uint64_t typed = 0;
        if (!number_read(part, typed, reason)) {
            return false;
        }
        if (typed < field.least || typed > field.most) {
            text_add(reason, "is not within ");
            number_print(field, field.least, reason);
            text_add(reason, " to ");
            number_print(field, field.most, reason);
            text_add(reason, unit_name(field.unit)[0] != '\0' ? " %s" : "%s",
                     unit_name(field.unit));
            return false;
        }
        number = static_cast<uint32_t>(typed);
    }
    memcpy(bytes, &number, field.width); // the lowest bytes stand first
    return true;
}

bool ipv4_read(const Part& part, uint8_t* bytes, Text& reason)
{
    const char* const end = part.begin + part.length;
    const char* at = part.begin;
    for (unsigned i = 0; i < 4; ++i) {
        const char* begin = at;
        unsigned number = 0;
        while (at < end && *at >= '0' && *at <= '9' && at - begin < 4) {
            number = number * 10 + static_cast<unsigned>(*at++ - '0');
        }
        const bool ends_well = i == 3 ? at == end : at < end && *at == '.';
        if (at == begin || (at - begin > 1 && *begin == '0') || number > 255 || !ends_well) {
            text_add(reason, "is not an address such as 10.0.0.1");
            return false;
        }
        bytes[i] = static_cast<uint8_t>(number);
        ++at;
    }
    return true;
}

bool address6_read(const Part& part, uint8_t* bytes, Text& reason)
{
    constexpr size_t kLength = 17; // aa:bb:cc:dd:ee:ff
    bool good = part.length == kLength;
    const char separator = good ? part.begin[2] : ':';
    good = good && (separator == ':' || separator == '-');
    for (size_t i = 0; good && i < 6; ++i) {
        good = pair_read(part.begin + 3 * i, bytes[i]) &&
               (i == 5 || part.begin[3 * i + 2] == separator);
    }
    if (!good) {
        text_add(reason, "is not an address such as 02:00:00:00:00:01");
    }
    return good;
}

bool text_read(const Field& field, const Part& part, uint8_t* bytes, Text& reason)
{
    size_t count = 0;
    for (size_t i = 0; i < part.length; ++i, ++count) {
        auto byte = static_cast<uint8_t>(part.begin[i]);
        if (byte == '\\') {
            const size_t left = part.length - i - 1;
            if (left >= 1 && part.begin[i + 1] == '\\') {
                i += 1;
            } else if (left >= 3 && part.begin[i + 1] == 'x' &&
                       pair_read(part.begin + i + 2, byte)) {
                i += 3;
            } else {
                text_add(reason, "has a \\ that is followed neither by \\ nor by x and two "
                                 "hexadecimal digits");
                return false;
            }
        }
        if (count < field.width) {
            bytes[count] = byte;
        }
    }
    if (count > field.width) {
        text_add(reason, "has %zu characters, and no more than %u fit", count, field.width);
        return false;
    }
    return true;
}

bool bytes_read(const Field& field, const Part& part, uint8_t* bytes, Text& reason)
{
    uint8_t byte = 0;
    for (size_t i = 0; i + 1 < part.length; i += 2) {
        if (!pair_read(part.begin + i, byte)) {
            text_add(reason, "is not made of pairs of hexadecimal digits");
            return false;
        }
        if (i / 2 < field.width) {
            bytes[i / 2] = byte;
        }
    }
    if (part.length % 2 != 0) {
        text_add(reason, "is not made of pairs of hexadecimal digits");
        return false;
    }
    const size_t count = part.length / 2;
    if (field.role == Role::kDriverSized ? count > field.width : count != field.width) {
        text_add(reason, "has %zu bytes, not %s%u", count,
                 field.role == Role::kDriverSized ? "up to " : "", field.width);
        return false;
    }
    return true;
}

bool element_read(const Field& field, const Part& part, uint8_t* bytes, Text& reason)
{
    switch (field.kind) {
    case Kind::kIpv4:
        return ipv4_read(part, bytes, reason);
    case Kind::kAddress6:
        return address6_read(part, bytes, reason);
    case Kind::kText:
        return text_read(field, part, bytes, reason);
    case Kind::kBytes:
        return bytes_read(field, part, bytes, reason);
    default:
        break;
    }
    if (part.length == 0) {
        text_add(reason, "is empty");
        return false;
    }
    return numberElement_read(field, part, bytes, reason);
}

void text_print(const Field& field, const uint8_t* bytes, Text& text)
{
    const size_t length = value_textLength(field, bytes - field.offset);
    for (size_t i = 0; i < length; ++i) {
        if (bytes[i] < ' ' || bytes[i] >= 0x7F) {
            text_add(text, "\\x%02x", bytes[i]);
        } else {
            text_add(text, bytes[i] == '\\' ? "\\%c" : "%c", bytes[i]);
        }
    }
}

void element_print(const Field& field, unsigned element, const uint8_t* record, Text& text)
{
    const uint8_t* bytes = record + field.offset + size_t{element} * field.width;
    switch (field.kind) {
    case Kind::kIpv4:
        text_add(text, "%u.%u.%u.%u", bytes[0], bytes[1], bytes[2], bytes[3]);
        break;
    case Kind::kAddress6:
        text_add(text, "%02x:%02x:%02x:%02x:%02x:%02x", bytes[0], bytes[1], bytes[2], bytes[3],
                 bytes[4], bytes[5]);
        break;
    case Kind::kText:
        text_print(field, bytes, text);
        break;
    case Kind::kBytes:
        for (size_t i = 0; i < field.width; ++i) {
            text_add(text, "%02x", bytes[i]);
        }
        break;
    default:
        number_print(field, value_number(field, element, record), text);
    }
}

size_t elements_count(const char* text)
{
    size_t count = 1;
    for (; *text != '\0'; ++text) {
        count += *text == ',' ? 1 : 0;
    }
    return count;
}

} // namespace

void value_print(const Field& field, const uint8_t* record, char (&text)[kValueMax])
{
    Text value = text_in(text);
    for (unsigned element = 0; element < field.count; ++element) {
        if (element != 0) {
            text_addChar(value, ',');
        }
        element_print(field, element, record, value);
    }
}

const char* value_read(const Field& field, int element, const char* text, uint8_t* record,
                       char (&reason)[kValueMax])
{
    Text why = text_in(reason);
    uint8_t bytes[DEVICE_RECORD_MAX] = {};
    const bool one = element >= 0 || field.count == 1;
    if (one) {
        if (!element_read(field, {text, strlen(text)}, bytes, why)) {
            return reason;
        }
        const size_t place = element >= 0 ? static_cast<size_t>(element) : 0;
        memcpy(record + field.offset + place * field.width, bytes, field.width);
        return nullptr;
    }
    const size_t count = elements_count(text);
    if (count != field.count) {
        text_add(why, "has %zu element%s, not %u", count, count == 1 ? "" : "s", field.count);
        return reason;
    }
    for (size_t i = 0; i < count; ++i) {
        const Part part = {text, strcspn(text, ",")};
        text += part.length + 1;
        text_add(why, "is wrong at [%zu]: ", i);
        text_addTyped(why, part.begin, part.length);
        text_add(why, part.length != 0 ? " " : "it ");
        if (!element_read(field, part, bytes + i * field.width, why)) {
            return reason;
        }
        text_cut(why, 0);
    }
    memcpy(record + field.offset, bytes, size_t{field.width} * field.count);
    return nullptr;
}

bool value_isNumber(const Field& field)
{
    return field.kind < Kind::kIpv4;
}

uint32_t value_number(const Field& field, unsigned element, const uint8_t* record)
{
    uint32_t number = 0;
    memcpy(&number, record + field.offset + size_t{element} * field.width, field.width);
    return number;
}

const char* value_codeName(const Field& field, uint32_t code)
{
    for (const CodeName& known : field.codes()) {
        if (known.code == code) {
            return known.name;
        }
    }
    return nullptr;
}

size_t value_textLength(const Field& field, const uint8_t* record)
{
    size_t length = field.width;
    while (length != 0 && record[field.offset + length - 1] == 0) {
        --length;
    }
    return length;
}

bool number_parse(const char* text, size_t length, uint64_t& number)
{
    const Part part = {text, length};
    if (begins_withZero(part) && (text[1] == 'x' || text[1] == 'X')) {
        return digits_read({text + 2, length - 2}, 16, number);
    }
    return !begins_withZero(part) && digits_read(part, 10, number);
}
