#include "nelvo/io/dev_pool.h"

#include <future>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

using io::connection_kind_t;

namespace
{

// At its end, looks for the connection with the id 5.
class asking_dev_t : public stub_dev_t
{
public:
    asking_dev_t(const io::io_dev_pool_t& pool, boost::shared_ptr<io::io_dev_t>& found)
        : m_asked(pool), m_found(found)
    {
    }
    ~asking_dev_t() override { m_found = m_asked.GetConnection(5); }
    asking_dev_t(const asking_dev_t&) = delete;
    asking_dev_t& operator=(const asking_dev_t&) = delete;

private:
    const io::io_dev_pool_t& m_asked;
    boost::shared_ptr<io::io_dev_t>& m_found;
};

class DevPool : public ::testing::Test
{
protected:
    boost::shared_ptr<stub_dev_t> Add(std::uint32_t id, connection_kind_t kind)
    {
        const auto connection = boost::make_shared<stub_dev_t>();
        m_pool.AddConnection(id, kind, connection);
        return connection;
    }

    std::string FailureOfId(std::uint32_t id) const
    {
        return Thrown<exc::runtime_exc_t>([&] { m_pool.GetConnection(id); });
    }

    std::string FailureOfTapeControl() const
    {
        return Thrown<exc::runtime_exc_t>([&] { m_pool.GetTapeControlConnection(); });
    }

    io::io_dev_pool_t m_pool;
};

} // namespace

TEST(ConnectionKindName, EachKindHasItsText)
{
    EXPECT_EQ("transport", io::ConnectionKindName(connection_kind_t::kTransport));
    EXPECT_EQ("traffic control", io::ConnectionKindName(connection_kind_t::kTrafficControl));
    EXPECT_EQ("tape control", io::ConnectionKindName(connection_kind_t::kTapeControl));
}

TEST(ConnectionKindName, KindsAreTheNumbersFrom0)
{
    EXPECT_EQ("transport", io::ConnectionKindName(connection_kind_t{0}));
    EXPECT_EQ("traffic control", io::ConnectionKindName(connection_kind_t{1}));
    EXPECT_EQ("tape control", io::ConnectionKindName(connection_kind_t{2}));
}

TEST(ConnectionKindName, AnyOtherNumberIsUnknown)
{
    for (const std::uint32_t kind : {3U, 7U, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ("unknown", io::ConnectionKindName(connection_kind_t{kind})) << kind;
}

TEST_F(DevPool, ConnectionIsFoundByItsId)
{
    const auto zero = Add(0, connection_kind_t::kTransport);
    const auto last = Add(0xFFFFFFFF, connection_kind_t::kTransport);
    EXPECT_EQ(zero, m_pool.GetConnection(0));
    EXPECT_EQ(last, m_pool.GetConnection(0xFFFFFFFF));
}

TEST_F(DevPool, ConnectionThatIsNotThereIsAFailure)
{
    EXPECT_EQ("TCP connections pool does not contain connection with ID '5'.", FailureOfId(5));
    Add(4, connection_kind_t::kTransport);
    EXPECT_EQ("TCP connections pool does not contain connection with ID '4294967295'.",
              FailureOfId(0xFFFFFFFF));
}

TEST_F(DevPool, ConnectionWithATakenIdReplacesTheOther)
{
    Add(5, connection_kind_t::kTapeControl);
    const auto second = Add(5, connection_kind_t::kTransport);
    EXPECT_EQ(second, m_pool.GetConnection(5));
    EXPECT_EQ("Tape control connection not found.", FailureOfTapeControl());
}

TEST_F(DevPool, RemovedConnectionIsGoneAndReleased)
{
    const auto connection = Add(5, connection_kind_t::kTransport);
    m_pool.RemoveConnection(6);
    EXPECT_EQ(connection, m_pool.GetConnection(5));
    m_pool.RemoveConnection(5);
    EXPECT_EQ("TCP connections pool does not contain connection with ID '5'.", FailureOfId(5));
    EXPECT_EQ(1, connection.use_count());
}

TEST_F(DevPool, ConnectionThatIsReplacedMayAskThePoolAtItsEnd)
{
    boost::shared_ptr<io::io_dev_t> found;
    m_pool.AddConnection(5, connection_kind_t::kTransport, boost::make_shared<asking_dev_t>(m_pool, found));
    const auto second = Add(5, connection_kind_t::kTransport);
    EXPECT_EQ(second, found);
}

TEST_F(DevPool, TapeControlConnectionIsTheOneWithTheLowestId)
{
    const auto eight = Add(8, connection_kind_t::kTapeControl);
    Add(1, connection_kind_t::kTransport);
    Add(2, connection_kind_t::kTrafficControl);
    EXPECT_EQ(eight, m_pool.GetTapeControlConnection());
    const auto seven = Add(7, connection_kind_t::kTapeControl);
    EXPECT_EQ(seven, m_pool.GetTapeControlConnection());
}

TEST_F(DevPool, WithoutATapeControlConnectionThereIsAFailure)
{
    EXPECT_EQ("Tape control connection not found.", FailureOfTapeControl());
    Add(1, connection_kind_t::kTransport);
    Add(2, connection_kind_t::kTrafficControl);
    EXPECT_EQ("Tape control connection not found.", FailureOfTapeControl());
}

TEST_F(DevPool, ThreadsShareAPool)
{
    const auto use = [this](std::uint32_t first)
    {
        for (std::uint32_t id = first; id != first + 100; ++id)
        {
            const auto connection = Add(id, connection_kind_t::kTapeControl);
            EXPECT_EQ(connection, m_pool.GetConnection(id));
            EXPECT_NE(nullptr, m_pool.GetTapeControlConnection());
        }
        m_pool.RemoveConnection(first);
    };
    auto other = std::async(std::launch::async, use, 1000);
    use(2000);
    other.get();
    EXPECT_EQ(m_pool.GetConnection(1001), m_pool.GetTapeControlConnection());
}
