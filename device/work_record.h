// Room for what the driver may fill when a command reads one of its words for itself: how much that
// is, is the driver's; this is the size of the largest record known.
#pragma once

#include <array>
#include <cstddef>

constexpr std::size_t kWorkRecordSize = 496;

template <class Word> using WorkRecord = std::array<Word, kWorkRecordSize / sizeof(Word)>;
