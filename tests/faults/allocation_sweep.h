#pragma once

// Does an operation again and again while memory runs out: each of its allocations fails once alone, and once
// together with all that come behind it. Each time the operation must give its result or throw a
// std::exception that speaks of memory, lose neither memory nor descriptors, and do its work when memory is
// there again.
//
//   std::string text;
//   SweepAllocations({[&] { text = util::Format("%1 of %2", 1, 3); }, [&] { return text; }, "1 of 3"});
//
// Each sweep prints how many allocations it made fail, and notes it as the property "failed_allocations".

#include <functional>
#include <optional>
#include <string>

#include "tests/faults/swept_heap.h"

struct swept_operation_t
{
    // What is done while memory runs out.
    std::function<void()> act;

    // Tells what came of it, and puts back what the next run needs. Memory is there by then.
    std::function<std::string()> result;

    std::string expected;

    // The result if the act has thrown; not looked at without one.
    std::optional<std::string> after_failure = {};

    // Whether lines of what is expected may be missing although nothing was thrown, as in a log.
    bool may_lose_lines = false;

    // How a failure may begin that does not speak of memory.
    std::string other_failure = {};

    asking_t asking = asking_t::kThisThread;
};

void SweepAllocations(const swept_operation_t& operation);

// The first use of what a process builds once: fails at each of its allocations in turn, until it is built.
void SweepFirstUse(const std::function<void()>& use);
