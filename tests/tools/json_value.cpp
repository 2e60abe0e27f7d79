#include "tools/json_value.h"

namespace
{

class Parser
{
  public:
    explicit Parser(const std::string& text) : text_(text) {}

    JsonValue whole()
    {
        JsonValue value = parse();
        if (at_ != text_.size()) {
            fail("more behind the value");
        }
        return value;
    }

  private:
    [[nodiscard]] char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
    bool take(const std::string& word)
    {
        if (text_.compare(at_, word.size(), word) != 0) {
            return false;
        }
        at_ += word.size();
        return true;
    }
    void need(const std::string& word)
    {
        if (!take(word)) {
            fail(word + " is missing");
        }
    }
    void fail(const std::string& what)
    {
        ADD_FAILURE() << "no JSON, " << what << " at " << at_ << ": "
                      << text_.substr(at_ < 40 ? 0 : at_ - 40, 80);
        at_ = text_.size();
    }

    JsonValue parse()
    {
        JsonValue value;
        if (take("{")) {
            object(value);
        } else if (take("[")) {
            array(value);
        } else if (peek() == '"') {
            value.type = JsonValue::kText;
            value.text = string();
        } else if (take("true") || take("false")) {
            value.type = JsonValue::kBool;
            value.number = text_[at_ - 2] == 'u' ? 1 : 0;
        } else if (!take("null")) {
            number(value);
        }
        return value;
    }

    void object(JsonValue& value)
    {
        value.type = JsonValue::kObject;
        if (take("}")) {
            return;
        }
        do {
            const std::string key = string();
            need(":");
            if (!value.members.emplace(key, parse()).second) {
                fail("a second member " + key);
            }
        } while (take(","));
        need("}");
    }

    void array(JsonValue& value)
    {
        value.type = JsonValue::kArray;
        if (take("]")) {
            return;
        }
        do {
            value.items.push_back(parse());
        } while (take(","));
        need("]");
    }

    void number(JsonValue& value)
    {
        value.type = JsonValue::kNumber;
        const size_t begin = at_;
        take("-");
        const size_t digits = at_;
        while (peek() >= '0' && peek() <= '9') {
            ++at_;
        }
        if (at_ == digits || (at_ > digits + 1 && text_[digits] == '0')) {
            fail("not a number");
            return;
        }
        value.number = std::stoll(text_.substr(begin, at_ - begin));
    }

    std::string string()
    {
        std::string result;
        need("\"");
        while (at_ < text_.size() && peek() != '"') {
            const char character = text_[at_++];
            if (character != '\\') {
                if (character < ' ' || character > '~') {
                    fail("a character that is not escaped");
                }
                result += character;
            } else if (take("u")) {
                result += static_cast<char>(std::stoul(text_.substr(at_, 4), nullptr, 16));
                at_ += 4;
            } else if (peek() == '"' || peek() == '\\') {
                result += text_[at_++];
            } else {
                fail("an unknown escape");
            }
        }
        need("\"");
        return result;
    }

    const std::string& text_;
    size_t at_ = 0;
};

} // namespace

JsonValue json_parse(const std::string& text)
{
    return Parser(text).whole();
}
