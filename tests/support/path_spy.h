#pragma once

// Sees what an operation asks the permissions of the process, and which paths it touches, in their order. A
// program that uses this has calls of its own in the place of the C library's, and never forks while it
// spies.
//
//   SpyOn([](const temp_folder_t& folder) { util::RemoveFile(folder / "a"); }).events    "ask a; touch a; "

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/temp_folder.h"

using spied_call_t = std::function<void(const temp_folder_t& folder)>;

struct spied_t
{
    // "ask <path>; ", "touch <path>; " and "fork; ". Paths in the folder are told by their names there, and
    // those with a /spied in them as they are. Touches of one path that follow each other are one.
    std::string events;

    // The text of what the call throws, with names for paths in the folder; empty if it throws nothing.
    std::string failure;
};

// The call gets a folder of its own, in which "a" is a file that holds "text" and "l" is a link to it.
spied_t SpyOn(const spied_call_t& call);

// The ask with this number, from 0, throws exc::runtime_exc_t with "refused".
spied_t SpyOnRefused(std::size_t ask, const spied_call_t& call);

struct spied_operation_t
{
    const char* name;
    std::string events;
    spied_call_t call;
};
using spied_operations_t = std::vector<spied_operation_t>;

// Fails the test unless each operation asks and touches as told, touches something, and ends, when one of its
// asks is refused, with that ask: by an exception that passes on, or without one if it is so told.
void ExpectStoppedByEachRefusal(const spied_operations_t& operations, bool throws = true);

// Fails the test unless each operation touches as told, without a failure, where all asks are refused.
void ExpectNobodyIsAsked(const spied_operations_t& operations);
