// Everything that can be read without changing anything, as lines of JSON: the same unit gives the
// same bytes.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unistd.h>

#include "catalogue/catalogue.h"
#include "config/config_value.h"
#include "maint/commands/device_word.h"
#include "maint/commands/mtu.h"
#include "maint/commands/unit.h"
#include "tools/maintctl/answer.h"
#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/library_calls.h"
#include "tools/maintctl/quiet_reading.h"
#include "tools/maintctl/result.h"
#include "tools/maintctl/session.h"
#include "tools/maintctl/unit_files.h"

namespace
{

struct Snapshot {
    const Session& session;
    Json out;
    bool answering = false;     // a command runs, and its line waits for the answers
    bool device_opened = false; // /dev/fpga, at least once
    int32_t first_failure = 0;
    Answer own_id;
};

// Answers -----------------------------------------------------------------------------------------

void bytes_put(Json& json, const char* key, const uint8_t* bytes, size_t size)
{
    if (bytes != nullptr) {
        json_key(json, key);
        json_hex(json, bytes, size);
    }
}

void answer_put(Json& json, const AnsweredRequest& answer)
{
    char request[16];
    snprintf(request, sizeof request, "0x%04X", answer.request);
    json_open(json, '{');
    json_key(json, "device");
    json_text(json, answer.device);
    json_key(json, "request");
    json_text(json, request);
    bytes_put(json, "before", answer.before, answer.size);
    bytes_put(json, "after", answer.after, answer.size);
    json_key(json, "result");
    json_number(json, answer.result);
    if (answer.result < 0) {
        json_key(json, "errno");
        json_number(json, answer.error);
    }
    json_close(json, '}');
}

void answer_hear(void* listener, const AnsweredRequest& answer)
{
    auto& snapshot = *static_cast<Snapshot*>(listener);
    if (strcmp(answer.device, place_name(Place::kFpga)) == 0) {
        snapshot.device_opened = true;
    }
    if (snapshot.answering) {
        answer_put(snapshot.out, answer);
    }
}

void line_begin(Json& json)
{
    json.after_value = false;
    json_open(json, '{');
}

void line_end(Json& json)
{
    json_close(json, '}');
    fputc('\n', json.file);
}

// Runs a command and writes its line, with the answers in it as they come.
void command_record(Snapshot& snapshot, const CommandDescription& command, uint8_t* record)
{
    Json& out = snapshot.out;
    line_begin(out);
    command_json(out, command);
    json_key(out, "asked"); // the driver can overwrite the index, too
    json_hex(out, record, command.record);
    json_key(out, "answers");
    json_open(out, '[');
    snapshot.answering = true;
    const int32_t result = Fpga_Register_Set(command.code, record);
    snapshot.answering = false;
    json_close(out, ']');
    outcome_json(out, command, result, record);
    line_end(out);
    if (result < 0 && snapshot.first_failure == 0) {
        snapshot.first_failure = result;
    }
}

// Commands ----------------------------------------------------------------------------------------

// A line in the system log, which a failing command may leave, is held back.
constexpr Places kHeldBack = place_bit(Place::kSystemLog) | place_bit(Place::kSaveLock);

bool command_onlyReads(const CommandDescription& command)
{
    return !command.clears && (command.changes & ~kHeldBack) == 0;
}

uint32_t number_get(const Field& field, const uint8_t* record)
{
    uint32_t number = 0;
    memcpy(&number, record + field.offset, field.width); // little-endian, as this machine is
    return number;
}

void number_put(const Field& field, uint8_t* record, uint32_t number)
{
    memcpy(record + field.offset, &number, field.width);
}

// The record of the first combination: the own identifier, and each index at its sweep's beginning.
void record_begin(const Snapshot& snapshot, const CommandDescription& command, uint8_t* record)
{
    for (const Field& field : command.fields()) {
        if (field.role == Role::kOwnId) {
            number_put(field, record, record_of<RD_DEVICE_WORD_29>(snapshot.own_id));
        } else if (field.role == Role::kIndex) {
            number_put(field, record, field.sweep.first);
        }
    }
}

// The next combination, as of the wheels of a counter; false: this was the last.
bool indexes_advance(const CommandDescription& command, uint8_t* indexes)
{
    for (size_t n = command.fields().size(); n > 0; --n) {
        const Field& field = command.fields()[n - 1];
        if (field.role != Role::kIndex) {
            continue;
        }
        const uint32_t next = number_get(field, indexes) + field.sweep.step;
        if (next <= field.sweep.last) {
            number_put(field, indexes, next);
            return true;
        }
        number_put(field, indexes, field.sweep.first);
    }
    return false;
}

bool combinations_record(Snapshot& snapshot, const CommandDescription& command)
{
    alignas(8) uint8_t indexes[DEVICE_RECORD_MAX] = {};
    record_begin(snapshot, command, indexes);
    do {
        alignas(8) uint8_t record[DEVICE_RECORD_MAX];
        memcpy(record, indexes, sizeof record);
        command_record(snapshot, command, record);
        if (ferror(snapshot.out.file) != 0) {
            return false;
        }
    } while (indexes_advance(command, indexes));
    return true;
}

template <class Visit> bool commands_visit(const Visit& visit)
{
    for (const CommandGroup* group : catalogue_get()) {
        for (const CommandDescription& command : group->commands) {
            if (!visit(command)) {
                return false;
            }
        }
    }
    return true;
}

bool commands_record(Snapshot& snapshot)
{
    FILE* err = snapshot.session.err;
    const bool progress = isatty(fileno(err)) == 1 && !snapshot.session.trace;
    const bool good = commands_visit([&](const CommandDescription& command) {
        if (!command_onlyReads(command)) {
            return true;
        }
        if (progress) {
            fprintf(err, "\r%-32s", command.name);
        }
        return combinations_record(snapshot, command);
    });
    if (progress) {
        fprintf(err, "\r%-32s\r", "");
    }
    return good;
}

// Files -------------------------------------------------------------------------------------------

// As much of a file as the library reads of it.
void file_record(Json& json, Place place, size_t size)
{
    uint8_t bytes[DEVICE_RECORD_MAX];
    size_t count = 0;
    const char* error = unitFile_read(place_name(place), bytes, size, count);
    line_begin(json);
    json_key(json, "file");
    json_text(json, place_name(place));
    json_key(json, error == nullptr ? "bytes" : "error");
    error == nullptr ? json_hex(json, bytes, count) : json_text(json, error);
    line_end(json);
}

constexpr const char* kMtuKeyName = "SELECT_MTU";
constexpr const char* kConfigKeys[] = {"WAN_TYPE", "IPSEC_ENABLE", "OWN_VPN_ID"};
constexpr unsigned kNamedKeys = sizeof kConfigKeys / sizeof kConfigKeys[0];
constexpr unsigned kIndexedKeys = 32; // of the identities
constexpr unsigned kKeys = kNamedKeys + kIndexedKeys;

using ConfigKey = char[32];

// The keys that the library's commands look up, one after another, but for the MTU's.
void configKey_get(unsigned number, ConfigKey& key)
{
    if (number < kNamedKeys) {
        snprintf(key, sizeof key, "%s", kConfigKeys[number]);
    } else {
        snprintf(key, sizeof key, "PPPOEOFF_VPN_ID%02u", number - kNamedKeys);
    }
}

// The configuration can hold passwords, and a key also matches the beginning of a longer one. So
// of a value only its number is taken, which is all that the library makes of it.
void configNumber_put(Json& json, const char* key)
{
    ConfigValue value;
    if (!configValue_find(key, value)) {
        return;
    }
    char number[16] = "";
    if (value[0] != '\0') {
        snprintf(number, sizeof number, "%d", number_parse(value));
    }
    json_key(json, key);
    json_text(json, number);
}

enum class KeyPlace : uint8_t { kFirst, kLast, kThereAlready };

// Where the MTU's key has to stand, so that each look-up finds the same again: it can be the
// beginning of another one, and another one its beginning.
KeyPlace mtuKey_place(std::string_view mtu_key)
{
    KeyPlace place = KeyPlace::kFirst;
    for (unsigned number = 0; number < kKeys; ++number) {
        ConfigKey key;
        configKey_get(number, key);
        if (mtu_key == key) {
            return KeyPlace::kThereAlready;
        }
        if (mtu_key.starts_with(key)) {
            place = KeyPlace::kLast;
        }
    }
    return place;
}

void configKeys_put(Json& json)
{
    ConfigValue mtu_key;
    const bool named = configValue_find(kMtuKeyName, mtu_key);
    const KeyPlace place = named ? mtuKey_place(mtu_key) : KeyPlace::kThereAlready;
    if (place == KeyPlace::kFirst) {
        configNumber_put(json, mtu_key);
    }
    if (named) {
        json_key(json, kMtuKeyName);
        json_text(json, mtu_key);
    }
    for (unsigned number = 0; number < kKeys; ++number) {
        ConfigKey key;
        configKey_get(number, key);
        configNumber_put(json, key);
    }
    if (place == KeyPlace::kLast) {
        configNumber_put(json, mtu_key);
    }
}

void config_record(Json& json)
{
    uint8_t first = 0;
    size_t count = 0;
    const char* path = place_name(Place::kConfig);
    const char* error = unitFile_read(path, &first, sizeof first, count);
    line_begin(json);
    if (error != nullptr) {
        json_key(json, "file");
        json_text(json, path);
        json_key(json, "error");
        json_text(json, error);
    } else {
        json_key(json, "config");
        json_open(json, '{');
        configKeys_put(json);
        json_close(json, '}');
    }
    line_end(json);
}

// First and last line -----------------------------------------------------------------------------

void beginning_record(Snapshot& snapshot)
{
    Json& json = snapshot.out;
    line_begin(json);
    json_key(json, "snapshot");
    json_number(json, 1);
    json_key(json, "program");
    json_text(json, "maintctl");
    json_key(json, "version");
    json_text(json, MAINT_VERSION);
    json_key(json, "own_id");
    answer_isGood(snapshot.own_id)
        ? json_number(json, record_of<RD_DEVICE_WORD_29>(snapshot.own_id))
        : json_null(json);
    line_end(json);
}

void unknown_put(Json& json, const char* key, const char* name, const char* why)
{
    json_open(json, '{');
    json_key(json, key);
    json_text(json, name);
    json_key(json, "why");
    json_text(json, why);
    json_close(json, '}');
}

// No command reads what these set.
constexpr DeviceCommandCode kWriteOnly[] = {
    WR_STATUS_WORD,         WR_PAIR_ENABLE,         WR_SWITCH_TABLES_1, WR_SWITCH_TABLES_2,
    WR_COUNTER_BLOCK_LARGE, WR_COUNTER_BLOCK_SMALL, WR_CONTROL_BLOCK,   WR_KEY_BYTES,
    WR_BYTE_ACTION,         WR_PAIR_WORDS,          WR_WORD_ACTION,     WR_EXT_CONTROL_A,
    WR_EXT_CONTROL_B,
};

bool command_onlyWrites(DeviceCommandCode code)
{
    for (const DeviceCommandCode other : kWriteOnly) {
        if (other == code) {
            return true;
        }
    }
    return false;
}

void unknown_record(Json& json)
{
    line_begin(json);
    json_key(json, "unknown");
    json_open(json, '[');
    commands_visit([&](const CommandDescription& command) {
        const bool reads = strncmp(command.name, "RD_", 3) == 0;
        if (command.clears) {
            unknown_put(json, "command", command.name, "the counters would restart");
        } else if (reads && !command_onlyReads(command)) {
            unknown_put(json, "command", command.name, "reading changes something");
        } else if (command_onlyWrites(command.code)) {
            unknown_put(json, "command", command.name, "what it sets cannot be read");
        }
        return true;
    });
    unknown_put(json, "state", "what has another index", "it was not asked for");
    json_close(json, ']');
    line_end(json);
}

void snapshot_record(Snapshot& snapshot)
{
    beginning_record(snapshot);
    file_record(snapshot.out, Place::kSerialNumber, sizeof(SerialNumber));
    file_record(snapshot.out, Place::kMtuDatasize, sizeof(MtuDatasize));
    config_record(snapshot.out);
    if (commands_record(snapshot)) {
        unknown_record(snapshot.out);
    }
}

} // namespace

int snapshot_make(const Session& session)
{
    Snapshot snapshot{.session = session, .out = {session.out}, .own_id = {}};
    QuietReading quiet;
    quietReading_begin(quiet, session);
    quiet.calls.answered = answer_hear;
    quiet.calls.listener = &snapshot;
    answer_get(snapshot.own_id, RD_DEVICE_WORD_29);
    snapshot_record(snapshot);
    quietReading_end(quiet);
    return snapshot.device_opened ? 0 : exitStatus_of(snapshot.first_failure);
}
