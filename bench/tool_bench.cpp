// What does a whole run of the tool cost, as it is shipped and linked wholly statically?
//
// With an agent file it stands next to other programs that tell an id, and to programs that do nothing and
// are linked in the same two ways. With an id in the firmware, which takes a shell, dmidecode and grep, it
// stands next to a program that opens the same pipe and does no more. The programs take turns, in a mount
// namespace of their own; needs root. With an agent file, no run of the tool may start a process.

#include <algorithm>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/own_namespace.h"
#include "bench/support/program.h"
#include "bench/support/values.h"

namespace
{

constexpr int kRounds = 300;
constexpr int kTracedRounds = 9;

constexpr double kMostSystemCalls = 80;
constexpr double kMostPeakKiB = 3418; // 3.5 MB

const program_t kTool = {"tool as shipped", {NELVO_TOOL}};
const program_t kStaticTool = {"static tool", {NELVO_STATIC_TOOL}};
const program_t kEmpty = {"empty program", {NELVO_EMPTY_PROGRAM}};
const program_t kStaticEmpty = {"empty static program", {NELVO_EMPTY_STATIC_PROGRAM}};
const program_t kCat = {"cat /etc/machine-id", {"/usr/bin/cat", "/etc/machine-id"}};
const program_t kPlainCat = {"cat, LANG=C", {"/usr/bin/cat", "/etc/machine-id"}, "LANG=C"}; // loads no locale
const program_t kUuidgen = {"uuidgen", {"/usr/bin/uuidgen"}};
const program_t kDbusUuidgen = {"dbus-uuidgen --get", {"/usr/bin/dbus-uuidgen", "--get"}};
const program_t kFirmwarePipe = {"popen alone", {NELVO_FIRMWARE_PIPE}};

struct runs_t
{
    std::vector<cost_t> costs;
    std::vector<traced_run_t> traced;
};

using all_runs_t = std::map<const program_t*, runs_t>;

// What our program stands next to. The goal, if there is one, is the most wall time, as "|0.75".
struct reference_t
{
    const program_t* program;
    std::string goal;
};

void CheckOutput(const program_t& program, const std::string& id)
{
    const std::string output = OutputOf(program);
    if (output != id + "\n")
        throw std::runtime_error(std::string(program.name) + " printed " + output);
}

// The order turns round with each round, so that nobody always comes behind the same one.
all_runs_t RunInTurns(const values_t& values, processes_t processes, std::vector<const program_t*> programs)
{
    all_runs_t runs;
    for (int round = 0; round != values.Rounds(kTracedRounds); ++round)
        for (const program_t* const program : programs)
            runs[program].traced.push_back(RunTraced(*program, processes));
    for (int round = 0; round != values.Rounds(kRounds); ++round)
    {
        for (const program_t* const program : programs)
            runs[program].costs.push_back(Run(*program));
        std::reverse(programs.begin(), programs.end());
    }
    return runs;
}

void AddRuns(values_t& values, const std::string& title, const std::string& who, const std::string& goal,
             const runs_t& runs)
{
    for (const cost_t& cost : runs.costs)
    {
        values.Add(title + ": wall time", who + goal, cost.wall_us, "us");
        values.Add(title + ": user and system time", who, cost.cpu_us, "us");
        values.Add(title + ": page faults", who, cost.page_faults, "");
    }
    for (const traced_run_t& run : runs.traced)
    {
        values.Add(title + ": system calls", who, run.system_calls, "");
        values.Add(title + ": peak memory", who, run.peak_kib, "KiB");
    }
}

void AddFigures(values_t& values, const std::string& title, const all_runs_t& runs, const program_t& ours,
                const std::vector<reference_t>& others)
{
    AddRuns(values, title, "ours", "", runs.at(&ours));
    for (const reference_t& other : others)
        AddRuns(values, title, other.program->name, other.goal, runs.at(other.program));
}

void MeasureWithAgentFile(values_t& values)
{
    CheckOutput(kTool, own_namespace_t::kAgentFileId);
    CheckOutput(kStaticTool, own_namespace_t::kAgentFileId);
    const all_runs_t runs = RunInTurns(
        values, processes_t::kNone,
        {&kTool, &kStaticTool, &kEmpty, &kStaticEmpty, &kCat, &kPlainCat, &kUuidgen, &kDbusUuidgen});

    const std::string title = "tool, agent file";
    AddFigures(
        values, title, runs, kTool,
        {{&kDbusUuidgen, "|0.75"}, {&kCat, "|1.25"}, {&kPlainCat, ""}, {&kUuidgen, ""}, {&kEmpty, ""}});
    values.Add(title + ": system calls", "limit|1", kMostSystemCalls, "");
    values.Add(title + ": peak memory", "limit|1", kMostPeakKiB, "KiB");
    AddFigures(values, "static " + title, runs, kStaticTool,
               {{&kDbusUuidgen, "|0.6"},
                {&kCat, "|1"},
                {&kPlainCat, ""},
                {&kUuidgen, ""},
                {&kStaticEmpty, ""},
                {&kTool, ""}});
}

void MeasureWithFirmware(values_t& values)
{
    CheckOutput(kTool, own_namespace_t::kFirmwareId);
    const all_runs_t runs = RunInTurns(values, processes_t::kAllowed, {&kTool, &kFirmwarePipe});
    AddFigures(values, "tool, firmware", runs, kTool, {{&kFirmwarePipe, "|1.25"}});
}

} // namespace

int main(int argc, char* argv[])
try
{
    values_t values(argc, argv);
    own_namespace_t own_namespace;
    MeasureWithAgentFile(values);
    own_namespace.RemoveAgentFile();
    MeasureWithFirmware(values);
    values.Finish();
    return 0;
}
catch (std::exception& e)
{
    std::cerr << "tool_bench: " << e.what() << '\n';
    return 1;
}
