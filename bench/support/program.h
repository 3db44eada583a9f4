#pragma once

// Runs of whole programs and what each costs. All have the same environment, whatever the caller's is: the
// system's own programs in PATH, and LANG.

#include <array>
#include <string>

struct program_t
{
    const char* name;                     // in the figures
    std::array<const char*, 3> arguments; // the path first, and null behind the last
    const char* lang = "LANG=C.UTF-8"; // as on most machines: programs load a locale before they do anything
};

// The processes that a program starts and waits for count as well.
struct cost_t
{
    double wall_us;
    double cpu_us; // user and system time
    double page_faults;
};

// Of the program's own process alone.
struct traced_run_t
{
    double system_calls; // from its execve to its exit, both counted
    double peak_kib;     // of resident memory
};

// Whether a program may start processes in a traced run.
enum class processes_t
{
    kNone,
    kAllowed
};

// All throw std::runtime_error if the program cannot be run or does not end with status 0, and RunTraced if
// it starts a process that it may not. Output goes to /dev/null, or is returned.
cost_t Run(const program_t& program);
traced_run_t RunTraced(const program_t& program, processes_t processes);
std::string OutputOf(const program_t& program);

// Throws std::system_error with errno unless the call was good.
void CheckCall(bool good, const std::string& what);
