// A second process that holds a lock which the product wants.
#pragma once

#include <sys/types.h>

#include "board/board.h"

// A helper process that holds the flock on a file of the board from construction on; the file is
// created if need be. At most one at a time.
class LockHolder
{
  public:
    LockHolder(Board& on, const std::string& file);
    ~LockHolder(); // the helper lets go, if it has not already, and ends
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    // From the product's next blocking flock of the file on, the helper watches this process and
    // lets go once it sees it asleep. Puts itself into the board's before_call; `meanwhile` runs
    // there first, while the helper still has the lock.
    void release_when_awaited(std::function<void()> meanwhile = {});

    // Whether the helper has said that it lets go, which it does before it really does: true right
    // behind a flock that succeeded, and only there, proves that the flock has waited.
    bool released();

  private:
    Board& board_;
    std::string path_;
    int to_helper_ = -1;
    int from_helper_ = -1;
    pid_t helper_ = -1;
    bool released_ = false;
};

// Waits until a child sleeps, as one that waits for a lock does: true; false: it has ended.
bool child_sleeps(pid_t child);

// Whether somebody else could take the exclusive flock on a file of the board at this moment. The
// file must be there.
bool lock_is_free(const Board& board, const std::string& path);
