// Reads JSON as maintctl writes it: texts of bytes, whole numbers, no more than a few levels.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct JsonNode {
    enum class Kind : uint8_t { kNull, kFlag, kNumber, kText, kList, kObject };

    Kind kind = Kind::kNull;
    int64_t number = 0;             // of a flag: 0 or 1
    std::string text;               // bytes
    std::vector<JsonNode> items;    // of a list, or of an object
    std::vector<std::string> names; // of an object's items

    // Null: there is no such member, or it is of another kind.
    [[nodiscard]] const JsonNode* find(std::string_view name, Kind wanted) const;
};

// False: the text is not one such value, or more than one; the node is null then.
bool json_read(std::string_view text, JsonNode& node);
