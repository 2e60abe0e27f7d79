#include "device/commands/device_word.h"

#include "device/access/driver_records.h"
#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/access/shared_words.h"

static_assert(sizeof(IndexedWord) == 4);
static_assert(sizeof(ControlBits) == 3);

namespace
{

// The device's code 1, 2, 3 is bit 1, 2, 3 at the caller's side; 0 has no meaning.
constexpr uint16_t kWord48Code = 0x0003;

// The record of the indexed word requests.
struct IndexedWordRequest {
    uint32_t index;
    uint32_t value; // the word in the low half
};
static_assert(sizeof(IndexedWordRequest) == 8);

// Closes the device only if all went well: a failed request of the two commands that use this
// leaves the descriptor open, which is kept as the system has it.
int32_t fpga_closeIfGood(const Fpga& fpga)
{
    return fpga_good(fpga) ? fpga_close(fpga) : fpga.status;
}

// A word that passes through, read into room for all that the driver may fill.
template <class Number> int32_t passed_read(RequestNumber request, Number& number)
{
    WorkRecord<Number> record{};
    const int32_t status = command_readRecord(request, record.data());
    number = record[0];
    return status;
}

} // namespace

// Hands back the request's own result.
int32_t read_device_word_40(uint16_t* word)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    const int result = record_issue(fpga, kWord40Read, word, DEVICE_OK);
    const int32_t status = fpga_close(fpga);
    return status == DEVICE_OK ? result : status;
}

int32_t read_device_word_21(uint16_t* word)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    record_read(fpga, kWord21Read, word);
    return fpga_closeIfGood(fpga);
}

int32_t write_device_word_22(const uint16_t* word)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    record_write(fpga, kWord22Write, word);
    return fpga_closeIfGood(fpga);
}

int32_t read_device_word_48(uint16_t* code)
{
    const int32_t word = command_readWord(kWord48);
    if (word < 0) {
        return word;
    }
    const unsigned held = static_cast<unsigned>(word) & kWord48Code;
    if (held == 0) {
        return DEVICE_UNMAPPED;
    }
    *code = static_cast<uint16_t>(1U << held);
    return DEVICE_OK;
}

int32_t write_device_word_49(const uint16_t* code)
{
    for (unsigned held = 1; held <= kWord48Code; ++held) {
        if (*code == 1U << held) {
            return command_writeValue(request_writing(kWord48), held);
        }
    }
    return DEVICE_BAD_ARGUMENT;
}

int32_t read_indexed_word(IndexedWord* record)
{
    IndexedWordRequest request{record->index, 0};
    const int32_t status = command_readRecord(kIndexedWordRead, &request, FpgaAccess::kWrite);
    if (status == DEVICE_OK) {
        record->value = static_cast<uint16_t>(request.value);
    }
    return status;
}

int32_t write_indexed_word(const IndexedWord* record)
{
    const IndexedWordRequest request{record->index, record->value};
    return command_writeRecord(kIndexedWordWrite, &request);
}

int32_t ownId_read(uint16_t& id)
{
    return passed_read(kOwnIdRead, id);
}

int32_t deviceWord03_read(uint16_t& word)
{
    return passed_read(request_reading(kWord03), word);
}

int32_t unitMapE_read(uint32_t& map)
{
    return passed_read(kUnitMapERead, map);
}

int32_t deviceWord03_setBit6(int32_t flag)
{
    return command_changeWord(kWord03, bits_assign(kWord03Alert, flag == 1));
}
