// Devices, stored values, pools, prefixes and listeners, while memory runs out.

#include <cstdint>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/io/binary_value.h"
#include "nelvo/io/buffered_stream.h"
#include "nelvo/io/cout_multiplexor.h"
#include "nelvo/io/dev_registry.h"
#include "nelvo/io/fixed_cache.h"
#include "nelvo/io/mem_stream.h"
#include "tests/faults/allocation_sweep.h"
#include "tests/faults/swept_listener.h"
#include "tests/faults/swept_log.h"
#include "tests/support/failure_text.h"
#include "tests/support/flat_buffer.h"
#include "tests/support/record_stream.h"

namespace
{

const std::string kText = "the quick brown fox jumps over it";
const std::string kLongText(5000, 'a');

// Takes all and takes no memory for it.
class sink_t : public io::io_dev_t
{
public:
    std::uint64_t write(const void*, std::uint64_t count) override
    {
        m_taken += count;
        return count;
    }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }
    std::uint64_t taken() { return std::exchange(m_taken, 0); }

private:
    std::uint64_t m_taken = 0;
};

template <class Array>
void SweepMemDevice()
{
    boost::shared_ptr<io::mem_dev_tt<Array>> device;
    const auto renew = [&] { device = boost::make_shared<io::mem_dev_tt<Array>>(); };
    renew();
    const auto sweep = [&](const std::string& expected, const std::function<void()>& act)
    {
        SweepAllocations({act,
                          [&]
                          {
                              std::string bytes = BytesOf(*device->GetArray());
                              renew();
                              return bytes;
                          },
                          expected, ""});
    };
    sweep(kText, [&] { device->write(kText.data(), kText.size()); });
    sweep({"abcd", 4}, [&] { device->write("abcd", 4); });

    const auto array = boost::make_shared<Array>("before", 6);
    SweepAllocations({[&]
                      {
                          io::mem_dev_tt<Array> over(array);
                          over.SeekAbsolute(4);
                          over.write(kText.data(), kText.size());
                      },
                      [&]
                      {
                          std::string bytes = BytesOf(*array);
                          *array = Array("before", 6);
                          return bytes;
                      },
                      "befo" + kText, "before"});
}

std::string StoredText(const std::string& text)
{
    return Written([&](io::io_dev_t& stream) { io::WriteString(stream, text); });
}

template <class Value, class Read>
void SweepRead(const std::string& bytes, const std::string& expected, Read read)
{
    record_stream_t stream(bytes);
    Value value{};
    SweepAllocations({[&] { value = read(stream); },
                      [&]
                      {
                          stream.GetMemDevice()->SeekAbsolute(0);
                          const Value got = std::exchange(value, {});
                          return std::string(got.begin(), got.end());
                      },
                      expected, ""});
}

} // namespace

TEST(DevicesWithoutMemory, MemoryDeviceTakesAllOrNothing)
{
    SweepMemDevice<cnt::plain_array_t>();
    SweepMemDevice<cnt::secure_array_t>();
}

TEST(DevicesWithoutMemory, MemoryStreamIsBuiltOrThrows)
{
    std::string bytes;
    bytes.reserve(64);
    SweepAllocations({[&]
                      {
                          io::secure_mem_stream_t stream;
                          io::WriteString(stream, "ab");
                          bytes.assign(stream.GetArray()->data(), stream.GetArray()->size());
                      },
                      [&] { return std::exchange(bytes, {}); },
                      {"\x02\x00\x00\x00"
                       "ab",
                       6},
                      ""});
}

TEST(DevicesWithoutMemory, BufferedStreamIsBuiltAndFlushedOrThrows)
{
    const auto sink = boost::make_shared<sink_t>();
    SweepAllocations({[&]
                      {
                          io::buffered_bin_stream_tt stream(sink);
                          io::WriteString(stream, kText);
                          stream.Flush();
                      },
                      [&] { return std::to_string(sink->taken()); }, "37", "0"});
}

TEST(DevicesWithoutMemory, BufferedDeviceHandsOnWhatItHasAndItsDestructorThrowsNothing)
{
    swept_log_t log;
    const auto sink = boost::make_shared<sink_t>();
    boost::shared_ptr<io::buffered_io_dev_t> device;
    const auto renew = [&]
    {
        device = io::buffered_io_dev_t::CreateBuffered(sink, 1000);
        device->write("abc", 3);
    };
    renew();
    SweepAllocations({[&] { [&]() noexcept { device.reset(); }(); },
                      [&]
                      {
                          EXPECT_EQ(3u, sink->taken());
                          renew();
                          return log.Taken();
                      },
                      "cli    | TCP/IP send cache is not empty and will be cleared in destructor.\n",
                      {},
                      true});
}

TEST(DevicesWithoutMemory, DestructorThrowsNothingWhereTheTargetDoes)
{
    class broken_t : public sink_t
    {
    public:
        std::uint64_t write(const void*, std::uint64_t) override { throw std::bad_alloc(); }
    };
    swept_log_t log;
    const auto broken = boost::make_shared<broken_t>();
    boost::shared_ptr<io::buffered_io_dev_t> device;
    const auto renew = [&]
    {
        device = io::buffered_io_dev_t::CreateBuffered(broken, 1000);
        device->write("abc", 3);
    };
    renew();
    SweepAllocations({[&] { [&]() noexcept { device.reset(); }(); },
                      [&]
                      {
                          renew();
                          return log.Taken();
                      },
                      "cli    | TCP/IP send cache is not empty and will be cleared in destructor.\n"
                      "       | ERR |std::bad_alloc\n",
                      {},
                      true});
}

TEST(DevicesWithoutMemory, FixedCacheIsBuiltOrThrows)
{
    std::uint64_t size = 0;
    SweepAllocations({[&] { size = fixed_cache_t(4096).GetSize(); },
                      [&] { return std::to_string(std::exchange(size, 0)); }, "4096", "0"});
}

TEST(ValuesInStreamsWithoutMemory, TextIsReadOrThrows)
{
    const auto read = [](io::io_dev_t& stream) { return io::ReadString(stream); };
    SweepRead<std::string>(StoredText(kText), kText, read);
    SweepRead<std::string>(StoredText(kLongText), kLongText, read);
}

TEST(ValuesInStreamsWithoutMemory, OptionalTextIsReadOrThrows)
{
    const auto read = [](io::io_dev_t& stream) { return io::ReadOptionalString(stream).value_or(""); };
    SweepRead<std::string>(std::string("\x01\x00\x00\x00", 4) + StoredText(kText), kText, read);
}

TEST(ValuesInStreamsWithoutMemory, ArrayIsReadOrThrows)
{
    for (const std::string& text : {kText, kLongText})
    {
        SweepRead<cnt::plain_array_t>(StoredText(text), text,
                                      [](io::io_dev_t& stream)
                                      { return io::ReadArray<cnt::plain_array_t>(stream); });
        SweepRead<cnt::secure_array_t>(StoredText(text), text,
                                       [](io::io_dev_t& stream)
                                       { return io::ReadArray<cnt::secure_array_t>(stream); });
    }
    SweepRead<cnt::secure_array_t>(
        kText, kText, [](io::io_dev_t& stream) { return io::ReadRawArray<cnt::secure_array_t>(stream, 33); });
}

TEST(ValuesInStreamsWithoutMemory, ShortReadIsToldOrReplacedByBadAlloc)
{
    record_stream_t stream(std::string("\x09\x00\x00\x00"
                                       "ab",
                                       6));
    std::string failure;
    failure.reserve(256);
    SweepAllocations(
        {[&]
         {
             failure.clear();
             try
             {
                 io::ReadString(stream);
             }
             catch (const exc::runtime_exc_t& e)
             {
                 failure = e.what();
             }
         },
         [&]
         {
             stream.GetMemDevice()->SeekAbsolute(0);
             return failure;
         },
         "Failed to retrieve string from the IO device: received less bytes (2) than expected (9)."});
}

namespace
{

class factory_t : public io::io_dev_factory_t
{
public:
    boost::shared_ptr<io::io_dev_t> Create(const std::string&) override { return nullptr; }
};

} // namespace

TEST(RegistryWithoutMemory, FactoryIsAddedOrThrows)
{
    const auto factory = boost::make_shared<factory_t>();
    const std::string type = "a type whose name is not short";
    boost::shared_ptr<io::dev_registry_t> registry;
    const auto renew = [&] { registry = boost::make_shared<io::dev_registry_t>(); };
    renew();
    SweepAllocations(
        {[&] { registry->AddFactory(type, factory); },
         [&]
         {
             const auto full = std::exchange(registry, {});
             renew();
             return FailureText([&] { full->GetFactory(type); });
         },
         "no failure",
         "There is no factory for the specified type of reader/writer: 'a type whose name is not short'."});
}

TEST(RegistryWithoutMemory, PoolIsAddedOrThrows)
{
    const auto pool = boost::make_shared<io::io_dev_pool_t>();
    boost::shared_ptr<io::dev_registry_t> registry;
    const auto renew = [&] { registry = boost::make_shared<io::dev_registry_t>(); };
    renew();
    SweepAllocations({[&] { registry->AddPool(1, pool); },
                      [&]
                      {
                          const std::string free = std::to_string(registry->AllocPoolId());
                          renew();
                          return free;
                      },
                      "2", "1"});
}

TEST(RegistryWithoutMemory, ConnectionIsAddedOrThrows)
{
    const auto device = boost::make_shared<sink_t>();
    boost::shared_ptr<io::io_dev_pool_t> pool;
    const auto renew = [&] { pool = boost::make_shared<io::io_dev_pool_t>(); };
    renew();
    SweepAllocations({[&] { pool->AddConnection(1, io::connection_kind_t::kTapeControl, device); },
                      [&]
                      {
                          const auto full = std::exchange(pool, {});
                          renew();
                          return FailureText([&] { full->GetTapeControlConnection(); });
                      },
                      "no failure", "Tape control connection not found."});
}

TEST(RegistryWithoutMemory, PrefixIsSetOrThrows)
{
    swept_log_t log;
    boost::shared_ptr<io::dev_registry_t> registry;
    const auto renew = [&] { registry = boost::make_shared<io::dev_registry_t>(); };
    renew();
    const auto sweep = [&](const std::string& alias, const std::function<void()>& act)
    {
        SweepAllocations({act,
                          [&]
                          {
                              std::string path = registry->FindPrefixPath(alias);
                              renew();
                              log.Taken();
                              return path;
                          },
                          kText, ""});
    };
    sweep("a prefix that is not short://",
          [&] { registry->SetPrefixPath(kText, "a prefix that is not short://"); });
    sweep("clouddisk://a name that is not short",
          [&] { registry->SetCloudAliasPath("clouddisk://a name that is not short", kText); });
}

TEST(RegistryWithoutMemory, PrefixKeepsItsPathWhenItCannotBeChanged)
{
    swept_log_t log;
    const std::string prefix = "a prefix that is not short://";
    boost::shared_ptr<io::dev_registry_t> copy;
    const auto renew = [&]
    {
        copy = boost::make_shared<io::dev_registry_t>();
        copy->SetPrefixPath("before", prefix);
    };
    renew();
    SweepAllocations({[&] { copy->SetPrefixPath(kText, prefix); },
                      [&]
                      {
                          std::string path = copy->FindPrefixPath(prefix);
                          renew();
                          log.Taken();
                          return path;
                      },
                      kText, "before"});
}

TEST(RegistryWithoutMemory, DummyPrefixIsMadeOrThrows)
{
    boost::shared_ptr<io::dev_registry_t> fresh;
    std::string prefix;
    const auto renew = [&] { fresh = boost::make_shared<io::dev_registry_t>(); };
    renew();
    SweepAllocations({[&] { prefix = fresh->AddDummyPrefix(kText); },
                      [&]
                      {
                          std::string path = fresh->FindPrefixPath(std::exchange(prefix, {}));
                          renew();
                          return path;
                      },
                      kText, ""});
}

TEST(RegistryWithoutMemory, MemFsPathIsMadeOrThrows)
{
    std::string path;
    SweepAllocations({[&] { path = io::MakeMemFsPath(kText); }, [&] { return std::exchange(path, {}); },
                      "MemFs://" + kText, ""});
}

TEST(MultiplexorWithoutMemory, TargetIsAddedOrThrows)
{
    swept_log_t log;
    const auto listener = boost::make_shared<swept_listener_t>();
    boost::shared_ptr<io::CCoutMultiplexor> multiplexor;
    const auto renew = [&] { multiplexor = boost::make_shared<io::CCoutMultiplexor>(); };
    renew();
    SweepAllocations({[&] { multiplexor->add_target(listener); },
                      [&]
                      {
                          multiplexor->send_text("text", 0);
                          renew();
                          log.Taken();
                          return listener->text();
                      },
                      "text", ""});
}

TEST(MultiplexorWithoutMemory, TextIsSentWholeOrThrows)
{
    swept_log_t log;
    const auto listener = boost::make_shared<swept_listener_t>();
    io::CCoutMultiplexor multiplexor;
    multiplexor.add_target(listener);
    multiplexor.add_target(boost::make_shared<swept_listener_t>());
    const auto sweep = [&](const std::string& expected, const std::function<void()>& act) {
        SweepAllocations({act, [&] { return listener->text(); }, expected});
    };
    sweep(kText, [&] { multiplexor.send_text(kText, 0); });
    sweep("--asyncNtf:--named_wn:a name:" + kText, [&] { multiplexor.send_named_value("a name", kText); });
    sweep("--asyncNtf:" + kText, [&] { multiplexor.send_text(kText, io::CCoutMultiplexor::kNotification); });
}
