#include "nelvo/logging/receiver/log_file.h"

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/lines_receiver.h"
#include "tests/support/vtable_slot.h"

namespace
{

// Shows its fields, and has an operation more, which stands behind the base's.
class shown_receiver_t : public lines_receiver_t
{
public:
    using logging::receiver::log_file_t::m_eol;
    using logging::receiver::log_file_t::m_flush;
    using logging::receiver::log_file_t::m_path;
    virtual void behind() {}
};

struct fields_t
{
    void* table;
    bool flush;
    std::string path;
    std::string eol;
};

} // namespace

TEST(LogFile, FieldsAreFlushPathAndLineEndInThisOrder)
{
    const shown_receiver_t receiver;
    const void* const flush = &receiver.m_flush;
    const void* const path = &receiver.m_path;
    const void* const eol = &receiver.m_eol;
    EXPECT_LT(flush, path);
    EXPECT_LT(path, eol);
    EXPECT_EQ(sizeof(fields_t), sizeof(logging::receiver::log_file_t));
}

TEST(LogFile, FlushesNothingAtFirst) { EXPECT_FALSE(shown_receiver_t().m_flush); }

TEST(LogFile, PathIsWhatItWasGiven)
{
    EXPECT_EQ("", lines_receiver_t().get_path());
    EXPECT_EQ("/x/a.log", lines_receiver_t("/x/a.log").get_path());
}

TEST(LogFile, LineEndIsALineFeed) { EXPECT_EQ("\n", lines_receiver_t().get_eol()); }

TEST(LogFile, OperationsKeepTheirPlaces)
{
    using logging::receiver::log_file_t;
    EXPECT_EQ(0u, VtableSlot(&log_file_t::write));
    EXPECT_EQ(1u, VtableSlot(&log_file_t::get_path));
    EXPECT_EQ(2u, VtableSlot(&log_file_t::get_eol));
    EXPECT_EQ(3u, VtableSlot(&log_file_t::get_size));
    EXPECT_EQ(4u, VtableSlot(&log_file_t::compress_to));
    // The two places between are the destructors'.
    EXPECT_TRUE(std::has_virtual_destructor_v<log_file_t>);
    EXPECT_EQ(7u, VtableSlot(&shown_receiver_t::behind));
}
