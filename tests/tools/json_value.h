// Reads JSON back, as strictly as its grammar; what is no JSON fails the test.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

struct JsonValue {
    enum Type { kNull, kBool, kNumber, kText, kArray, kObject };
    Type type = kNull;
    int64_t number = 0; // of kBool, too
    std::string text;
    std::vector<JsonValue> items;
    std::map<std::string, JsonValue> members;

    [[nodiscard]] bool has(const std::string& key) const { return members.count(key) != 0; }
    // A member; one that is missing fails the test.
    const JsonValue& operator[](const std::string& key) const
    {
        static const JsonValue kNone;
        const auto member = members.find(key);
        if (member == members.end()) {
            ADD_FAILURE() << "no member " << key;
            return kNone;
        }
        return member->second;
    }
};

JsonValue json_parse(const std::string& text);
