// Files of random bytes: the INI reader agrees with a model of it that works on whole strings, and
// writes nowhere but into the value.
#include <algorithm>
#include <optional>
#include <random>
#include <vector>

#include "board/board_test.h"
#include "board/share.h"
#include "maint/ini_file.h"

namespace
{

using namespace std::string_literals;

const Bytes kDrawnSite = hex("5B B5 F2 C5 C0 49 44 23");

// The model ------------------------------------------------------------------------------------

// The file as its reader sees it: up to 1023 bytes or a newline at a time, and of those the text
// before the first zero byte.
std::vector<Bytes> lines_of(const Bytes& file)
{
    std::vector<Bytes> lines;
    Bytes line;
    for (const char byte : file) {
        line += byte;
        if (byte == '\n' || line.size() == 1023) {
            lines.push_back(line);
            line.clear();
        }
    }
    if (!line.empty()) {
        lines.push_back(line);
    }
    for (Bytes& each : lines) {
        each = each.substr(0, each.find('\0'));
    }
    return lines;
}

bool starts(const Bytes& line, const Bytes& text)
{
    return line.substr(0, text.size()) == text;
}

std::optional<Bytes> model(const std::string& path, const Bytes& file, const Bytes& section,
                           const Bytes& key)
{
    const bool config = path == "/conf/config";
    const std::vector<Bytes> lines = lines_of(file);
    size_t at = 0;
    if (!section.empty()) {
        while (at < lines.size() && !starts(lines[at], section)) {
            ++at;
        }
        ++at;
    }
    for (; at < lines.size(); ++at) {
        const Bytes& line = lines[at];
        if (starts(line, kDrawnSite)) {
            break;
        }
        if (starts(line, key)) {
            const size_t open = line.find(config ? '\'' : '=');
            if (open == Bytes::npos) {
                break;
            }
            const size_t close = line.find(config ? '\'' : '\n', open + 1);
            if (close == Bytes::npos) {
                break;
            }
            return line.substr(open + 1, close - open - 1);
        }
    }
    return std::nullopt;
}

TEST(IniFileModel, AgreesWithHandPickedFiles)
{
    EXPECT_EQ(model("/conf/config", "KEY='a=b' c\n", "", "KEY"), "a=b");
    EXPECT_EQ(model("/conf/config", "KEY=a\nKEY='b'\n", "", "KEY"), std::nullopt);
    EXPECT_EQ(model("/tmp/x", "KEY = v\n", "", "KEY"), " v");
    EXPECT_EQ(model("/tmp/x", "KEY=v", "", "KEY"), std::nullopt);
    EXPECT_EQ(model("/tmp/x", "KEY=v\n[A]\nKEY=w\n", "[A", "KEY"), "w");
    EXPECT_EQ(model("/tmp/x", kDrawnSite + "\nKEY=v\n", "", "KEY"), std::nullopt);
    EXPECT_EQ(model("/tmp/x", Bytes(1023, 'x') + "KEY=v\n", "", "KEY"), "v");
    EXPECT_EQ(model("/tmp/x", "KEY=v\0\n"s, "", "KEY"), std::nullopt);
}

// The comparison -------------------------------------------------------------------------------

class Dice
{
  public:
    explicit Dice(unsigned seed) : engine_(seed) {}
    size_t below(size_t limit) { return engine_() % limit; }
    template <class T> const T& one_of(const std::vector<T>& all) { return all[below(all.size())]; }

  private:
    std::mt19937 engine_;
};

// Mostly the pieces that the reader looks for, so that all its ways are taken.
Bytes token_file(Dice& dice)
{
    static const std::vector<Bytes> kTokens{"KEY",
                                            "KE",
                                            "KEYS",
                                            "'",
                                            "'",
                                            "=",
                                            "=",
                                            "\n",
                                            "\n",
                                            "\n",
                                            "\n",
                                            "='v'",
                                            "=v",
                                            "[A",
                                            "[A]",
                                            "\r\n",
                                            "\0"s,
                                            " ",
                                            "\xFF",
                                            "KEY='1'\n",
                                            "KEY=2\n",
                                            "\n[A]\n",
                                            kDrawnSite,
                                            "\n" + kDrawnSite + "01]\n",
                                            kDrawnSite.substr(0, 7)};
    Bytes file;
    for (size_t count = dice.below(40); count > 0; --count) {
        if (dice.below(20) == 0) {
            file += Bytes(dice.below(8) == 0 ? dice.below(3000) : 1015 + dice.below(12), 'x');
        }
        file += dice.one_of(kTokens);
    }
    return file;
}

Bytes byte_file(Dice& dice)
{
    Bytes file(dice.below(5000), '\0');
    for (char& byte : file) {
        static const std::vector<char> kFrequent{'\'', '=', '\n', 'K'};
        byte = dice.below(8) == 0 ? dice.one_of(kFrequent) : static_cast<char>(dice.below(256));
    }
    return file;
}

class IniFileRandom : public BoardTest
{
  protected:
    // Looks up every combination in the file; counts the values found.
    void compare(const std::string& path, const Bytes& file, const std::vector<Bytes>& sections,
                 const std::vector<Bytes>& keys)
    {
        constexpr size_t kGuard = 64;
        board.file_put(path, file);
        for (const Bytes& section : sections) {
            for (const Bytes& key : keys) {
                board.restart();
                Bytes guarded(kGuard + INI_VALUE_SIZE + kGuard, '\xA5');
                const Bytes untouched = guarded;
                const int32_t result = GetIniFileString(path.c_str(), section.c_str(), key.c_str(),
                                                        guarded.data() + kGuard);
                const std::optional<Bytes> expected = model(path, file, section, key);
                found += expected.has_value() ? 1 : 0;
                Bytes after = untouched;
                const Bytes value = expected.value_or("") + "\0"s;
                std::copy(value.begin(), value.end(), after.begin() + kGuard);
                ASSERT_EQ(result, expected ? 0 : -1) << testing::PrintToString(file);
                ASSERT_EQ(guarded, after) << testing::PrintToString(file);
                ASSERT_EQ(board.open_descriptors(), 0U);
                ASSERT_EQ(board.held_locks(), 0U);
            }
        }
    }

    size_t found = 0;
};

const uint32_t kRounds = share_of(1500);
const std::vector<std::string> kPaths{"/conf/config", "/tmp/x"};

TEST_F(IniFileRandom, TokensInAnyOrder)
{
    Dice dice(20060301);
    for (uint32_t round = 0; round < kRounds; ++round) {
        SCOPED_TRACE(round);
        compare(dice.one_of(kPaths), token_file(dice), {"", "[A", kDrawnSite + "01"},
                {"", "KEY", "["});
        if (HasFatalFailure()) {
            return;
        }
    }
    EXPECT_GT(found, kRounds) << "enough of them hold a value";
}

TEST_F(IniFileRandom, AnyBytes)
{
    Dice dice(9507);
    for (uint32_t round = 0; round < kRounds; ++round) {
        SCOPED_TRACE(round);
        const Bytes file = byte_file(dice);
        // Texts that the file does hold somewhere, so that they are found at a line's start, too.
        const char picked = file.empty() ? 'x' : file[dice.below(file.size())];
        const Bytes one(picked == '\0' ? 0 : 1, picked);
        compare(dice.one_of(kPaths), file, {"", one}, {"", "K", one});
        if (HasFatalFailure()) {
            return;
        }
    }
    EXPECT_GT(found, kRounds / 3 * 2) << "enough of them hold a value";
}

} // namespace
