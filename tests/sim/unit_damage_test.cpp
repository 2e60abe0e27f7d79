// Folders that are no unit, or a damaged one: one clear line, and nothing is changed.
#include <fcntl.h>
#include <sys/stat.h>

#include "sim/unit_fixture.h"

namespace
{

TEST_F(UnitTest, ThatIsNoneIsNamed)
{
    EXPECT_EQ(refusal(top + "/nowhere"), top + "/nowhere: no simulated unit; `new` makes one");
    std::filesystem::create_directory(top + "/empty");
    EXPECT_EQ(refusal(top + "/empty"), top + "/empty: no simulated unit; `new` makes one");
    content_put(folder + "/unit", "maintsim unit 2\n");
    EXPECT_EQ(refusal(folder), folder + ": a unit of another version: maintsim unit 2");
    content_put(folder + "/unit", "");
    EXPECT_EQ(refusal(folder), folder + ": not a simulated unit");
    std::filesystem::remove(folder + "/unit");
    std::filesystem::create_directory(folder + "/unit");
    EXPECT_EQ(refusal(folder), folder + "/unit: Is a directory");
}

// As it was given, whole, and in one line.
TEST_F(UnitTest, IsNamedAsItWasGiven)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(top);
    EXPECT_EQ(refusal("nowhere"), "nowhere: no simulated unit; `new` makes one");
    const std::string last = "\xC3\xA4" + std::string(100, 'x');
    EXPECT_EQ(refusal("no\nwhere\x7F" + last),
              "no?where?" + last + ": no simulated unit; `new` makes one");
    Unit* unit = open("unit");
    Unit* other = open("unit");
    number_write(other, 1, 5);
    unit_close(other);
    const std::string journal = content("unit/journal");
    std::string bytes = journal;
    bytes[4096 + 40] = '\xFF';
    content_put("unit/journal", bytes);
    EXPECT_EQ(refusal("unit"), "unit/journal: damaged: entry 1: damaged");
    bytes[0] = 'M';
    content_put("unit/journal", bytes);
    EXPECT_EQ(refusal("../" + std::filesystem::path(top).filename().string() + "/unit/"),
              "../" + std::filesystem::path(top).filename().string() +
                  "/unit//journal: not the journal of a simulated unit");
    content_put("unit/journal", journal);
    content_put("unit/state", "");
    EXPECT_EQ(refusal("unit"), "unit/state: not the state of a simulated unit");
    content_put("unit/unit", "");
    EXPECT_EQ(refusal("unit"), "unit: not a simulated unit");
    content_put("unit/unit", "maintsim unit 3\n");
    EXPECT_EQ(refusal("unit"), "unit: a unit of another version: maintsim unit 3");
    std::filesystem::remove_all("unit/unit");
    std::filesystem::create_directory("unit/unit");
    EXPECT_EQ(refusal("unit"), "unit/unit: Is a directory");
    std::string error;
    const std::vector<std::string> items(40000, "rule.1=" + std::string(160, 'a'));
    EXPECT_FALSE(unit_put(unit, items, error));
    EXPECT_EQ(error, "unit: Message too long");
    unit_close(unit);
    std::filesystem::current_path(before);
}

TEST_F(UnitTest, WithoutItsFilesIsNamed)
{
    const std::string state = content(folder + "/state");
    std::filesystem::rename(folder + "/state", top + "/state");
    EXPECT_EQ(refusal(folder), folder + "/state: No such file or directory");
    std::filesystem::rename(top + "/state", folder + "/state");
    std::filesystem::rename(folder + "/journal", top + "/journal");
    EXPECT_EQ(refusal(folder), folder + "/journal: No such file or directory");
    std::filesystem::create_directory(folder + "/journal");
    EXPECT_EQ(refusal(folder), folder + "/journal: Is a directory");
    std::filesystem::remove(folder + "/journal");
    alarm(20); // nobody waits for the other end of a pipe
    ASSERT_EQ(mkfifo((folder + "/journal").c_str(), 0600), 0);
    EXPECT_EQ(refusal(folder), folder + "/journal: damaged: not a file of 4198400 bytes");
    std::filesystem::remove(folder + "/journal");
    std::filesystem::rename(folder + "/unit", top + "/unit_file");
    ASSERT_EQ(mkfifo((folder + "/unit").c_str(), 0600), 0);
    EXPECT_EQ(refusal(folder), folder + ": not a simulated unit");
    std::filesystem::rename(top + "/unit_file", folder + "/unit");
    alarm(0);
    std::filesystem::rename(top + "/journal", folder + "/journal");
    EXPECT_EQ(refusal(folder), "opened");
}

TEST_F(UnitTest, WithADamagedStateIsNamed)
{
    const std::string path = folder + "/state";
    const std::string good = content(path);
    const struct {
        std::string text;
        const char* fault;
    } kStates[] = {
        {"", "not the state of a simulated unit"},
        {"hello\n", "not the state of a simulated unit"},
        {"maintsim state 2 generation 1\n", "of another version: maintsim state 2 generation 1"},
        {"maintsim state 1 generation x sequence 1 items 0\n", "damaged: line 1"},
        {"maintsim state 1 generation 1 sequence 1 items 12", "damaged: line 1"},
        {good.substr(0, good.size() - 1), "damaged: line 13 has no end"},
        {good.substr(0, good.rfind("clock")), "damaged: 11 items instead of 12"},
        {good + "word.0x6B29=1\n", "damaged: 13 items instead of 12"},
        {good + "word.0x6B29=x\n", "damaged: line 14: word.0x6B29=x: not a number: x"},
        {good + "\n", "damaged: line 14: : not of the form ITEM=VALUE"},
        {"maintsim state 1 generation 3" + good.substr(good.find(" sequence")),
         "damaged: of generation 3, and the journal is of 1"},
    };
    for (const auto& [bytes, fault] : kStates) {
        content_put(path, bytes);
        EXPECT_EQ(refusal(folder), path + ": " + fault);
        EXPECT_EQ(content(path), bytes);
    }
    content_put(path, good);
    EXPECT_EQ(refusal(folder), "opened");
}

TEST_F(UnitTest, WithADamagedJournalIsNamed)
{
    Unit* unit = open(folder);
    for (uint32_t i = 0; i < 10; ++i) {
        number_write(unit, 1, i);
    }
    unit_close(unit);
    const std::string path = folder + "/journal";
    const std::string good = content(path);
    const auto refusal_with = [&](size_t at, char byte) {
        std::string bytes = good;
        bytes[at] = byte;
        content_put(path, bytes);
        return refusal(folder);
    };
    EXPECT_EQ(refusal_with(0, 'M'), path + ": not the journal of a simulated unit");
    EXPECT_EQ(refusal_with(16, 2), path + ": of version 2, not 1");
    EXPECT_EQ(refusal_with(20, 1), path + ": damaged: 4198400 bytes long");
    // The second entry's: each has 88 bytes.
    for (size_t at = 4096 + 88; at < 4096 + 2 * 88; ++at) {
        ASSERT_EQ(refusal_with(at, static_cast<char>(good[at] + 1)),
                  path + ": damaged: entry 2: damaged");
    }
    // An entry in another one's place, and a length beyond the file.
    std::string twice = good;
    twice.replace(4096 + 88, 88, good, 4096, 88);
    content_put(path, twice);
    EXPECT_EQ(refusal(folder), path + ": damaged: entry 2: damaged");
    std::string beyond = good;
    beyond.replace(128, 4, "\xF8\xFF\xFF\xFF");
    content_put(path, beyond);
    EXPECT_EQ(refusal(folder), path + ": damaged: its length is 4294967288");
    content_put(path, good.substr(0, good.size() - 1));
    EXPECT_EQ(refusal(folder), path + ": damaged: not a file of 4198400 bytes");
    content_put(path, "");
    EXPECT_EQ(refusal(folder), path + ": damaged: not a file of 4198400 bytes");
    content_put(path, good);
    EXPECT_EQ(refusal(folder), "opened");
}

TEST_F(UnitTest, WithAnyBytesIsOpenedOrNamed)
{
    Unit* unit = open(folder);
    RequestDraw draw(1);
    for (int i = 0; i < 30; ++i) {
        DrawnRequest drawn = draw.request();
        const RequestForm* form = requestForm_find(drawn.number);
        unit_request(unit, UnitDevice::kFpga, drawn.number,
                     form != nullptr && form->argument == Argument::kValue
                         ? drawn.value
                         : reinterpret_cast<unsigned long>(drawn.record.data()));
    }
    std::string error;
    ASSERT_TRUE(unit_put(unit, {"word.0x6B29=1", "fail.0x6B42=1,2,EIO"}, error)) << error;
    unit_close(unit);
    const char* const names[] = {"journal", "journal", "state", "unit"};
    size_t opened = 0;
    size_t refused = 0;
    for (int i = 0; i < 10000; ++i) {
        const std::string path = folder + "/" + names[draw.below(4)];
        const int file = ::open(path.c_str(), O_RDWR);
        char good[8192];
        const auto size = static_cast<size_t>(pread(file, good, sizeof good, 0));
        std::string bytes(good, size);
        for (uint32_t change = 0; change <= draw.below(4); ++change) {
            // The head of the journal has little more than a hundred bytes that are used.
            const size_t limit = draw.below(16) == 0 ? std::min<size_t>(size, 256) : size;
            bytes[draw.below(static_cast<uint32_t>(limit))] = static_cast<char>(draw.number());
        }
        ASSERT_EQ(pwrite(file, bytes.data(), size, 0), static_cast<ssize_t>(size));
        const std::string said = refusal(folder);
        if (said == "opened") {
            ++opened;
        } else {
            ++refused;
            ASSERT_TRUE(said.starts_with(folder)) << said;
            ASSERT_EQ(said.find_first_of("\n\r\x1B"), std::string::npos) << said;
            char left[8192];
            ASSERT_EQ(pread(file, left, size, 0), static_cast<ssize_t>(size));
            // The lock is made anew where it lies; all else is as it was found.
            const size_t from = path.ends_with("journal") ? 4096 : 0;
            ASSERT_EQ(std::string(left + from, size - from), bytes.substr(from));
        }
        ASSERT_EQ(pwrite(file, good, size, 0), static_cast<ssize_t>(size));
        close(file);
    }
    EXPECT_GT(opened, 1000U);
    EXPECT_GT(refused, 1000U);
    EXPECT_EQ(refusal(folder), "opened");
}

// A process that has the unit open meets the damage at its next request.
TEST_F(UnitTest, DamagedWhileItRunsFailsRequests)
{
    Unit* unit = open(folder);
    Unit* other = open(folder);
    number_write(other, 1, 5);
    const int file = ::open((folder + "/journal").c_str(), O_WRONLY);
    ASSERT_EQ(pwrite(file, "\xFF", 1, 4096 + 40), 1);
    close(file);
    testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i) {
        errno = 0;
        EXPECT_EQ(number_write(unit, 1, 6), -1);
        EXPECT_EQ(errno, EIO);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "maintsim: " + folder + "/journal: damaged: entry 1: damaged\n"); // once
    unit_close(unit);
    unit_close(other);
}

TEST_F(UnitTest, ThatCannotBeWrittenIsNamed)
{
    std::filesystem::permissions(top, std::filesystem::perms(0755));
    std::filesystem::permissions(folder + "/journal", std::filesystem::perms(0444));
    const pid_t process = start([&] {
        // Root may write everywhere.
        if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) {
            return 1;
        }
        return refusal(folder) == folder + "/journal: Permission denied" ? 0 : 2;
    });
    EXPECT_EQ(end(process), 0);
}

} // namespace
