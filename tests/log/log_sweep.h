// The failure sweep of the log routines, compared with a table.
#pragma once

#include <optional>

#include "log/log_bytes.h"

// One failing call: what the routine returns, prints, and leaves as working file (nothing: none).
struct Failure {
    const char* call;
    int32_t result;
    std::string console;
    std::optional<Bytes> file;
};

// Runs the sweep and compares each run with its row. Where the failed call had a file open, the
// very next call closes it, and only the one after that reports.
inline void sweep_expect(Board& board, const std::function<void()>& prepare,
                         const std::function<int32_t()>& action,
                         const std::vector<Failure>& expected)
{
    size_t runs = 0;
    failure_sweep(
        board, prepare, action, [&](size_t call, const std::string& text, int32_t result) {
            ++runs;
            ASSERT_LT(call, expected.size()) << "no row for this call";
            const Failure& row = expected[call];
            EXPECT_EQ(text, row.call);
            EXPECT_EQ(result, row.result);
            EXPECT_EQ(board.console, row.console);
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
    EXPECT_EQ(runs, expected.size());
}
