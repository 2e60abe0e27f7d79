// The identifiers of peers, as the commands on one peer's entry take them.
#pragma once

#include <cstdint>

constexpr uint32_t kPeerIdMin = 1;
constexpr uint32_t kPeerIdMax = 30;

constexpr bool peerId_isValid(uint32_t id)
{
    return id >= kPeerIdMin && id <= kPeerIdMax;
}
