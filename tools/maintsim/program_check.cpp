#include "tools/maintsim/program_check.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace
{

#if defined(__x86_64__)
constexpr uint16_t kMachine = EM_X86_64;
constexpr std::string_view kLoader = "ld-linux-x86-64.so.2";
#elif defined(__aarch64__)
constexpr uint16_t kMachine = EM_AARCH64;
constexpr std::string_view kLoader = "ld-linux-aarch64.so.1";
#else
#error "maintsim knows the loader of no other processor"
#endif

constexpr int kScriptsMost = 5;     // interpreters of interpreters, as the kernel counts them
constexpr size_t kScriptLine = 256; // as much as the kernel reads of a script's first line
constexpr size_t kHeadersMost = 64; // program headers that are looked at
constexpr size_t kNotesMost = 4096; // bytes of notes that are looked at

class Descriptor
{
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const { return number_; }

  private:
    int number_;
};

bool bytes_read(int file, void* bytes, size_t size, uint64_t offset)
{
    return pread(file, bytes, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

// With other rights than its caller's. Where such bits have no effect, the loader loads as ever.
bool privileges_given(int file, const struct stat& status)
{
    struct statvfs mount {
    };
    if (prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1 ||
        (fstatvfs(file, &mount) == 0 && (mount.f_flag & ST_NOSUID) != 0)) {
        return false;
    }
    constexpr mode_t kGroup = S_ISGID | S_IXGRP;
    return ((status.st_mode & S_ISUID) != 0 && status.st_uid != getuid()) ||
           ((status.st_mode & kGroup) == kGroup && status.st_gid != getgid()) ||
           (getuid() != 0 && fgetxattr(file, "security.capability", nullptr, 0) > 0);
}

// Programs of the Go tools carry their name in a note; they call the kernel themselves, also when
// they are linked dynamically.
bool own_calls(int file, const ElfW(Phdr) & notes)
{
    char bytes[kNotesMost];
    const size_t size = notes.p_filesz < sizeof bytes ? notes.p_filesz : sizeof bytes;
    if (!bytes_read(file, bytes, size, notes.p_offset)) {
        return false;
    }
    size_t at = 0;
    while (at + sizeof(ElfW(Nhdr)) <= size) {
        ElfW(Nhdr) note;
        memcpy(&note, bytes + at, sizeof note);
        at += sizeof note;
        if (note.n_namesz == 4 && at + 4 <= size && memcmp(bytes + at, "Go\0", 4) == 0) {
            return true;
        }
        const uint64_t step = ((note.n_namesz + 3ULL) & ~3ULL) + ((note.n_descsz + 3ULL) & ~3ULL);
        if (step > size) {
            return false;
        }
        at += step;
    }
    return false;
}

ProgramKind elf_check(int file)
{
    unsigned char ident[EI_NIDENT];
    ElfW(Ehdr) header;
    if (!bytes_read(file, ident, sizeof ident, 0) || ident[EI_CLASS] != ELFCLASS64 ||
        ident[EI_DATA] != ELFDATA2LSB || !bytes_read(file, &header, sizeof header, 0) ||
        header.e_machine != kMachine) {
        return ProgramKind::kOtherMachine;
    }
    ElfW(Phdr) headers[kHeadersMost];
    const size_t count = header.e_phnum < kHeadersMost ? header.e_phnum : kHeadersMost;
    if (header.e_phentsize != sizeof headers[0] ||
        !bytes_read(file, headers, count * sizeof headers[0], header.e_phoff)) {
        return ProgramKind::kUnknown;
    }
    ProgramKind kind = ProgramKind::kStatic;
    for (size_t i = 0; i < count; i++) {
        if (headers[i].p_type == PT_INTERP) {
            char loader[PATH_MAX] = "";
            const size_t size = headers[i].p_filesz;
            if (size == 0 || size > sizeof loader ||
                !bytes_read(file, loader, size, headers[i].p_offset)) {
                return ProgramKind::kUnknown;
            }
            const std::string_view name(loader, strnlen(loader, size));
            if (name.substr(name.rfind('/') + 1) != kLoader) {
                return ProgramKind::kOtherLoader;
            }
            kind = ProgramKind::kRuns;
        }
    }
    for (size_t i = 0; kind == ProgramKind::kRuns && i < count; i++) {
        if (headers[i].p_type == PT_NOTE && own_calls(file, headers[i])) {
            return ProgramKind::kOwnCalls;
        }
    }
    return kind;
}

// The interpreter in a script's first line; false: there is none.
bool interpreter_find(char* line, std::string_view& interpreter)
{
    line[strcspn(line, "\n")] = '\0';
    char* const begin = line + 2 + strspn(line + 2, " \t");
    interpreter = {begin, strcspn(begin, " \t")};
    begin[interpreter.size()] = '\0';
    return !interpreter.empty();
}

ProgramKind file_check(int folder, const char* path, char (&line)[kScriptLine])
{
    const Descriptor file(openat(folder, path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {
    };
    if (fstatat(folder, path, &status, 0) != 0) {
        return errno == EACCES ? ProgramKind::kNotAllowed : ProgramKind::kMissing;
    }
    if (S_ISDIR(status.st_mode)) {
        return ProgramKind::kMissing;
    }
    // Who may run but not read a program cannot see what it is; nor does the loader tell.
    if (file.get() < 0 || !S_ISREG(status.st_mode) ||
        faccessat(folder, path, X_OK, AT_EACCESS) != 0) {
        return ProgramKind::kNotAllowed;
    }
    const ssize_t size = pread(file.get(), line, sizeof line - 1, 0);
    line[size < 0 ? 0 : size] = '\0';
    if (size >= SELFMAG && memcmp(line, ELFMAG, SELFMAG) == 0) {
        return privileges_given(file.get(), status) ? ProgramKind::kPrivileged
                                                    : elf_check(file.get());
    }
    return ProgramKind::kUnknown;
}

} // namespace

ProgramVerdict program_check(int folder, const char* path)
{
    char line[kScriptLine];
    char name[kScriptLine];
    for (int depth = 0; depth <= kScriptsMost; depth++) {
        const ProgramKind kind = file_check(folder, path, line);
        std::string_view interpreter;
        if (kind != ProgramKind::kUnknown || memcmp(line, "#!", 2) != 0 ||
            !interpreter_find(line, interpreter)) {
            return {kind, depth > 0};
        }
        memcpy(name, interpreter.data(), interpreter.size() + 1);
        path = name;
        folder = AT_FDCWD;
    }
    return {ProgramKind::kUnknown, true};
}

const char* programKind_reason(ProgramVerdict verdict)
{
    struct Reason {
        const char* program;
        const char* interpreter;
    };
    constexpr Reason kReasons[] = {
        {nullptr, nullptr},
        {nullptr, nullptr},
        {nullptr, nullptr},
        {nullptr, nullptr},
        {"is linked statically: it would use this machine's own devices and files",
         "has an interpreter that is linked statically: it would use this machine's own devices "
         "and files"},
        {"is for another processor", "has an interpreter for another processor"},
        {"uses another C library: it would use this machine's own devices and files",
         "has an interpreter with another C library: it would use this machine's own devices and "
         "files"},
        {"is made by Go, whose programs call the kernel directly: it would use this machine's own "
         "devices and files",
         "has an interpreter made by Go, whose programs call the kernel directly: it would use "
         "this machine's own devices and files"},
        {"runs with other rights (set-user-id, set-group-id or capabilities): it would use this "
         "machine's own devices and files",
         "has an interpreter that runs with other rights (set-user-id, set-group-id or "
         "capabilities): it would use this machine's own devices and files"},
    };
    const Reason& reason = kReasons[static_cast<size_t>(verdict.kind)];
    return verdict.interpreter ? reason.interpreter : reason.program;
}
