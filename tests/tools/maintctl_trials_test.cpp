// The trials of all commands, made by the program maintctl: requests, results, records and files are
// those of the library. Its lines of JSON go to the file that MAINT_TRIALS_JSON names.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "device/device_trials.h"
#include "tools/maintctl/maintctl.h"

namespace
{

Bytes bytes_of(const std::string& pairs)
{
    Bytes bytes;
    for (size_t i = 0; i + 1 < pairs.size(); i += 2) {
        bytes += static_cast<char>(std::stoul(pairs.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

// What stands behind a key of a JSON object, up to the next of these characters.
std::string member_of(const std::string& line, const std::string& key, const char* end)
{
    const size_t at = line.find("\"" + key + "\":");
    if (at == std::string::npos) {
        ADD_FAILURE() << "no " << key << " in " << line;
        return "0";
    }
    const size_t begin = at + key.size() + 3;
    return line.substr(begin, line.find_first_of(end, begin) - begin);
}

class ProgramTrials : public DeviceTrials
{
  protected:
    // Runs the command by its name or number with the record's bytes, and puts the record that the
    // program tells where the caller's is.
    int32_t program_run(const Trial& trial, char* record)
    {
        std::vector<std::string> words{"maintctl", "--json", "-x", hex_number(trial.command)};
        if (!trial.record.empty()) {
            words.push_back("record=" + pairs(Bytes(record, trial.record.size())));
        }
        std::vector<char*> arguments(words.size());
        std::transform(words.begin(), words.end(), arguments.begin(),
                       [](std::string& word) { return word.data(); });
        char* said = nullptr;
        size_t length = 0;
        FILE* out = open_memstream(&said, &length);
        FILE* err = tmpfile();
        const int status =
            maintctl_run(static_cast<int>(arguments.size()), arguments.data(), out, err);
        fclose(out);
        fclose(err);
        line.assign(said, length);
        free(said);
        const auto result = static_cast<int32_t>(std::stol(member_of(line, "result", ",}")));
        EXPECT_EQ(status, result >= 0 ? 0 : -result) << line;
        EXPECT_EQ(line.find('\n'), line.size() - 1);
        EXPECT_EQ(line.find("\"error\":") != std::string::npos, result < 0) << line;
        const Bytes after = bytes_of(member_of(line, "record", ",}").substr(1));
        EXPECT_GE(after.size(), trial.record.size());
        after.copy(record, trial.record.size());
        return result;
    }

    std::string line;
};

TEST_F(ProgramTrials, AreThoseOfTheLibrary)
{
    std::string lines;
    size_t count = 0;
    walk([&](const Trial& trial, const Outcome& outcome) {
        if (HasFailure()) {
            return;
        }
        const std::string by_library = text(trial, outcome);
        const Outcome by_program = make(trial, [&](uint32_t, void* record) {
            return program_run(trial, static_cast<char*>(record));
        });
        EXPECT_EQ(by_library, text(trial, by_program));
        lines += line;
        ++count;
    });
    EXPECT_GT(count, 900U);
    if (const char* path = getenv("MAINT_TRIALS_JSON")) {
        std::ofstream file(path, std::ios::trunc);
        file << lines;
        file.close();
        EXPECT_TRUE(file) << path;
        printf("%zu lines of JSON: %s\n", count, path);
    }
}

} // namespace
