// Values of fields as people write them, and back.
#pragma once

#include <cstddef>
#include <cstdint>

#include "catalogue/catalogue.h"

// The longest value is 496 bytes, as pairs of digits.
constexpr size_t kValueMax = 1024;

// A field's value, all its elements: "5", "0x001f", "1,0,1", "10.0.0.1", "in,out"; with a
// terminating zero. What is written can be read again, if the command can take it.
void value_print(const Field& field, const uint8_t* record, char (&text)[kValueMax]);

// Reads a value into the record, all elements or the one given (-1: all). Null, or what is wrong
// with it: the end of a sentence, such as "is not within 0 to 31". A value that is refused changes
// nothing.
const char* value_read(const Field& field, int element, const char* text, uint8_t* record,
                       char (&reason)[kValueMax]);

// Whether an element of the field is a number of the record, and not bytes that belong together.
bool value_isNumber(const Field& field);

// One element that is a number.
uint32_t value_number(const Field& field, unsigned element, const uint8_t* record);

// The name of a code; null: it has none.
const char* value_codeName(const Field& field, uint32_t code);

// How many bytes of a text are left when the zeros at its end are taken away.
size_t value_textLength(const Field& field, const uint8_t* record);

// A number as people write it: decimal, or hexadecimal with 0x. Larger ones than 32 bits have are
// read as some number above that. A decimal number with a 0 before it is none: some would take it
// for an octal one.
bool number_parse(const char* text, size_t length, uint64_t& number);
