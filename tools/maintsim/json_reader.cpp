#include "tools/maintsim/json_reader.h"

#include <charconv>

namespace
{

constexpr int kDepthMost = 16;

class Reader
{
  public:
    explicit Reader(std::string_view text) : rest_(text) {}

    bool whole(JsonNode& node)
    {
        if (!value(node, 0)) {
            return false;
        }
        blanks_skip();
        return rest_.empty();
    }

  private:
    void blanks_skip()
    {
        const size_t count = rest_.find_first_not_of(" \t\r\n");
        rest_.remove_prefix(count == std::string_view::npos ? rest_.size() : count);
    }

    bool taken(std::string_view word)
    {
        blanks_skip();
        if (!rest_.starts_with(word)) {
            return false;
        }
        rest_.remove_prefix(word.size());
        return true;
    }

    bool value(JsonNode& node, int depth)
    {
        blanks_skip();
        if (rest_.empty() || depth > kDepthMost) {
            return false;
        }
        switch (rest_.front()) {
        case '"':
            node.kind = JsonNode::Kind::kText;
            return text(node.text);
        case '{':
            return object(node, depth);
        case '[':
            return list(node, depth);
        default:
            return word(node) || number(node);
        }
    }

    bool word(JsonNode& node)
    {
        if (taken("null")) {
            return true;
        }
        const bool yes = taken("true");
        if (!yes && !taken("false")) {
            return false;
        }
        node.kind = JsonNode::Kind::kFlag;
        node.number = yes ? 1 : 0;
        return true;
    }

    bool number(JsonNode& node)
    {
        const char* end = rest_.data() + rest_.size();
        const auto [after, error] = std::from_chars(rest_.data(), end, node.number);
        if (error != std::errc()) {
            return false;
        }
        node.kind = JsonNode::Kind::kNumber;
        rest_.remove_prefix(static_cast<size_t>(after - rest_.data()));
        return true;
    }

    bool list(JsonNode& node, int depth)
    {
        node.kind = JsonNode::Kind::kList;
        taken("[");
        if (taken("]")) {
            return true;
        }
        do {
            if (!value(node.items.emplace_back(), depth + 1)) {
                return false;
            }
        } while (taken(","));
        return taken("]");
    }

    bool object(JsonNode& node, int depth)
    {
        node.kind = JsonNode::Kind::kObject;
        taken("{");
        if (taken("}")) {
            return true;
        }
        do {
            blanks_skip();
            if (!text(node.names.emplace_back()) || !taken(":") ||
                !value(node.items.emplace_back(), depth + 1)) {
                return false;
            }
        } while (taken(","));
        return taken("}");
    }

    bool text(std::string& bytes)
    {
        if (!rest_.starts_with('"')) {
            return false;
        }
        rest_.remove_prefix(1);
        while (!rest_.empty()) {
            const char c = rest_.front();
            rest_.remove_prefix(1);
            if (c == '"') {
                return true;
            }
            if (c != '\\') {
                bytes += c;
            } else if (!escape(bytes)) {
                return false;
            }
        }
        return false;
    }

    // Behind the backslash.
    bool escape(std::string& bytes)
    {
        static constexpr std::string_view kNames = "\"\\/bfnrt";
        static constexpr std::string_view kBytes = "\"\\/\b\f\n\r\t";
        if (rest_.empty()) {
            return false;
        }
        const char name = rest_.front();
        rest_.remove_prefix(1);
        if (name != 'u') {
            const size_t at = kNames.find(name);
            if (at == std::string_view::npos) {
                return false;
            }
            bytes += kBytes[at];
            return true;
        }
        unsigned byte = 0;
        const std::string_view digits = rest_.substr(0, 4);
        const auto [after, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
        // A byte stands for itself; what is more than one byte is no text of ours.
        if (error != std::errc() || after != digits.data() + 4 || byte > 0xFF) {
            return false;
        }
        rest_.remove_prefix(4);
        bytes += static_cast<char>(byte);
        return true;
    }

    std::string_view rest_;
};

} // namespace

const JsonNode* JsonNode::find(std::string_view name, Kind wanted) const
{
    for (size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) {
            return items[i].kind == wanted ? &items[i] : nullptr;
        }
    }
    return nullptr;
}

bool json_read(std::string_view text, JsonNode& node)
{
    node = JsonNode();
    if (Reader(text).whole(node)) {
        return true;
    }
    node = JsonNode(); // not half an object
    return false;
}
