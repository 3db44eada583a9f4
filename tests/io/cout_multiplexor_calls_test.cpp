#include "nelvo/io/cout_multiplexor.h"

#include <functional>
#include <iostream>
#include <new>
#include <stdexcept>
#include <streambuf>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/mutex_watch.h"
#include "tests/support/redirected_stream.h"

namespace
{

// Notes each text, and may fail then.
class noting_target_t : public io::cout_target_t
{
public:
    std::uint64_t write(const void*, std::uint64_t) override { return 0; }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }
    void write_text(const std::string&) override
    {
        NoteAmongCalls(" a text ");
        if (fails)
            throw std::runtime_error("no reader");
    }

    bool fails = false;
};

// Takes what std::cerr is given, for as long as it lives.
class noted_stderr_t : private std::streambuf
{
    std::streamsize xsputn(const char* text, std::streamsize size) override
    {
        NoteAmongCalls(std::string(text, static_cast<std::size_t>(size)));
        return size;
    }
    int overflow(int letter) override
    {
        NoteAmongCalls(std::string(1, static_cast<char>(letter)));
        return letter;
    }

    redirected_stream_t m_redirected{std::cerr, this};
};

class CoutMultiplexorCalls : public ::testing::Test
{
protected:
    CoutMultiplexorCalls()
    {
        m_receiver->set_hook([] { NoteAmongCalls(" a line "); });
        logging::GetProcessLog()->set_receiver(m_receiver);
    }
    ~CoutMultiplexorCalls() override { logging::GetProcessLog()->set_receiver({}); }

    std::string Calls(const std::function<void()>& operation) const
    {
        return MutexCalls({Watched(m_multiplexor, 'm')}, operation);
    }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    boost::shared_ptr<noting_target_t> m_target = boost::make_shared<noting_target_t>();
    io::CCoutMultiplexor m_multiplexor;
};

} // namespace

TEST_F(CoutMultiplexorCalls, ListIsChangedAndLoggedUnderTheLock)
{
    EXPECT_EQ("m+ a line m-", Calls([&] { m_multiplexor.add_target(m_target); }));
    EXPECT_EQ("m+ a line m-", Calls([&] { m_multiplexor.remove_target(nullptr); }));
    EXPECT_EQ("m+ a line m-", Calls([&] { m_multiplexor.clear_targets(); }));
    EXPECT_EQ("m+m-", Calls([&] { m_multiplexor.clear_targets(); }));
}

TEST_F(CoutMultiplexorCalls, EachSendIsUnderOneLock)
{
    m_multiplexor.add_target(m_target);
    EXPECT_EQ("m+ a text  a text  a text m-", Calls([&] { m_multiplexor.write_error("a"); }));
    EXPECT_EQ("m+ a text m-", Calls([&] { m_multiplexor.send_text("a", 2); }));
    EXPECT_EQ("m+ a text m-", Calls([&] { m_multiplexor.send_named_value("a", "b"); }));
}

TEST_F(CoutMultiplexorCalls, NamedValueIsFormedBeforeTheLock)
{
    const std::string name(100, 'n');
    const std::string value = "v";
    m_multiplexor.add_target(m_target);
    EXPECT_EQ("", Calls(
                      [&]
                      {
                          FailNextAllocation();
                          EXPECT_THROW(m_multiplexor.send_named_value(name, value), std::bad_alloc);
                      }));
    EXPECT_TRUE(HasAllocationFailed());
}

TEST_F(CoutMultiplexorCalls, FailureIsLoggedUnderTheLock)
{
    m_multiplexor.add_target(m_target);
    m_target->fails = true;
    EXPECT_EQ("m+ a text  a line m-", Calls([&] { m_multiplexor.write_error("a"); }));
    EXPECT_EQ("m+ a text  a line m-", Calls([&] { m_multiplexor.send_text("a", 0); }));
}

TEST_F(CoutMultiplexorCalls, StandardErrorIsWrittenUnderTheLock)
{
    const noted_stderr_t err;
    EXPECT_EQ("m+it failed\nm-", Calls([&] { m_multiplexor.write_error("it failed"); }));
}
