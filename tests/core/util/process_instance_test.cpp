#include "nelvo/core/util/process_instance.h"

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "tests/support/program_output.h"

namespace
{

// A kind for each test.
template <int Test>
struct object_tt
{
};

template <int Test, class Build>
auto Get(const Build& build)
{
    return util::process_instance_tt<object_tt<Test>>::Get(build);
}

template <int Test>
auto Get()
{
    return Get<Test>([] { return boost::make_shared<object_tt<Test>>(); });
}

} // namespace

TEST(ProcessInstance, IsBuiltByTheFirstCallAlone)
{
    const auto object = Get<1>();
    EXPECT_EQ(2, object.use_count());
    const auto again = Get<1>(
        []
        {
            ADD_FAILURE() << "built again";
            return boost::make_shared<object_tt<1>>();
        });
    EXPECT_EQ(object, again);
}

TEST(ProcessInstance, RacingFirstCallsBuildOnce)
{
    constexpr int kThreads = 8;
    std::atomic<int> ready{0};
    std::atomic<int> built{0};
    std::vector<boost::shared_ptr<object_tt<2>>> objects(kThreads);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (auto& object : objects)
        threads.emplace_back(
            [&]
            {
                for (++ready; ready != kThreads;)
                    std::this_thread::yield();
                object = Get<2>(
                    [&]
                    {
                        ++built;
                        std::this_thread::yield();
                        return boost::make_shared<object_tt<2>>();
                    });
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(1, built);
    EXPECT_EQ(std::vector<boost::shared_ptr<object_tt<2>>>(kThreads, Get<2>()), objects);
}

TEST(ProcessInstance, BuildingThatFailsIsTriedAgain)
{
    const auto fail = []() -> boost::shared_ptr<object_tt<3>> { throw std::runtime_error("no luck"); };
    EXPECT_THROW(Get<3>(fail), std::runtime_error);
    std::thread([&] { EXPECT_THROW(Get<3>(fail), std::runtime_error); }).join();
    EXPECT_NE(nullptr, Get<3>());
}

TEST(ProcessInstance, BuildingMayAskForOtherInstances)
{
    boost::shared_ptr<object_tt<5>> other;
    Get<4>(
        [&]
        {
            other = Get<5>();
            return boost::make_shared<object_tt<4>>();
        });
    EXPECT_EQ(Get<5>(), other);
}

TEST(ProcessInstance, PreparingBuildsNothing)
{
    using instance_t = util::process_instance_tt<object_tt<6>>;
    EXPECT_TRUE(instance_t::Prepare());
    int built = 0;
    instance_t::Get(
        [&]
        {
            ++built;
            return boost::make_shared<object_tt<6>>();
        });
    EXPECT_TRUE(instance_t::Prepare());
    EXPECT_EQ(1, built);
}

TEST(ProcessInstance, IsReleasedAtTheExitAndCanBeAskedForLater)
{
    EXPECT_EQ("the asked is built\n"
              "the kept is built\n"
              "main ends\n"
              "the asked ends\n"
              "exit: the kept is there\n"
              "the asked, once more, is built\n"
              "exit: the asked, once more, is there\n"
              "the kept ends\n"
              "the asked, once more, ends\n",
              OutputOf(INSTANCES_AT_EXIT));
}
