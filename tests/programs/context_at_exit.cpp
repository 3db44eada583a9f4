// Says whether the context of the main thread is gone when a static object is destroyed, and asks for one
// there.

#include <cstdio>

#include <boost/weak_ptr.hpp>

#include "nelvo/synch/thread_context.h"

namespace
{

using synch::CThreadContext;

// Built before the first context, and so destroyed after the release.
struct asks_at_exit_t
{
    ~asks_at_exit_t()
    {
        std::puts(context.expired() ? "gone" : "still there");
        const auto late = CThreadContext::GetCurrent();
        std::puts(late == CThreadContext::GetCurrent() && !late->IsMemFsDisabled() ? "a new one" : "odd");
    }
    boost::weak_ptr<CThreadContext> context;
};

asks_at_exit_t g_asks_at_exit;

} // namespace

int main()
{
    CThreadContext::GetCurrent()->DisableMemFs();
    g_asks_at_exit.context = CThreadContext::GetCurrent();
}
