// Commands that are one request: the caller's record or value goes to the driver unchanged. A
// member of the family is its request and the type behind the caller's pointer.
#pragma once

#include "device/access/fpga.h"

// The driver fills the caller's record.
template <FpgaRequest kRequest, class Record> int32_t record_readThrough(Record* record)
{
    return command_readRecord(kRequest, record);
}

// The driver reads the caller's record.
template <FpgaRequest kRequest, class Record> int32_t record_writeThrough(const Record* record)
{
    return command_writeRecord(kRequest, record);
}

// The driver reads a copy: whatever it does to its record, the caller's stays.
template <FpgaRequest kRequest, class Record> int32_t record_writeCopy(const Record* record)
{
    Record copy = *record;
    return command_writeRecord(kRequest, &copy);
}

template <FpgaRequest kRequest, class Record>
int32_t record_writeCopyFailingAsRead(const Record* record)
{
    return status_failingAsRead(record_writeCopy<kRequest>(record));
}

// The caller's value is the request's argument.
template <FpgaRequest kRequest, class Value> int32_t value_writeThrough(const Value* value)
{
    return command_writeValue(kRequest, *value);
}
