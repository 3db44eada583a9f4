#pragma once

// Runs one program in a mount namespace of its own, whose root is a folder of the test's. The mounts die
// with the program. As root this takes the machine's own user ids; without that right a user namespace is
// made, in which the caller's id stands for the one asked for, so that only root can tell a real user id from
// the effective one.

#include <iosfwd>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

struct mount_t
{
    enum class kind_t
    {
        kBind,         // source as it is, with what is mounted below it
        kReadOnlyBind, // the same, read-only
        kFullTmpfs     // an empty folder on a disk without a free block
    };

    kind_t kind;
    std::string source;
    std::string target; // on the machine that starts the program, not below the new root
};

struct private_process_t
{
    // Which end a standard descriptor of the program has.
    enum class stream_t
    {
        kKept, // standard input: /dev/null; the others: kept for the caller
        kClosed,
        kFull,      // /dev/full
        kBrokenPipe // a pipe that nobody reads
    };

    std::string root;
    std::vector<mount_t> mounts;

    std::string program; // this path and the next are below the new root
    std::string folder;
    std::vector<std::string> arguments; // the first is the program's name
    std::vector<std::string> environment;

    uid_t user = 0;                 // and the group of the same number
    std::optional<uid_t> real_user; // that of user without it; the effective one is always that of user
    mode_t umask = 022;
    bool obeys_file_modes = false; // root without the capability to pass over them
    // Descriptors 0 to 2; the program inherits no other.
    stream_t streams[3] = {stream_t::kKept, stream_t::kKept, stream_t::kKept};
};

struct run_t
{
    std::string out;
    std::string err;
    int status = -1; // as a shell tells it: 128 and the number of the signal for a program that one ended
};

void PrintTo(const run_t& run, std::ostream* out);

// Waits for the program's end. Throws std::runtime_error with the call that failed and its reason if the
// private machine cannot be made.
run_t RunPrivately(const private_process_t& process);
