// What does a failure cost that gains a context line at each of five levels on its way out, next to
// boost::exception? And what do many lines cost?

#include <cstddef>
#include <stdexcept>
#include <string>

#include <boost/exception/all.hpp>

#include "bench/support/figure.h"
#include "bench/support/growth_figure.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"

namespace
{

const char kCause[] = "No space left on device";
const char kContext[] = "Failed to write the next record to the store.";

template <int kLevel>
[[gnu::noinline]] void FailOurs()
try
{
    if constexpr (kLevel == 0)
        throw exc::runtime_exc_t(kCause);
    else
        FailOurs<kLevel - 1>();
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, kContext, e);
}

template <int kLevel>
struct context_tag_t
{
};

template <int kLevel>
[[gnu::noinline]] void FailBoost()
try
{
    if constexpr (kLevel == 0)
        throw boost::enable_error_info(std::runtime_error(kCause));
    else
        FailBoost<kLevel - 1>();
}
catch (boost::exception& e)
{
    e << boost::error_info<context_tag_t<kLevel>, std::string>(kContext);
    throw;
}

template <int kLevel>
[[gnu::noinline]] void FailBare()
try
{
    if constexpr (kLevel == 0)
        throw std::runtime_error(kCause);
    else
        FailBare<kLevel - 1>();
}
catch (std::exception&)
{
    throw;
}

// What look makes of what fail throws.
template <class Exception, class Fail, class Look>
auto Caught(Fail fail, Look look)
{
    try
    {
        fail();
    }
    catch (Exception& e)
    {
        return look(e);
    }
    throw std::logic_error("nothing was thrown");
}

void AddFiveLevels()
{
    figure_t("failure with five context lines")
        .Ours([] { return Caught<std::exception>(FailOurs<4>, [](auto& e) { return e.what()[0]; }); })
        .Against("boost::exception", 1.2,
                 [] { return Caught<std::exception>(FailBoost<4>, [](auto& e) { return e.what()[0]; }); })
        .Against("boost::exception and its text",
                 []
                 {
                     return Caught<boost::exception>(FailBoost<4>, [](auto& e)
                                                     { return boost::diagnostic_information(e).size(); });
                 })
        .Against("no context",
                 [] { return Caught<std::exception>(FailBare<4>, [](auto& e) { return e.what()[0]; }); });
}

std::size_t SizeOfLines(std::size_t count)
{
    static const std::string line = kContext;
    exc::exc_base_t e;
    for (std::size_t i = 0; i != count; ++i)
        e.AddMessage(line);
    return e.GetPlainText().size();
}

void AddManyLines()
{
    constexpr std::size_t kLines = 1000;
    AddGrowthFigure("context lines of a failure", kLines,
                    [](std::size_t count) { return [count] { return SizeOfLines(count); }; });
}

} // namespace

void AddFigures()
{
    AddFiveLevels();
    AddManyLines();
}
