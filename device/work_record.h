// Room for what a command's driver request may fill: callers of the device commands reserve as
// much, the size of the largest record.
#pragma once

#include <array>
#include <cstddef>

constexpr std::size_t kWorkRecordSize = 496;

template <class Word> using WorkRecord = std::array<Word, kWorkRecordSize / sizeof(Word)>;
