// How often messages, scopes and stored records ask the heap for memory, so that no copy comes in unnoticed.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/crypto/key_set.h"
#include "nelvo/fs/file_info.h"
#include "nelvo/fs/posix_file_security.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/progress_scope.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "nelvo/monitoring/thread_state.h"
#include "tests/faults/swept_heap.h"
#include "tests/support/record_stream.h"
#include "tests/support/temp_folder.h"

using crypto::CKey;
using crypto::CKeySet;

namespace
{

const std::string kText = "the quick brown fox jumps over it";

// Those of one run, by this thread, when what is kept from run to run is there.
std::size_t Allocations(const std::function<void()>& work)
{
    work();
    work();
    BeginShortage(SIZE_MAX, shortage_t::kOfOne, asking_t::kThisThread);
    work();
    return EndShortage().asked;
}

// Those of work that begins at the start of a stream.
std::size_t AllocationsAtTheStart(record_stream_t& stream, const std::function<void(io::io_dev_t&)>& work)
{
    const auto device = stream.GetMemDevice();
    return Allocations(
        [&]
        {
            device->SeekAbsolute(0);
            work(stream);
        });
}

class MessageInAFile : public testing::Test
{
protected:
    const temp_folder_t m_folder;
    const logging::log_channel_t m_channel{
        "agentid",
        boost::make_shared<logging::log_t>(boost::make_shared<posix::posix_log_file_t>(m_folder / "a.log"))};
};

// The thread has a state for marks, which it could not get rid of again.
class ScopeInAFile : public MessageInAFile
{
protected:
    ScopeInAFile()
    {
        monitoring::CThreadStatesCollection::GetInstance()->Add(
            boost::make_shared<monitoring::CThreadState>("test"));
    }

    // Those beyond the mark's two, which are the mark and its text.
    std::size_t Taken(const std::function<void()>& work) const { return Allocations(work) - 2; }
};

} // namespace

TEST_F(MessageInAFile, TakesNoMemoryForATextOfAnyNumberOfLines)
{
    EXPECT_EQ(0u, Allocations([&] { m_channel.info(kText); }));
    EXPECT_EQ(0u, Allocations([&] { m_channel.warning(kText); }));
    EXPECT_EQ(0u, Allocations([&] { m_channel.info("the quick brown fox\njumps over\nthe lazy dog"); }));
    EXPECT_EQ(0u, Allocations([&, text = std::string(3000, 'a')] { m_channel.info(text); }));
}

TEST_F(MessageInAFile, TakesMemoryOnceForAPattern)
{
    EXPECT_EQ(1u, Allocations([&] { m_channel.info("The end of it: %1", kText); }));
    EXPECT_EQ(1u, Allocations([&] { m_channel.info("%1, %2 of %3", kText, 1048576, 3); }));
    EXPECT_EQ(1u, Allocations([&] { m_channel.debug("%1, %2 of %3", kText, 1048576, 3); }));
}

TEST_F(MessageInAFile, OfWideTextTakesMemoryForThePatternEachLongArgumentAndTheWhole)
{
    const std::wstring text(kText.begin(), kText.end());
    EXPECT_EQ(1u, Allocations([&] { m_channel.info(text); }));
    EXPECT_EQ(3u, Allocations([&] { m_channel.info(L"It says %1, %2 of %3", text, 1048576, 3); }));
}

TEST_F(MessageInAFile, WithoutAReceiverTakesMemoryForItsTextAlone)
{
    const logging::log_channel_t channel("agentid", boost::make_shared<logging::log_t>());
    EXPECT_EQ(0u, Allocations([&] { channel.info(kText); }));
    EXPECT_EQ(1u, Allocations([&] { channel.info("The end of it: %1", kText); }));
}

TEST_F(ScopeInAFile, TakesMemoryForTheTextItKeepsAndForOneItForms)
{
    const auto taken = [&](const std::function<void(progress_scope_t&)>& close)
    {
        return Taken(
            [&]
            {
                progress_scope_t scope(m_channel, kText);
                close(scope);
            });
    };
    EXPECT_EQ(1u, taken([](progress_scope_t& scope) { scope.close_quietly(); }));
    EXPECT_EQ(1u, taken([](progress_scope_t& scope) { scope.close_with(kText); }));
    EXPECT_EQ(2u, taken([](progress_scope_t& scope) { scope.close_with("Found %1", kText); }));
    EXPECT_EQ(2u, taken([](progress_scope_t& scope) { scope.close_ok(); }));
    EXPECT_EQ(2u, taken([](progress_scope_t& scope) { scope.close_failed(); }));
}

TEST_F(ScopeInAFile, TakesMemoryOnceForThePatternItBeginsWith)
{
    EXPECT_EQ(1u, Taken([&] { progress_scope_t(m_channel, "At %1", kText).close_quietly(); }));
    EXPECT_EQ(1u, Taken([&] { quiet_progress_scope_t(m_channel, "At %1", kText).close_with(kText); }));
}

// The stream has its memory from the runs before. What is read are the two texts.
TEST(RecordInMemory, OfAFileIsWrittenWithoutMemoryAndReadWithThatOfItsTexts)
{
    util::FileInfo info;
    info.name = kText;
    info.meta.acl.access_acl = kText;
    record_stream_t stream;
    EXPECT_EQ(0u, AllocationsAtTheStart(stream, [&](io::io_dev_t& device)
                                        { util::SerializeFileInfo(info, device); }));
    EXPECT_EQ(2u, AllocationsAtTheStart(stream, [&](io::io_dev_t& device)
                                        { util::DeserializeFileInfo(info, device); }));
}

// Written: a device, its array, and the bytes at once in their length.
TEST(RecordInMemory, OfAnOwnerIsWrittenWithThreeAllocationsAndReadWithOne)
{
    const posix::posix_file_security security;
    cnt::plain_array_t buffer;
    EXPECT_EQ(3u, Allocations([&] { security.Serialize(buffer); }));
    EXPECT_EQ(1u, Allocations([&] { posix::posix_file_security::Deserialize(buffer); }));
}

// Read: the key, its array and the bytes.
TEST(RecordInMemory, OfAKeyIsWrittenWithoutMemoryAndReadWithThreeAllocations)
{
    const CKey key(0, crypto::secure_array_t(32));
    record_stream_t stream;
    EXPECT_EQ(0u, AllocationsAtTheStart(stream, [&](io::io_dev_t& device) { key.Serialize(device); }));
    EXPECT_EQ(3u, AllocationsAtTheStart(stream, [](io::io_dev_t& device) { CKey::DeSerialize(device); }));
}

// Written: the hint in UTF-8. Read: the set, its id, its hint in both forms, the list, and the three of the
// key.
TEST(RecordInMemory, OfAKeySetIsWrittenWithMemoryForItsHintAndReadWithThatOfItsParts)
{
    const auto key = boost::make_shared<CKey>(0, crypto::secure_array_t(32));
    const CKeySet set({}, 0, L"the quick brown fox", 1, {key}, {}, {});
    record_stream_t stream;
    EXPECT_EQ(1u, AllocationsAtTheStart(stream, [&](io::io_dev_t& device) { set.Serialize(device); }));
    EXPECT_EQ(8u, AllocationsAtTheStart(stream, [](io::io_dev_t& device) { CKeySet::DeSerialize(device); }));
}
