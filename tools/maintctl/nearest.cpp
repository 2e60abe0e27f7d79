#include "tools/maintctl/nearest.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr size_t kLongest = 40;

// How many characters have to be changed, put in or taken out.
unsigned edits_between(const char* typed, size_t length, const char* name)
{
    unsigned row[kLongest + 1];
    for (unsigned i = 0; i <= length; ++i) {
        row[i] = i;
    }
    for (; *name != '\0'; ++name) {
        unsigned diagonal = row[0]++;
        for (size_t i = 0; i < length; ++i) {
            const unsigned kept = diagonal + (text_lower(typed[i]) == text_lower(*name) ? 0U : 1U);
            diagonal = row[i + 1];
            row[i + 1] = std::min({kept, row[i] + 1, diagonal + 1});
        }
    }
    return row[length];
}

} // namespace

void nearest_offer(Nearest& nearest, const char* name)
{
    const size_t length = strlen(nearest.typed);
    if (length < 2 || length > kLongest) {
        return;
    }
    unsigned distance = edits_between(nearest.typed, length, name);
    if (length >= 3 && text_has(name, nearest.typed, length)) {
        distance = 1;
    } else if (distance > 1 + length / 3) {
        return;
    }
    for (unsigned i = 0; i < kNearestMax; ++i) {
        if (nearest.names[i] == nullptr || distance < nearest.distances[i]) {
            std::swap(nearest.names[i], name);
            std::swap(nearest.distances[i], distance);
            if (name == nullptr) {
                return;
            }
        }
    }
}

void nearest_add(const Nearest& nearest, Text& text)
{
    const char* before = "; nearest: ";
    for (unsigned i = 0; i < kNearestMax; ++i) {
        // One that is much farther than the first is not what was meant.
        if (nearest.names[i] != nullptr && nearest.distances[i] <= nearest.distances[0] + 2) {
            text_add(text, "%s%s", before, nearest.names[i]);
            before = ", ";
        }
    }
}
