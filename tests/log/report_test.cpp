// The message reporter: who gets a message, in which order, and how much of it.
#include <limits>

#include "log/log_bytes.h"
#include "log/report.h"

namespace
{

class Report : public BoardTest
{
  protected:
    Report() { board.file_put(kSystemLog, systemHeader_bytes(0, 0)); }

    Bytes log() const { return board.file_get(kSystemLog); }
};

TEST_F(Report, MaskChoosesConsoleAndLog)
{
    struct Row {
        LogSink mask;
        bool console, log;
    };
    static constexpr Row kRows[] = {
        {0, false, false},
        {1, true, false},
        {2, false, true},
        {3, true, true},
        {4, false, false}, // bits other than the lowest two say nothing
        {5, true, false},
        {6, false, true},
        {7, true, true},
        {0x100, false, false},
        {-1, true, true},
        {-2, false, true},
        {-4, false, false},
        {std::numeric_limits<LogSink>::min(), false, false},
        {std::numeric_limits<LogSink>::max(), true, true},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.mask);
        board.file_put(kSystemLog, systemHeader_bytes(0, 0));
        board.restart();
        report_message(row.mask, "door open");
        Trace expected;
        if (row.console) { // before the log
            expected.emplace_back("puts door open");
        }
        if (row.log) {
            expected = expected + append_calls(0);
        }
        EXPECT_EQ(board.calls, expected);
        EXPECT_EQ(board.console, row.console ? "door open\n" : "");
        EXPECT_EQ(log(), row.log ? systemHeader_bytes(1, 1) + record_line("door open")
                                 : systemHeader_bytes(0, 0));
    }
}

TEST_F(Report, ConsoleShowsAllTheTextAndTheLogItsFirst79Bytes)
{
    const std::string text = "%s %n 100% " + std::string(4990, 'z') + "\xFF";
    report_message(LOG_SINK_BOTH, text.c_str());
    EXPECT_EQ(board.console, text + "\n");
    EXPECT_EQ(log(), systemHeader_bytes(1, 1) + record_line(text));
}

TEST_F(Report, EmptyTextIsALineAndARecord)
{
    report_message(LOG_SINK_BOTH, "");
    EXPECT_EQ(board.console, "\n");
    EXPECT_EQ(log(), systemHeader_bytes(1, 1) + record_line(""));
}

TEST_F(Report, LogGetsTheMessageWhenTheConsoleFails)
{
    board.fail_call(1);
    report_message(LOG_SINK_BOTH, "x");
    EXPECT_EQ(board.calls, (Trace{"puts x -> failed"} + append_calls(0)));
    EXPECT_EQ(log(), systemHeader_bytes(1, 1) + record_line("x"));
}

TEST_F(Report, FailingLogIsReportedOnceOnTheConsoleOnly)
{
    board.file_remove(kSystemLog);
    report_message(LOG_SINK_BOTH, "x");
    EXPECT_EQ(board.calls, (Trace{"puts x"} + kUnlogged));
    board.restart();
    report_message(LOG_SINK_SYSTEM_LOG, "x");
    EXPECT_EQ(board.console, "systemLog_put : 002 : /conf/system.log file open error\n");
    EXPECT_FALSE(board.file_exists(kSystemLog));
}

TEST_F(Report, FormattedMessageGoesToTheSinksOfItsMask)
{
    report_format(LOG_SINK_CONSOLE, "%s : %03d", "path", 7);
    EXPECT_EQ(board.calls, (Trace{"puts path : 007"}));
    board.restart();
    report_format(LOG_SINK_BOTH, "%d%%", 65535);
    EXPECT_EQ(board.calls, (Trace{"puts 65535%"} + append_calls(0)));
    EXPECT_EQ(log(), systemHeader_bytes(1, 1) + record_line("65535%"));
}

TEST_F(Report, ValueInAMessageIsNotAFormat)
{
    report_format(LOG_SINK_BOTH, "name %s", "%s%n%d");
    EXPECT_EQ(board.console, "name %s%n%d\n");
    EXPECT_EQ(log(), systemHeader_bytes(1, 1) + record_line("name %s%n%d"));
}

TEST_F(Report, FormattedMessageHasRoomForTheLongestPath)
{
    const std::string path(4095, 'p');
    report_format(LOG_SINK_CONSOLE, "systemLogFileMake : 005 : %s file header version error",
                  path.c_str());
    EXPECT_EQ(board.console, "systemLogFileMake : 005 : " + path + " file header version error\n");
}

TEST_F(Report, FormattedMessageLongerThanThatIsCut)
{
    const std::string text(10000, 'q');
    report_format(LOG_SINK_CONSOLE, "%s", text.c_str());
    EXPECT_EQ(board.console, text.substr(0, kReportSize - 1) + "\n");
}

} // namespace
