// The product takes the images that systemlog_image makes, and the tool reads what the product
// wrote.
#include <cstdlib>

#include "log/console_lines.h"
#include "log/log_bytes.h"
#include "maint/maintlog.h"
#include "maint/system_log.h"

namespace
{

// SYSTEMLOG_IMAGE is the tool's path, from CMake, behind an emulator's where there is one.
int tool_run(const std::string& arguments)
{
    return std::system((SYSTEMLOG_IMAGE " " + arguments).c_str());
}

class SystemlogImage : public BoardTest, public testing::WithParamInterface<int>
{
  protected:
    void make(int count) const
    {
        board.file_put(kFlashImage, "");
        ASSERT_EQ(
            tool_run("make " + board.host(kFlashImage).string() + " " + std::to_string(count)), 0);
    }
};

TEST_P(SystemlogImage, IsRestoredAtAColdStart)
{
    make(GetParam());
    ASSERT_EQ(zev_maintlog_init(), 0);
    EXPECT_NE(board.console.find(kCold), std::string::npos);
    EXPECT_EQ(board.console.find("error"), std::string::npos) << board.console;
    EXPECT_EQ(board.file_get(kSystemLog), board.file_get(kFlashImage));
    EXPECT_EQ(tool_run("check " + board.host(kFlashImage).string() + " >/dev/null"), 0);
}

INSTANTIATE_TEST_SUITE_P(Counts, SystemlogImage, testing::Values(0, 1, 640, 1000, 1001, 1640));

TEST_F(SystemlogImage, IsRefusedAfterOneByteChanged)
{
    make(640);
    Bytes image = board.file_get(kFlashImage);
    image[12 + 50] ^= 1;
    board.file_put(kFlashImage, image);
    ASSERT_EQ(zev_maintlog_init(), 0);
    EXPECT_NE(board.console.find(kMake006), std::string::npos);
    EXPECT_EQ(board.file_get(kSystemLog), fresh_log());
    EXPECT_NE(tool_run("check " + board.host(kFlashImage).string() + " 2>/dev/null"), 0);
}

TEST_F(SystemlogImage, ToolShowsTheRecordThatTheLogWriterAppended)
{
    make(1640);
    ASSERT_EQ(zev_maintlog_init(), 0);
    ASSERT_EQ(systemLog_put("the newest record"), 0);
    const std::string shown = board.host("/tmp/shown").string();
    ASSERT_EQ(tool_run("show " + board.host(kSystemLog).string() + " >" + shown), 0);
    const std::string text = board.file_get("/tmp/shown");
    EXPECT_NE(text.find("location 641 "), std::string::npos) << text;
    EXPECT_NE(text.find("    1  slot 641  "), std::string::npos) << text;
    EXPECT_NE(text.find(" 1000  slot 640  2006/03/01 09:05:07 the newest record\n"),
              std::string::npos)
        << text;
}

} // namespace
