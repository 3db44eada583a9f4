#include <stdexcept>

#include <gtest/gtest.h>
#include <uuid/uuid.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/guid.h"

extern "C" void uuid_generate(uuid_t) { throw std::runtime_error("no luck"); }

TEST(Guid, FailureOfGenerationCarriesItsContext)
{
    Guid value;
    for (const auto& generate : {+[](Guid& g) { g = Guid::Generate(); }, +[](Guid& g) { g.CreateInPlace(); }})
    {
        try
        {
            generate(value);
            FAIL() << "nothing was thrown";
        }
        catch (const exc::runtime_exc_t& e)
        {
            EXPECT_STREQ("no luck\nFailed to create GUID.", e.what());
        }
    }
}
