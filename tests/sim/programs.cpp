#include "sim/programs.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

TestFolder::TestFolder()
{
    char name[] = "/tmp/maintsim_test_XXXXXX";
    top_ = mkdtemp(name);
    fs::permissions(top_, fs::perms(0755));
}

TestFolder::~TestFolder()
{
    std::error_code code;
    fs::remove_all(top_, code);
}

std::string bytes_get(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void bytes_put(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

std::map<std::string, std::string> folder_get(const std::string& folder)
{
    std::map<std::string, std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const fs::file_status status = entry.symlink_status();
        found[entry.path()] = std::to_string(static_cast<int>(status.type())) + " " +
                              std::to_string(static_cast<int>(status.permissions())) + " " +
                              (fs::is_regular_file(status) ? bytes_get(entry.path()) : "");
    }
    return found;
}

Words on_unit(const std::string& folder, const Words& words)
{
    Words all{MAINTSIM, "-u", folder};
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

namespace
{

void output_lead(const std::string& path, int descriptor)
{
    const int file =
        path.empty() ? open("/dev/null", O_WRONLY) : open(path.c_str(), O_WRONLY | O_CREAT, 0666);
    dup2(file, descriptor);
    close(file);
}

} // namespace

Started program_start(const Words& words, const std::string& out, const std::string& err,
                      Before before)
{
    int to[2];
    int from[2];
    EXPECT_EQ(pipe2(to, O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(from, O_CLOEXEC), 0);
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    signal(SIGPIPE, SIG_IGN); // a program that ended too early is the test's failure, not its end
    const pid_t process = fork();
    if (process == 0) {
        signal(SIGPIPE, SIG_DFL);
        dup2(to[0], STDIN_FILENO);
        output_lead(out, STDOUT_FILENO);
        output_lead(err, STDERR_FILENO);
        if (from[1] == 3) {
            fcntl(3, F_SETFD, 0);
        } else {
            dup2(from[1], 3);
        }
        setenv("TZ", "UTC", 1);
        // A sanitizer that finds the preloaded object before itself would not start.
        setenv("ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0", 1);
        if (before != nullptr) {
            before();
        }
        execv(arguments[0], arguments.data());
        _exit(125);
    }
    close(to[0]);
    close(from[1]);
    return {process, to[1], from[0]};
}

int program_end(Started& started)
{
    close(started.to);
    close(started.from);
    int status = -1;
    EXPECT_EQ(waitpid(started.process, &status, 0), started.process);
    return status;
}

Ended program_run(const TestFolder& top, const Words& words, Before before)
{
    const std::string out = top.place("out");
    const std::string err = top.place("err");
    fs::remove(out);
    fs::remove(err);
    Started started = program_start(words, out, err, before);
    const int status = program_end(started);
    return {status, bytes_get(out), bytes_get(err)};
}
