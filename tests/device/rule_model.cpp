#include "device/rule_model.h"

#include "device/record_bytes.h"

Bytes sent_for(const Bytes& from)
{
    Bytes sent(80, '\0');
    uint32_t present = 0;
    bytes_put(sent, 0, from.substr(0, 1));
    sent[76] = 1;
    if (from[2] != 0) { // the first byte alone decides
        present += 2;
        bytes_put(sent, 8, {from[5], from[4], from[3], from[2]});
        sent[12] = from[26];
    }
    if (from[6] != 0) {
        present += 4;
        bytes_put(sent, 16, {from[9], from[8], from[7], from[6]});
        sent[20] = from[27];
    }
    for (const size_t which : {0U, 1U}) {
        const Bytes address = from.substr(10 + 6 * which, 6);
        bytes_put(sent, 48 + 6 * which, address);
        sent[66 + which] = address == Bytes(6, '\0') ? 0 : 1;
        const Bytes word = from.substr(28 + 2 * which, 2);
        bytes_put(sent, 22 + 2 * which, word);
        if (word != le16(0)) {
            present += 8U << which;
            sent[62 + which] = from[32 + which];
        }
    }
    bytes_put(sent, 4, from.substr(22, 2));
    present += word_at(from, 22) != 0 ? 1 : 0;
    const uint8_t code = byte_at(from, 24);
    if (code == 1 || code == 2 || code == 3 || code == 4) {
        present += 0x200;
        sent[33] = "\x00\x01\x02\x04\x08"[code];
    }
    sent[26] = from[25];
    present += from[25] != 0 ? 0x20 : 0;
    for (size_t i = 0; i < 4; ++i) {
        sent[36 + i] = from[34 + i] != 0 ? 1 : 0;
    }
    bytes_put(sent, 2, le16(present));
    return sent;
}

Bytes reported_for(const Bytes& held)
{
    Bytes reported(kCallersSize, '\0');
    reported[0] = held[0];
    reported[1] = held[76];
    if (held[76] == 0) {
        return reported;
    }
    const auto present = [&](unsigned bit) { return (word_at(held, 2) >> bit) % 2 == 1; };
    const auto copy_if = [&](bool copied, size_t to, size_t from, size_t count) {
        if (copied) {
            bytes_put(reported, to, held.substr(from, count));
        }
    };
    for (size_t i = 0; i < 4; ++i) {
        copy_if(present(1), 2 + i, 11 - i, 1);
        copy_if(present(2), 6 + i, 19 - i, 1);
        reported[34 + i] = held[36 + i] == 0 ? 0 : 1;
    }
    copy_if(present(1), 26, 12, 1);
    copy_if(present(2), 27, 20, 1);
    copy_if(held[66] != 0, 10, 48, 6);
    copy_if(held[67] != 0, 16, 54, 6);
    copy_if(present(0), 22, 4, 2);
    copy_if(present(5), 25, 26, 1);
    copy_if(present(3), 28, 22, 2);
    copy_if(present(3), 32, 62, 1);
    copy_if(present(4), 30, 24, 2);
    copy_if(present(4), 33, 63, 1);
    if (present(9)) {
        const Bytes codes("\0\1\2\1\3\1\2\1\4\1\2\1\3\1\2\1", 16);
        reported[24] = codes[byte_at(held, 33) % 16];
    }
    return reported;
}

Bytes normal_form(Bytes record)
{
    const auto clear = [&](size_t offset, size_t count) {
        bytes_put(record, offset, Bytes(count, '\0'));
    };
    record[1] = 1;
    if (record[2] == 0) {
        clear(2, 4);
        clear(26, 1);
    }
    if (record[6] == 0) {
        clear(6, 4);
        clear(27, 1);
    }
    if (byte_at(record, 24) > 4) {
        clear(24, 1);
    }
    if (word_at(record, 28) == 0) {
        clear(32, 1);
    }
    if (word_at(record, 30) == 0) {
        clear(33, 1);
    }
    for (size_t i = 34; i < 38; ++i) {
        record[i] = record[i] != 0 ? 1 : 0;
    }
    clear(38, kCallersSize - 38);
    return record;
}
