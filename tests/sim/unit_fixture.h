// Units in a private folder.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include "sim/unit_state_fixture.h"
#include "tools/maintsim/unit_tool.h"

class UnitTest : public testing::Test
{
  protected:
    UnitTest()
    {
        char name[] = "/tmp/maintsim_test_XXXXXX";
        top = mkdtemp(name);
        folder = make("unit");
    }
    ~UnitTest() override { std::filesystem::remove_all(top); }

    [[nodiscard]] std::string make(const std::string& name, const UnitState& state = {}) const
    {
        std::string path = top + "/" + name;
        std::filesystem::create_directory(path);
        std::string error;
        EXPECT_TRUE(unit_create(path, state, error)) << error;
        return path;
    }

    static Unit* open(const std::string& path)
    {
        std::string error;
        Unit* unit = unit_open(path, error);
        EXPECT_NE(unit, nullptr) << error;
        return unit;
    }

    // What is said when it cannot be opened.
    static std::string refusal(const std::string& path)
    {
        std::string error;
        Unit* unit = unit_open(path, error);
        if (unit != nullptr) {
            unit_close(unit);
            return "opened";
        }
        return error;
    }

    static std::string text(Unit* unit)
    {
        std::string text;
        std::string error;
        EXPECT_TRUE(unit_text(unit, text, error)) << error;
        return text;
    }

    static std::vector<UnitCall> calls(Unit* unit, uint64_t from = 0)
    {
        std::vector<UnitCall> calls;
        std::string error;
        EXPECT_TRUE(unit_calls(unit, from, calls, error)) << error;
        return calls;
    }

    static int request(Unit* unit, uint32_t number, void* record)
    {
        return unit_request(unit, UnitDevice::kFpga, number,
                            reinterpret_cast<unsigned long>(record));
    }

    // A number that a process can keep for itself.
    static int number_write(Unit* unit, uint32_t key, uint32_t value)
    {
        uint32_t record[2] = {key, value};
        return request(unit, 0x6B84, record);
    }
    static uint32_t number_read(Unit* unit, uint32_t key)
    {
        uint32_t record[2] = {key, 0xDEADBEEF};
        return request(unit, 0x6B83, record) == 0 ? record[1] : 0xDEADBEEF;
    }

    // Runs this in a process of its own.
    static pid_t start(const std::function<int()>& run)
    {
        const pid_t process = fork();
        if (process == 0) {
            _exit(run());
        }
        return process;
    }
    static int end(pid_t process)
    {
        int status = 0;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        return status;
    }

    static std::string content(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static void content_put(const std::string& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }

    std::string top;
    std::string folder;
};
