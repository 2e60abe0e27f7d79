// The failure sweep, compared with a table.
#pragma once

#include <string>
#include <vector>

#include "board/board_test.h"

// Runs the sweep and compares each run with its row, which has at least the failed call (`call`),
// what the action returns (`result`) and what is printed (`console`). Rows and calls must match in
// order and number. `check` looks at what else the row says.
template <class Row, class Check>
void failureTable_expect(Board& board, const std::function<void()>& prepare,
                         const std::function<int32_t()>& action, const std::vector<Row>& rows,
                         Check check)
{
    size_t runs = 0;
    failure_sweep(board, prepare, action,
                  [&](size_t call, const std::string& text, int32_t result) {
                      ++runs;
                      ASSERT_LT(call, rows.size()) << "no row for this call";
                      EXPECT_EQ(text, rows[call].call);
                      EXPECT_EQ(result, rows[call].result);
                      EXPECT_EQ(board.console, rows[call].console);
                      check(rows[call], call);
                  });
    EXPECT_EQ(runs, rows.size());
}
