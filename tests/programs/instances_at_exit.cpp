// Says when the one object of a kind is built and when it ends: one that is asked for again at the exit, by
// the destructor of a static object, and one of which such an object keeps a share.

#include <cstdio>
#include <string>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/core/util/process_instance.h"

namespace
{

struct told_t
{
    explicit told_t(std::string text) : name(std::move(text)) { std::puts((name + " is built").c_str()); }
    ~told_t() { std::puts((name + " ends").c_str()); }
    told_t(const told_t&) = delete;
    told_t& operator=(const told_t&) = delete;
    std::string name;
};

struct asked_t : told_t
{
    using told_t::told_t;
};

struct kept_t : told_t
{
    using told_t::told_t;
};

template <class Object>
boost::shared_ptr<Object> Get(const char* name)
{
    return util::process_instance_tt<Object>::Get([name] { return boost::make_shared<Object>(name); });
}

// Built before the instances, and so destroyed after their release.
struct asks_at_exit_t
{
    ~asks_at_exit_t()
    {
        std::puts(("exit: " + kept->name + " is there").c_str());
        std::puts(("exit: " + Get<asked_t>("the asked, once more,")->name + " is there").c_str());
    }
    boost::shared_ptr<kept_t> kept;
};

asks_at_exit_t g_asks_at_exit;

} // namespace

int main() // NOLINT(bugprone-exception-escape): ends the program, which fails its test
{
    Get<asked_t>("the asked");
    g_asks_at_exit.kept = Get<kept_t>("the kept");
    std::puts("main ends");
}
