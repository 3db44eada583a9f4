#include "nelvo/core/exc/rethrow.h"

#include <cerrno>
#include <functional>
#include <stdexcept>
#include <system_error>
#include <typeinfo>

#include <boost/filesystem/operations.hpp>
#include <boost/system/system_error.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/file_locked_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/silent_exc.h"

namespace
{

// Has a text of its own for its codes. Boost's base class has no virtual destructor, and needs none.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class other_category_t final : public boost::system::error_category
{
public:
    using error_category::message;
    const char* name() const noexcept override { return "other"; }
    std::string message(int /*code*/) const override { return "the category's text"; }
};
#pragma GCC diagnostic pop

// Runs the body, adds the context to what it throws, and returns a copy of what comes out as Out; fails
// the test if something else comes out.
template <class Out>
Out WithContext(const std::function<void()>& body, bool marked = false, const exc_trace_t& trace = {})
{
    try
    {
        try
        {
            body();
        }
        catch (std::exception& e)
        {
            exc::RethrowWithContext(marked, "context %01", e, trace);
        }
    }
    catch (const std::exception& e)
    {
        EXPECT_EQ(typeid(Out), typeid(e));
        return dynamic_cast<const Out&>(e);
    }
    throw std::logic_error("nothing was thrown");
}

template <class Exception>
std::function<void()> Throwing(const Exception& exception)
{
    return [exception] { throw exception; };
}

} // namespace

TEST(RethrowWithContext, ExceptionOfTheFamilyKeepsItsTypeAndGetsTheLine)
{
    const auto locked = WithContext<exc::file_locked_exc_t>(Throwing(exc::file_locked_exc_t("a")));
    EXPECT_STREQ("File [a] is locked.\ncontext %01", locked.what());
    EXPECT_EQ("a", locked.GetFile());

    const auto failed = WithContext<posix::errno_exc_t>(Throwing(posix::errno_exc_t("message", ENOENT)));
    EXPECT_STREQ("No such file or directory\nmessage\ncontext %01", failed.what());
    EXPECT_EQ(static_cast<std::uint32_t>(ENOENT), failed.GetErrorCode());
}

TEST(RethrowWithContext, SameObjectGoesOn)
{
    const void* inner = nullptr;
    const void* outer = nullptr;
    try
    {
        try
        {
            throw exc::runtime_exc_t("A");
        }
        catch (std::exception& e)
        {
            inner = &e;
            exc::RethrowWithContext(false, "B", e);
        }
    }
    catch (const std::exception& e)
    {
        outer = &e;
    }
    EXPECT_EQ(inner, outer);
    EXPECT_NE(nullptr, outer);
}

TEST(RethrowWithContext, MarkedContextShowsItsPrefix)
{
    const auto e = WithContext<exc::runtime_exc_t>(Throwing(exc::runtime_exc_t("A")), true);
    EXPECT_STREQ("A\n--tr:context %01", e.what());
    EXPECT_EQ("A\ncontext %01", e.GetPlainText());

    const auto foreign = WithContext<exc::runtime_exc_t>(Throwing(std::runtime_error("A")), true);
    EXPECT_STREQ("A\n--tr:context %01", foreign.what());
}

TEST(RethrowWithContext, ForeignExceptionLeavesAsRuntimeExceptionWithItsTextFirst)
{
    const auto e = WithContext<exc::runtime_exc_t>(Throwing(std::runtime_error("old %1 text")));
    EXPECT_STREQ("old %1 text\ncontext %01", e.what());
    EXPECT_EQ(0u, e.GetErrorCode());
}

TEST(RethrowWithContext, ForeignExceptionGetsTheThreadThatAddsTheContext)
{
    EXPECT_EQ(pthread_self(),
              WithContext<exc::runtime_exc_t>(Throwing(std::runtime_error("A"))).GetThreadId());
}

TEST(RethrowWithContext, StandardSystemErrorIsAForeignException)
{
    const std::system_error error(ENOSPC, std::generic_category(), "kept");
    const auto e = WithContext<exc::runtime_exc_t>(Throwing(error));
    EXPECT_STREQ("kept: No space left on device\ncontext %01", e.what());
    EXPECT_EQ(0u, e.GetErrorCode());
}

TEST(RethrowWithContext, ForeignExceptionWithoutTextGivesTheContextAlone)
{
    EXPECT_STREQ("context %01", WithContext<exc::runtime_exc_t>(Throwing(silent_exc_t())).what());
}

TEST(RethrowWithContext, BoostSystemErrorGivesItsCodeAndTheSystemsText)
{
    const boost::system::error_code code(ENOSPC, boost::system::generic_category());
    const auto e = WithContext<exc::runtime_exc_t>(Throwing(boost::system::system_error(code, "lost")));
    EXPECT_STREQ("No space left on device\ncontext %01", e.what());
    EXPECT_EQ(static_cast<std::uint32_t>(ENOSPC), e.GetErrorCode());
}

TEST(RethrowWithContext, BoostSystemErrorOfAnyCategoryGetsTheSystemsText)
{
    const other_category_t category;
    const boost::system::system_error error(boost::system::error_code(ENOSPC, category), "lost");
    const auto e = WithContext<exc::runtime_exc_t>(Throwing(error));
    EXPECT_STREQ("No space left on device\ncontext %01", e.what());
    EXPECT_EQ(static_cast<std::uint32_t>(ENOSPC), e.GetErrorCode());
}

TEST(RethrowWithContext, BoostFilesystemErrorIsASystemErrorAndLosesItsPath)
{
    const auto e = WithContext<exc::runtime_exc_t>([] { boost::filesystem::space("/nowhere/at/all"); });
    EXPECT_STREQ("No such file or directory\ncontext %01", e.what());
    EXPECT_EQ(static_cast<std::uint32_t>(ENOENT), e.GetErrorCode());
}

TEST(RethrowWithContext, CallWithoutATraceAddsNone)
{
    const auto full_text = [](const std::function<void()>& body)
    {
        try
        {
            try
            {
                body();
            }
            catch (std::exception& e)
            {
                exc::RethrowWithContext(false, "B", e);
            }
        }
        catch (const exc::exc_base_t& e)
        {
            return e.GetFullText();
        }
        return std::string("nothing was thrown");
    };
    EXPECT_EQ("A\nB", full_text(Throwing(exc::runtime_exc_t("A"))));
    EXPECT_EQ("A\nB", full_text(Throwing(std::runtime_error("A"))));
}

TEST(RethrowWithContext, TraceIsMergedIntoEitherKind)
{
    exc_trace_t trace;
    trace.properties = {{"a", "new"}, {"b", "added"}};
    trace.events = {{3, "info"}};
    exc::runtime_exc_t ours("A");
    ours.GetTrace().properties["a"] = "old";

    EXPECT_EQ("A\ncontext %01\n--tr:property:a:old\n--tr:property:b:added\n--tr:event:3:info",
              WithContext<exc::runtime_exc_t>(Throwing(ours), false, trace).GetFullText());
    EXPECT_EQ("B\ncontext %01\n--tr:property:a:new\n--tr:property:b:added\n--tr:event:3:info",
              WithContext<exc::runtime_exc_t>(Throwing(std::runtime_error("B")), false, trace).GetFullText());
}
