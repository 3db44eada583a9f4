// Messages, scopes, the start of a log and its rotation, while memory runs out.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/logging/channels.h"
#include "nelvo/logging/log_exception.h"
#include "nelvo/logging/progress_scope.h"
#include "nelvo/logging/receiver/log_start.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "nelvo/logging/receiver/rotation.h"
#include "nelvo/logging/receiver/zip_writer.h"
#include "nelvo/monitoring/thread_registration.h"
#include "tests/faults/allocation_sweep.h"
#include "tests/faults/swept_log.h"
#include "tests/support/private_disk.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/temp_folder.h"

namespace fs = std::filesystem;

namespace
{

const std::string kText = "the quick brown fox jumps over it";
const std::wstring kWideText = L"the quick brown f\u00f6x jumps over it";

// A message call throws nothing, whatever becomes of its lines.
class LogWithoutMemory : public testing::Test
{
protected:
    void Sweep(const std::string& expected, const std::function<void(const logging::log_channel_t&)>& act)
    {
        const logging::log_channel_t channel("agentid");
        SweepAllocations({[&] { ActWithoutThrowing([&] { act(channel); }); },
                          [this] { return m_log.Taken(); },
                          expected,
                          {},
                          true});
    }

    static void ActWithoutThrowing(const std::function<void()>& act) noexcept { act(); }

    swept_log_t m_log;
};

// On a thread that has a state, for the marks of its scopes.
class ScopeWithoutMemory : public LogWithoutMemory
{
protected:
    ScopeWithoutMemory() { m_log.Taken(); }

private:
    const CThreadMonitorRegistration m_registration{"a role", 0};
};

} // namespace

TEST_F(LogWithoutMemory, NarrowMessageIsWrittenOrDropped)
{
    Sweep("agentid| the quick brown fox jumps over it\n", [](const auto& channel) { channel.info(kText); });
    Sweep("agentid| Agent id: the quick brown fox jumps over it 7 true\n",
          [](const auto& channel) { channel.info("Agent id: %1 %2 %3", kText, 7, true); });
    Sweep("agentid| WARN|the quick brown fox\nagentid| >>  |jumps over it\n",
          [](const auto& channel) { channel.warning("the quick brown fox\njumps over %1", "it"); });
    Sweep("agentid|     the quick brown fox jumps over it\n",
          [](const auto& channel) { channel.detail(logging::at(2), kText); });
}

TEST_F(LogWithoutMemory, WideMessageIsWrittenOrDropped)
{
    Sweep("agentid| the quick brown f\u00f6x jumps over it\n",
          [](const auto& channel) { channel.info(kWideText); });
    Sweep("agentid| ERR |Agent id: the quick brown f\u00f6x jumps over it 7\n",
          [](const auto& channel) { channel.error(L"Agent id: %1 %2", kWideText, 7); });
}

TEST_F(LogWithoutMemory, FailureIsToldOrDropped)
{
    const std::runtime_error failure(kText);
    Sweep("agentid| WARN|the quick brown fox jumps over it\n",
          [&](const auto& channel) { channel.warning_exc(failure); });
    Sweep("agentid| ERR |the quick brown fox jumps over it\n"
          "agentid| >>  |An exception was thrown from thread [n/a].\n",
          [&](const auto& channel) { channel.error_exc(failure); });
    Sweep("agentid| WARN|Looking at the quick brown fox jumps over it\n"
          "agentid| >>  |the quick brown fox jumps over it\n",
          [&](const auto& channel) { channel.warning_exc(failure, "Looking at %1", kText); });
    Sweep("agentid| ERR |Looking at the quick brown f\u00f6x jumps over it\n"
          "agentid| >>  |the quick brown fox jumps over it\n"
          "agentid| >>  |An exception was thrown from thread [n/a].\n",
          [&](const auto& channel) { channel.error_exc(failure, L"Looking at %1", kWideText); });
}

TEST_F(LogWithoutMemory, LogExceptionTellsOrDrops)
{
    const std::runtime_error failure(kText);
    Sweep("       | ERR |the quick brown fox jumps over it\n",
          [&](const auto&) { logging::log_exception(failure); });
    Sweep("       | ERR |Cannot close the quick brown fox jumps over it\n"
          "       | ERR |the quick brown fox jumps over it\n",
          [&](const auto&) { logging::log_exception(failure, "Cannot close %1", kText); });
    Sweep("       | ERR |Cannot close the quick brown f\u00f6x jumps over it\n"
          "       | ERR |the quick brown fox jumps over it\n",
          [&](const auto&) { logging::log_exception(failure, L"Cannot close %1", kWideText); });
}

TEST_F(LogWithoutMemory, DebugThrowsNothingEither)
{
    Sweep("",
          [&](const auto& channel)
          {
              channel.debug("%1 of %2", kText, kText);
              channel.debug(L"%1 of %2", kWideText, kWideText);
          });
}

TEST_F(LogWithoutMemory, FilteredLineIsWrittenOrDropped)
{
    class filter_t : public logging::format::line_filter_t
    {
    public:
        std::string filter_line(std::string_view text) override { return "filtered: " + std::string(text); }
    };
    logging::GetProcessLog()->set_line_filter(boost::make_shared<filter_t>());
    Sweep("agentid| filtered: the quick brown fox jumps over it\n",
          [](const auto& channel) { channel.info(kText); });
    logging::GetProcessLog()->set_line_filter({});
}

TEST_F(LogWithoutMemory, LongMessageIsWrittenOrDropped)
{
    const std::string text(100000, 'a');
    Sweep("agentid| " + text + "\n", [&](const auto& channel) { channel.info(text); });
}

TEST_F(LogWithoutMemory, ChannelIsBuiltOrThrows)
{
    SweepAllocations(
        {[] { const logging::log_channel_t channel("agentid"); }, [] { return "built"; }, "built"});
}

TEST_F(LogWithoutMemory, MaskedTextIsWholeOrThrows)
{
    std::string text;
    SweepAllocations({[&] { text = logging::channels::default_log.mask(kText); },
                      [&] { return std::exchange(text, ""); }, kText, ""});
}

TEST_F(LogWithoutMemory, PathIsToldOrThrows)
{
    const logging::log_t log(boost::make_shared<lines_receiver_t>("/var/log/nelvo/agentid/agentid.log"));
    std::string path;
    SweepAllocations({[&] { path = log.get_log_path(); }, [&] { return std::exchange(path, ""); },
                      "/var/log/nelvo/agentid/agentid.log", ""});
}

TEST_F(ScopeWithoutMemory, IsOpenedAndClosedOrThrowsAndLeavesNoIndent)
{
    const logging::log_channel_t channel("agentid");
    const std::string frame = "agentid| Looking at the quick brown fox jumps over it\nagentid|   line\n";
    const auto sweep = [&](const std::string& end, const std::function<void(progress_scope_t&)>& close)
    {
        SweepAllocations({[&]
                          {
                              progress_scope_t scope(channel, "Looking at %1", kText);
                              channel.info("line");
                              close(scope);
                          },
                          [&]
                          {
                              EXPECT_EQ(0, channel.get_indent());
                              return m_log.Taken();
                          },
                          frame + end,
                          {},
                          true});
    };
    sweep("agentid| Found the quick brown fox jumps over it\n",
          [](progress_scope_t& scope) { scope.close_with("Found %1", kText); });
    sweep("agentid| Looking at the quick brown fox jumps over it ok.\n",
          [](progress_scope_t& scope) { scope.close_ok(); });
    sweep("agentid| Looking at the quick brown fox jumps over it Failed.\n",
          [](progress_scope_t& scope) { scope.close_failed(); });
}

TEST_F(ScopeWithoutMemory, WideOneIsOpenedAndClosedOrThrows)
{
    const logging::log_channel_t channel("agentid");
    SweepAllocations({[&]
                      {
                          progress_scope_t scope(channel, L"Looking at %1", kWideText);
                          scope.close_quietly();
                      },
                      [&] { return m_log.Taken(); },
                      "agentid| Looking at the quick brown f\u00f6x jumps over it\n",
                      {},
                      true});
}

TEST_F(ScopeWithoutMemory, DestructorThrowsNothing)
{
    const logging::log_channel_t channel("agentid");
    boost::shared_ptr<progress_scope_t> scope;
    const auto open = [&]
    { scope = boost::make_shared<progress_scope_t>(true, channel, "Looking at %1", kText); };
    open();
    SweepAllocations({[&] { ActWithoutThrowing([&] { scope.reset(); }); },
                      [&]
                      {
                          EXPECT_EQ(0, channel.get_indent());
                          open();
                          return m_log.Taken();
                      },
                      "",
                      {},
                      true});

    boost::shared_ptr<quiet_progress_scope_t> quiet;
    const auto open_quiet = [&]
    { quiet = boost::make_shared<quiet_progress_scope_t>(channel, logging::message_t(kText, {})); };
    open_quiet();
    SweepAllocations({[&] { ActWithoutThrowing([&] { quiet.reset(); }); },
                      [&]
                      {
                          open_quiet();
                          return m_log.Taken();
                      },
                      "agentid|   the quick brown fox jumps over it Failed.\n",
                      {},
                      true});
}

TEST_F(ScopeWithoutMemory, QuietOneIsClosedOrThrows)
{
    const logging::log_channel_t channel("agentid");
    SweepAllocations({[&]
                      {
                          quiet_progress_scope_t scope(channel, "Looking at %1", kText);
                          scope.close_with("Found %1", kText);
                      },
                      [&] { return m_log.Taken(); },
                      "agentid| Found the quick brown fox jumps over it\n",
                      {},
                      true});
}

// The thread's indent in that log is made by the first scope.
TEST_F(ScopeWithoutMemory, FirstOneInALogIsOpenedOrThrows)
{
    boost::shared_ptr<logging::log_t> log;
    const auto renew = [&] { log = boost::make_shared<logging::log_t>(); };
    renew();
    SweepAllocations({[&]
                      {
                          const logging::log_channel_t channel("agentid", log);
                          progress_scope_t scope(channel, kText);
                      },
                      [&]
                      {
                          EXPECT_EQ(0, log->get_indent());
                          renew();
                          return "opened";
                      },
                      "opened"});
}

namespace
{

// A log whose files, those of the fallback too, are this process's own.
class LogFileWithoutMemory : public testing::Test
{
protected:
    // The capture gets memory for what is printed.
    LogFileWithoutMemory() { std::cout << std::string(1000, '\n'); }
    ~LogFileWithoutMemory() override { logging::GetProcessLog()->set_receiver({}); }

    // What the log holds, wherever it is; the next one begins anew.
    std::string Text()
    {
        logging::GetProcessLog()->set_receiver({});
        std::string text;
        for (const std::string& path : {m_path, std::string("/tmp/NelvoBackup/agentid.log")})
        {
            text += fs::exists(path) ? ReadFile(path) : "";
            fs::remove(path);
        }
        fs::remove_all("/tmp/NelvoBackup");
        fs::remove_all(m_folder / "logs");
        return WithoutHeads(text);
    }

    const private_disk_t m_tmp{"/tmp", 32'000'000};
    const temp_folder_t m_folder;
    const std::string m_path = m_folder / "logs/agentid.log";
    const stdout_capture_t m_stdout;
    const logging::log_channel_t m_channel{"agentid"};
};

} // namespace

TEST_F(LogFileWithoutMemory, LogIsStartedOrThereIsNone)
{
    SweepAllocations({[this]
                      {
                          logging::start_log(m_path, false, false, true);
                          m_channel.info(kText);
                      },
                      [this] { return Text(); },
                      "agentid| the quick brown fox jumps over it\n",
                      {},
                      true});
}

TEST_F(LogFileWithoutMemory, LogOnStandardOutputIsStartedOrThereIsNone)
{
    SweepAllocations({[this]
                      {
                          logging::open_log({}, false, false);
                          m_channel.info(kText);
                      },
                      []
                      {
                          logging::GetProcessLog()->set_receiver({});
                          return "started";
                      },
                      "started"});
}

TEST_F(LogFileWithoutMemory, ParametersAreReadOrThrow)
{
    std::vector<std::string> paths;
    SweepAllocations({[&]
                      {
                          paths.clear();
                          logging::parse_log_params("debug,/a/path__that/is/not/short.log,flush", paths);
                      },
                      [&] { return paths.empty() ? "" : std::exchange(paths, {}).front(); },
                      "/a/path_that/is/not/short.log"});
}

TEST_F(LogFileWithoutMemory, SafeStartThrowsNothing)
{
    const std::string params = "debug," + m_path;
    SweepAllocations({[&]
                      {
                          [&]() noexcept { logging::start_log_from_params_safe(params, false); }();
                          m_channel.info(kText);
                      },
                      [this] { return Text(); },
                      "agentid| the quick brown fox jumps over it\n",
                      {},
                      true});
}

TEST_F(LogFileWithoutMemory, LogIsResetOrThrows)
{
    logging::start_log(m_path, false, false, false);
    SweepAllocations({[] { logging::reset_log(); },
                      [&]
                      {
                          m_channel.info(kText);
                          std::string text = Text();
                          logging::start_log(m_path, false, false, false);
                          return text.empty() ? "agentid| the quick brown fox jumps over it\n" : text;
                      },
                      "agentid| the quick brown fox jumps over it\n"});
}

namespace
{

// Too big, with little to move.
class big_receiver_t : public lines_receiver_t
{
public:
    using lines_receiver_t::lines_receiver_t;
    std::uint64_t get_size() const override { return 15728640; }
    void compress_to(util::zip_writer_t& writer) override { writer.write(kText.data(), 33); }
};

} // namespace

TEST(RotationWithoutMemory, ArchivesAgeAndTheLogMovesOrItThrows)
{
    const temp_folder_t folder;
    swept_log_t log;
    big_receiver_t receiver(folder / "agentid.log");
    const auto renew = [&]
    {
        for (const auto& entry : fs::directory_iterator(folder.path()))
            fs::remove(entry.path());
        WriteFile(folder / "agentid.log.gz", "first");
        WriteFile(folder / "agentid.1.log.gz", "second");
    };
    const auto has_aged = [&]
    {
        const std::string older = folder / "agentid.1.log.gz";
        return fs::exists(older) && ReadFile(older) == "first";
    };
    renew();
    SweepAllocations({[&] { logging::receiver::validate_log_size(receiver); },
                      [&]
                      {
                          const std::string result = has_aged() ? "aged" : "not aged";
                          renew();
                          log.Taken();
                          return result;
                      },
                      "aged"});
}

// What zlib has no memory for is lost without a word; whether there is an archive is told.
TEST(RotationWithoutMemory, ArchiveIsOpenedOrThrows)
{
    const temp_folder_t folder;
    const std::string name = folder / "an archive of a name that is not short.gz";
    swept_log_t log;
    SweepAllocations({[&]
                      {
                          util::zip_writer_t writer(name, 9);
                          writer.write(kText.data(), 33);
                      },
                      [&]
                      {
                          log.Taken();
                          return fs::remove(name) ? "opened" : "missing";
                      },
                      "opened"});
}

TEST(RotationWithoutMemory, LogFileMovesToAnArchiveOrThrowsAndKeepsItsText)
{
    const temp_folder_t folder;
    const std::string path = folder / "a log of a name that is not short.log";
    WriteFile(path, kText);
    posix::posix_log_file_t file(path);
    util::zip_writer_t writer(folder / "archive.gz", 1);
    writer.write(kText.data(), 1); // zlib has its memory now
    SweepAllocations({[&] { file.compress_to(writer); },
                      [&]
                      {
                          const std::string left = ReadFile(path);
                          WriteFile(path, kText);
                          return left;
                      },
                      "", kText});
}

TEST(RotationWithoutMemory, LogFileIsOpenedOrThrows)
{
    const temp_folder_t folder;
    const std::string path = folder / "a log of a name that is not short.log";
    SweepAllocations({[&]
                      {
                          posix::posix_log_file_t file(path);
                          file.write(kText);
                      },
                      [&]
                      {
                          std::string text = fs::exists(path) ? ReadFile(path) : "";
                          fs::remove(path);
                          return text;
                      },
                      kText});
}
