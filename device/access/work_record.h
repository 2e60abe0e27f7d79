// Room for what a device command, or the driver behind it, may fill when one of its words is read
// from within: how much that is, is theirs; this is the size of the largest record known.
#pragma once

#include <array>
#include <cstddef>

constexpr std::size_t kWorkRecordSize = 496;

template <class Word> using WorkRecord = std::array<Word, kWorkRecordSize / sizeof(Word)>;
