// The failure sweep of the log routines, compared with a table.
#pragma once

#include <optional>
#include <sstream>

#include "board/failure_table.h"
#include "log/console_lines.h"
#include "log/log_bytes.h"

// One failing call: what the routine returns, prints, and leaves as working file (nothing: none).
struct Failure {
    std::string call;
    int32_t result;
    std::string console;
    std::optional<Bytes> file;
};

inline std::vector<Failure> operator+(std::vector<Failure> first, const std::vector<Failure>& then)
{
    first.insert(first.end(), then.begin(), then.end());
    return first;
}

// Lines of a console that cannot be printed, one by one: nothing else changes.
inline std::vector<Failure> unprinted(const std::string& lines, const std::string& console,
                                      int32_t result, const Bytes& file)
{
    std::vector<Failure> rows;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        rows.push_back({"printf " + line, result, console_without(line + "\n", console), file});
    }
    return rows;
}

// Runs the sweep and compares each run with its row. Where the failed call had a file open, the
// very next call closes it, and only the one after that reports.
inline void sweep_expect(Board& board, const std::function<void()>& prepare,
                         const std::function<int32_t()>& action,
                         const std::vector<Failure>& expected)
{
    failureTable_expect(board, prepare, action, expected, [&](const Failure& row, size_t call) {
        const std::string& text = row.call;
        ASSERT_EQ(board.file_exists(kSystemLog), row.file.has_value());
        if (row.file) {
            EXPECT_EQ(board.file_get(kSystemLog), *row.file);
        }
        if (row.result < 0 && text.rfind("puts ", 0) != 0) {
            size_t at = call + 1;
            if (text.find("open ") == std::string::npos) {
                const std::string path =
                    text.substr(text.find('/'), text.rfind(' ') - text.find('/'));
                ASSERT_GT(board.calls.size(), at);
                EXPECT_TRUE(board.calls[at] == "fclose " + path ||
                            board.calls[at] == "close " + path)
                    << board.calls[at];
                ++at;
            }
            ASSERT_GT(board.calls.size(), at);
            ASSERT_EQ(board.calls[at].substr(0, 5), "puts ");
            EXPECT_NE(row.console.find(board.calls[at].substr(5) + "\n"), std::string::npos);
        }
    });
}
