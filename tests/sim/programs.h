// Programs started on units, by the program maintsim itself.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

// A private folder, gone when the test is.
class TestFolder
{
  public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    // A place for a file or folder of the test's own.
    [[nodiscard]] std::string place(const std::string& name) const { return top_ + "/" + name; }

  private:
    std::string top_;
};

std::string bytes_get(const std::string& path);
void bytes_put(const std::string& path, const std::string& bytes);
// Everything below a folder: kind, rights and content of each, by path.
std::map<std::string, std::string> folder_get(const std::string& folder);

// A process; descriptors of pipes to its standard input and from its descriptor 3.
struct Started {
    pid_t process = -1;
    int to = -1;
    int from = -1;
};

using Words = std::vector<std::string>;

// The words of `maintsim -u FOLDER WORD...`.
Words on_unit(const std::string& folder, const Words& words);

// What a process does before it becomes the program.
using Before = void (*)();

// Starts a program. Its output goes to these files, without a name to nowhere.
Started program_start(const Words& words, const std::string& out = "", const std::string& err = "",
                      Before before = nullptr);
// Waits for the end; the status as of waitpid().
int program_end(Started& started);

struct Ended {
    int status;
    std::string out;
    std::string err;
};
Ended program_run(const TestFolder& top, const Words& words, Before before = nullptr);
