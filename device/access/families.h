// The families of commands that are one step. Each procedure serves many commands; a command is one
// line in its noun's header, such as
//
//     constexpr CommandCall write_reg158_bit5 = bit_written<uint8_t>(kRegister158, 5);
//     constexpr CommandCall read_device_word_27 = record_passedOut<uint16_t>(kWord27Read);
//
// and a row of the command table, which carries the member. Names: bit_write8 is the procedure that
// does it, bit_written makes the row's call. Where a template names the type behind the caller's
// pointer without using it, the table checks it against the public header's typed call.
#pragma once

#include <cstdint>
#include <type_traits>

#include "device/access/command_call.h"
#include "device/access/fpga.h"

void member_doesNotFit(); // nowhere defined: such a member does not compile

// One bit of a register: reported as 0 or 1; set by 1, cleared by any other value. The caller's
// flag has 8 or 16 bits.
enum class RegisterBit : uint16_t {}; // address, bit

consteval RegisterBit registerBit_of(uint32_t address, unsigned bit)
{
    if (address > 0x0FFF || bit > 15) {
        member_doesNotFit();
    }
    return static_cast<RegisterBit>(address << 4 | bit);
}

int32_t bit_read8(uint8_t* flag, RegisterBit which);
int32_t bit_read16(uint16_t* flag, RegisterBit which);
int32_t bit_write8(const uint8_t* flag, RegisterBit which);
int32_t bit_write16(const uint16_t* flag, RegisterBit which);

template <class Flag> consteval CommandCall<Flag*> bit_reported(uint32_t address, unsigned bit)
{
    if constexpr (std::is_same_v<Flag, uint8_t>) {
        return call_of<bit_read8>(registerBit_of(address, bit));
    } else {
        static_assert(std::is_same_v<Flag, uint16_t>);
        return call_of<bit_read16>(registerBit_of(address, bit));
    }
}

template <class Flag> consteval CommandCall<const Flag*> bit_written(uint32_t address, unsigned bit)
{
    if constexpr (std::is_same_v<Flag, uint8_t>) {
        return call_of<bit_write8>(registerBit_of(address, bit));
    } else {
        static_assert(std::is_same_v<Flag, uint16_t>);
        return call_of<bit_write16>(registerBit_of(address, bit));
    }
}

// A number in the low bits of a register. A setter either refuses what does not fit (-5, before
// the device is opened) or cuts it.
enum class RegisterField : uint16_t {}; // address, number of bits, refuses
enum class TooLarge { kCut, kRefused };

consteval RegisterField registerField_of(uint32_t address, unsigned bits, TooLarge tooLarge)
{
    if (address > 0x07FF || bits > 15) {
        member_doesNotFit();
    }
    return static_cast<RegisterField>(address << 5 | bits << 1 |
                                      (tooLarge == TooLarge::kRefused ? 1 : 0));
}

int32_t field_read(uint16_t* value, RegisterField which);
int32_t field_write(const uint16_t* value, RegisterField which);

// Commands that are one request: the caller's record or value goes to the driver unchanged.
enum class FilledRequest : uint16_t {}; // request, opened for writing
enum class SentRequest : uint16_t {};   // request, failing as a read

int32_t record_passOut(void* record, FilledRequest which);      // the driver fills it
int32_t record_passIn(const void* record, SentRequest which);   // the driver reads it
int32_t value_send8(const uint8_t* value, RequestNumber which); // the value is the argument
int32_t value_send16(const uint16_t* value, RequestNumber which);

constexpr unsigned kSecondChoice = 0x100; // beside the request's number

// `failure`: -4, or -2 of the setters whose failed write is told as that of a read.
consteval SentRequest sentRequest_of(RequestNumber request, int32_t failure)
{
    if (failure != DEVICE_WRITE_FAILED && failure != DEVICE_READ_FAILED) {
        member_doesNotFit();
    }
    return static_cast<SentRequest>(static_cast<unsigned>(request) |
                                    (failure == DEVICE_READ_FAILED ? kSecondChoice : 0));
}

constexpr RequestNumber request_in(SentRequest which)
{
    return static_cast<RequestNumber>(static_cast<unsigned>(which) & 0xFF);
}

constexpr int32_t failure_in(SentRequest which)
{
    return (static_cast<unsigned>(which) & kSecondChoice) != 0 ? DEVICE_READ_FAILED
                                                               : DEVICE_WRITE_FAILED;
}

// Opened for writing by the one report that is so.
template <class Record>
consteval CommandCall<Record*> record_passedOut(RequestNumber request,
                                                FpgaAccess access = FpgaAccess::kRead)
{
    return call_of<record_passOut, Record*>(static_cast<FilledRequest>(
        static_cast<unsigned>(request) | (access == FpgaAccess::kWrite ? kSecondChoice : 0)));
}

template <class Record>
consteval CommandCall<const Record*> record_passedIn(RequestNumber request,
                                                     int32_t failure = DEVICE_WRITE_FAILED)
{
    return call_of<record_passIn, const Record*>(sentRequest_of(request, failure));
}

template <class Value> consteval CommandCall<const Value*> value_sent(RequestNumber request)
{
    if constexpr (std::is_same_v<Value, uint8_t>) {
        return call_of<value_send8>(request);
    } else {
        static_assert(std::is_same_v<Value, uint16_t>);
        return call_of<value_send16>(request);
    }
}

// One request, too, but the driver reads a copy: whatever it does to its record, the caller's
// stays.
enum class CopiedRequest : uint16_t {}; // request, half the record's size, failing as a read

constexpr unsigned kCopyMax = 160;

int32_t copy_send(const void* record, CopiedRequest which);

template <class Record>
consteval CommandCall<const Record*> copy_sent(RequestNumber request,
                                               int32_t failure = DEVICE_WRITE_FAILED)
{
    static_assert(sizeof(Record) <= kCopyMax && sizeof(Record) % 2 == 0);
    static_cast<void>(sentRequest_of(request, failure)); // one of the two failures
    return call_of<copy_send, const Record*>(
        static_cast<CopiedRequest>(static_cast<unsigned>(request) | sizeof(Record) / 2 << 8 |
                                   (failure == DEVICE_READ_FAILED ? 0x8000U : 0U)));
}
