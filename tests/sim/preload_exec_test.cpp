// Programs that a unit's program starts: they are the unit's, too, or do not start.
#include "sim/preload_fixture.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr char kCat[] = "/bin/cat";
constexpr char kSerial[] = "/tmp/serialno";
constexpr char kText[] = "serial number of the unit";

char* word(const char* text)
{
    return const_cast<char*>(text);
}

char* const kWords[] = {word("cat"), word(kSerial), nullptr};
char* const kNothing[] = {nullptr};

struct Outcome {
    int status;
    std::string output;
};

// Runs an action in a child, its output in a pipe; the action's own result ends it.
Outcome run(const std::function<int()>& action)
{
    int pipes[2];
    EXPECT_EQ(pipe(pipes), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(pipes[1], STDOUT_FILENO);
        dup2(pipes[1], STDERR_FILENO);
        close(pipes[0]);
        close(pipes[1]);
        _exit(action());
    }
    close(pipes[1]);
    Outcome outcome{};
    char bytes[512];
    for (ssize_t size = 0; (size = read(pipes[0], bytes, sizeof bytes)) > 0;) {
        outcome.output.append(bytes, static_cast<size_t>(size));
    }
    close(pipes[0]);
    waitpid(child, &outcome.status, 0);
    outcome.status = WIFEXITED(outcome.status) ? WEXITSTATUS(outcome.status) : -1;
    return outcome;
}

int spawned(int result, pid_t child)
{
    int status = -1;
    return result != 0 ? result : (waitpid(child, &status, 0), WEXITSTATUS(status));
}

// Every way to start a program; in an environment of nothing where it takes one.
struct Start {
    const char* name;
    int (*start)(const char* program, char* const* words);
};
const Start kStarts[] = {
    {"execve", [](const char* program,
                  char* const* words) { return execve(program, words, kNothing), errno; }},
    {"execv", [](const char* program,
                 char* const* words) { return clearenv(), execv(program, words), errno; }},
    {"execvp", [](const char* program,
                  char* const* words) { return clearenv(), execvp(program, words), errno; }},
    {"execvpe", [](const char* program,
                   char* const* words) { return execvpe(program, words, kNothing), errno; }},
    {"execl",
     [](const char* program, char* const* words) {
         return clearenv(), execl(program, words[0], words[1], nullptr), errno;
     }},
    {"execlp",
     [](const char* program, char* const* words) {
         return clearenv(), execlp(program, words[0], words[1], nullptr), errno;
     }},
    {"execle",
     [](const char* program, char* const* words) {
         return execle(program, words[0], words[1], nullptr, kNothing), errno;
     }},
    {"execveat",
     [](const char* program, char* const* words) {
         return execveat(AT_FDCWD, program, words, kNothing, 0), errno;
     }},
    {"fexecve",
     [](const char* program, char* const* words) {
         return fexecve(open(program, O_RDONLY), words, kNothing), errno;
     }},
    {"syscall",
     [](const char* program, char* const* words) {
         return syscall(SYS_execve, program, words, kNothing), errno;
     }},
    {"posix_spawn",
     [](const char* program, char* const* words) {
         pid_t child = 0;
         const int result = posix_spawn(&child, program, nullptr, nullptr, words, kNothing);
         return spawned(result, child);
     }},
    {"posix_spawnp",
     [](const char* program, char* const* words) {
         pid_t child = 0;
         const int result = posix_spawnp(&child, program, nullptr, nullptr, words, kNothing);
         return spawned(result, child);
     }},
    {"vfork",
     [](const char* program, char* const* words) {
         const pid_t child = vfork();
         if (child == 0) {
             execve(program, words, kNothing);
             _exit(errno);
         }
         return spawned(0, child);
     }},
};

class PreloadExec : public testing::Test
{
  protected:
    void SetUp() override { file_make(unit_place(kSerial), kText); }
};

TEST_F(PreloadExec, EveryStartedProgramIsOnTheUnit)
{
    for (const Start& start : kStarts) {
        if (strcmp(start.name, "vfork") != 0) {
            EXPECT_TRUE(taken_over(start.name)) << start.name;
        }
        const Outcome outcome = run([&] { return start.start(kCat, kWords); });
        EXPECT_EQ(outcome.status, 0) << start.name;
        EXPECT_EQ(outcome.output, kText) << start.name;
    }
}

TEST_F(PreloadExec, ShellsAreOnTheUnitInAnEmptyEnvironment)
{
    Outcome outcome = run([] { return clearenv(), WEXITSTATUS(system("cat /tmp/serialno")); });
    EXPECT_EQ(outcome.output, kText);
    EXPECT_EQ(outcome.status, 0);
    outcome = run([] {
        clearenv();
        FILE* stream = popen("cat /tmp/serialno >&2", "r");
        return stream == nullptr ? 1 : WEXITSTATUS(pclose(stream));
    });
    EXPECT_EQ(outcome.output, kText);
    outcome = run([] {
        return execlp("env", "env", "-i", "sh", "-c", "env -i cat /tmp/serialno", nullptr), errno;
    });
    EXPECT_EQ(outcome.output, kText);
    EXPECT_EQ(outcome.status, 0);
}

// Another preloaded object stays, and another unit.
TEST_F(PreloadExec, TheEnvironmentKeepsWhatItHas)
{
    char* const words[] = {word("env"), nullptr};
    char* const others[] = {word("A=1"), word("LD_PRELOAD=libc.so.6"), word("LD_PRELOADED=2"),
                            nullptr};
    Outcome outcome = run([&] { return execve("/usr/bin/env", words, others), errno; });
    EXPECT_NE(outcome.output.find("A=1\n"), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("LD_PRELOADED=2\n"), std::string::npos);
    EXPECT_NE(outcome.output.find("libmaintsim_preload.so:libc.so.6\n"), std::string::npos);
    EXPECT_EQ(outcome.output.find("LD_PRELOAD="), outcome.output.rfind("LD_PRELOAD="));
    EXPECT_NE(outcome.output.find("MAINTSIM_UNIT=" + unit_folder() + "\n"), std::string::npos);
    const std::string object = getenv("LD_PRELOAD");
    const std::string preload = "LD_PRELOAD=libc.so.6:" + object;
    char* const whole[] = {word(preload.c_str()), word("MAINTSIM_UNIT=/none"), nullptr};
    outcome = run([&] { return execve("/usr/bin/env", words, whole), errno; });
    EXPECT_EQ(outcome.output, preload + "\nMAINTSIM_UNIT=/none\n");
    char* const named[] = {word(preload.c_str()), nullptr};
    outcome = run([&] { return execve("/usr/bin/env", words, named), errno; });
    EXPECT_EQ(outcome.output, "MAINTSIM_UNIT=" + unit_folder() + "\n" + preload + "\n");
}

TEST_F(PreloadExec, FlagsAreTheKernels)
{
    const std::string link = unit_place("/conf/link");
    ASSERT_EQ(symlink(kCat, link.c_str()), 0);
    for (const std::string& path : {link, std::string("/conf/link")}) {
        const Outcome outcome = run([&] {
            return execveat(AT_FDCWD, path.c_str(), kWords, environ, AT_SYMLINK_NOFOLLOW), errno;
        });
        EXPECT_EQ(outcome.status, ELOOP) << path << outcome.output;
        const Outcome followed =
            run([&] { return execveat(AT_FDCWD, path.c_str(), kWords, environ, 0), errno; });
        EXPECT_EQ(followed.output, kText) << path;
    }
}

TEST_F(PreloadExec, ADeviceIsInherited)
{
    const int device = open("/dev/fpga", O_RDWR);
    ASSERT_GE(device, 0);
    const std::string python =
        "import fcntl,sys; fcntl.ioctl(" + std::to_string(device) + ",0x6B04,7)";
    const Outcome outcome =
        run([&] { return execlp("python3", "python3", "-c", python.c_str(), nullptr), errno; });
    if (outcome.status == ENOENT) {
        GTEST_SKIP() << "no python3";
    }
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    // And one that the child's start opens.
    posix_spawn_file_actions_t actions;
    ASSERT_EQ(posix_spawn_file_actions_init(&actions), 0);
    ASSERT_TRUE(taken_over("posix_spawn_file_actions_addopen"));
    ASSERT_EQ(posix_spawn_file_actions_addopen(&actions, 55, "/dev/fpga", O_RDWR, 0), 0);
    ASSERT_EQ(posix_spawn_file_actions_addopen(&actions, 0, kSerial, O_RDONLY, 0), 0);
    ASSERT_EQ(posix_spawn_file_actions_addchdir_np(&actions, "/conf"), 0);
    const std::string script = "import fcntl,os,sys; fcntl.ioctl(55,0x6B04,7)\n"
                               "try: os.read(55,1)\n"
                               "except OSError as e: print(e.errno, end=' ')\n"
                               "print(os.getcwd(), sys.stdin.read(), end='')";
    char* const words[] = {word("python3"), word("-c"), word(script.c_str()), nullptr};
    const Outcome child = run([&] {
        pid_t number = 0;
        return spawned(posix_spawnp(&number, "python3", &actions, nullptr, words, environ), number);
    });
    EXPECT_EQ(child.output, std::string("22 /conf ") + kText);
    EXPECT_EQ(posix_spawn_file_actions_destroy(&actions), 0);
    EXPECT_EQ(close(device), 0);
}

TEST_F(PreloadExec, AProgramThatWouldUseTheMachineIsRefused)
{
    char* const words[] = {word("x"), nullptr};
    const std::string reason = "maintsim: " STATIC_PROGRAM " is linked statically";
    for (const Start& start : kStarts) {
        const Outcome outcome = run([&] { return start.start(STATIC_PROGRAM, words); });
        EXPECT_EQ(outcome.status, EACCES) << start.name << outcome.output;
        const bool by_descriptor = strcmp(start.name, "fexecve") == 0;
        EXPECT_EQ(outcome.output.find(
                      by_descriptor ? "maintsim: the program of a descriptor is linked" : reason),
                  0U)
            << start.name << outcome.output;
    }
    const Outcome shell = run([] { return WEXITSTATUS(system(STATIC_PROGRAM)); });
    EXPECT_EQ(shell.status, 126);
    EXPECT_NE(shell.output.find(reason), std::string::npos);
}

TEST_F(PreloadExec, AScriptIsAsGoodAsItsInterpreter)
{
    const std::string script = unit_place("/conf/script");
    file_make(script, "#!" STATIC_PROGRAM "\n");
    ASSERT_EQ(chmod(script.c_str(), 0700), 0);
    char* const words[] = {word("x"), nullptr};
    Outcome outcome = run([&] { return execve("/conf/script", words, environ), errno; });
    EXPECT_EQ(outcome.status, EACCES);
    EXPECT_EQ(
        outcome.output.find("maintsim: /conf/script has an interpreter that is linked statically"),
        0U)
        << outcome.output;
    file_make(script, "#!/bin/sh\ncat /tmp/serialno\n");
    outcome = run([&] { return execve("/conf/script", words, kNothing), errno; });
    EXPECT_EQ(outcome.output, kText);
    file_make(script, "cat /tmp/serialno\n"); // nobody says whose it is: the shell's
    outcome = run([&] {
        return setenv("PATH", "/none:/conf:/usr/bin:/bin", 1), execvp("script", words), errno;
    });
    EXPECT_EQ(outcome.output, kText);
    outcome = run([&] { return execvp("/conf/script", words), errno; });
    EXPECT_EQ(outcome.output, kText);
    outcome = run([&] { return execv("/conf/script", words), errno; });
    EXPECT_EQ(outcome.status, ENOEXEC);
}

TEST_F(PreloadExec, TheSearchIsTheCLibrarys)
{
    char* const words[] = {word("x"), nullptr};
    EXPECT_EQ(run([&] {
                  setenv("PATH", "/none:/usr/bin:/bin", 1);
                  return execvp("no-such-program", words), errno;
              }).status,
              ENOENT);
    EXPECT_EQ(run([&] { return execvp("", words), errno; }).status, ENOENT);
    EXPECT_EQ(run([&] { return execve("/etc/passwd", words, environ), errno; }).status, EACCES);
    EXPECT_EQ(run([&] { return execve("/etc", words, environ), errno; }).status, EACCES);
    // One that may not be run is passed over.
    std::filesystem::create_directories(unit_place("/conf/bin"));
    file_make(unit_place("/conf/bin/cat"), "#!/bin/sh\necho wrong\n");
    ASSERT_EQ(chmod(unit_place("/conf/bin/cat").c_str(), 0600), 0);
    const std::string path = std::string("/none:/conf/bin:") + getenv("PATH");
    const auto first = [&](auto start) {
        return run([&] {
            setenv("PATH", path.c_str(), 1);
            return start();
        });
    };
    EXPECT_EQ(first([] { return execvp("cat", kWords), errno; }).output, kText);
    EXPECT_EQ(first([&] {
                  pid_t child = 0;
                  return spawned(posix_spawnp(&child, "cat", nullptr, nullptr, kWords, environ),
                                 child);
              }).output,
              kText);
    EXPECT_EQ(run([] {
                  setenv("PATH", "/conf/bin", 1);
                  return execvp("cat", kWords), errno;
              }).status,
              EACCES);
}

} // namespace
