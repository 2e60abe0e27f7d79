#include "log/log_bytes.h"

#include <fcntl.h>
#include <sys/file.h>

#include <stdexcept>

bool lock_isFree(const Board& board, const std::string& path)
{
    const int descriptor = open(board.host(path).c_str(), O_RDONLY);
    if (descriptor < 0) {
        throw std::runtime_error("cannot open " + path);
    }
    const bool free = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    close(descriptor);
    return free;
}
