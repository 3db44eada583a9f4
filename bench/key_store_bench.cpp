// What does a look-up in the key store cost when the store is a hundred times as big?
//
// A tree of 100,000 sets is 1.7 times as high as one of 1,000. Few ids are asked for, and again and again, so
// that the processor's caches hold what is looked at in either; the goal leaves room for what they do not. A
// look-up that goes through all sets costs a hundred times as much.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include "bench/support/figure.h"
#include "nelvo/crypto/runtime_key_store.h"

namespace
{

using crypto::CKeySetId;

constexpr std::size_t kLookUps = 100;

CKeySetId RandomId(std::mt19937_64& random)
{
    const std::uint64_t halves[] = {random(), random()};
    crypto::SRawKeySetId raw;
    std::memcpy(raw.bytes, halves, sizeof(raw.bytes));
    return CKeySetId(raw);
}

// A store of so many sets, and ids of some of them.
class store_t
{
public:
    explicit store_t(std::size_t size)
    {
        std::mt19937_64 random(size);
        std::vector<CKeySetId> ids;
        for (std::size_t i = 0; i != size; ++i)
        {
            ids.push_back(RandomId(random));
            m_store.Add(boost::make_shared<crypto::CKeySet>(
                boost::make_shared<CKeySetId>(ids.back()), 0, L"hint", 1, crypto::CKeySet::keys_t(),
                crypto::CKeySet::repair_records_t(), crypto::SKeySetTime{}));
        }
        for (std::size_t i = 0; i != kLookUps; ++i)
        {
            m_ids.push_back(ids[random() % size]);
            m_texts.push_back(m_ids.back().ToString());
        }
    }

    std::ptrdiff_t FindIds() const { return FindAll(m_ids); }
    std::ptrdiff_t FindTexts() const { return FindAll(m_texts); }

private:
    template <class Ids>
    std::ptrdiff_t FindAll(const Ids& ids) const
    {
        return std::count_if(ids.begin(), ids.end(),
                             [this](const auto& id) { return m_store.Find(id) != nullptr; });
    }

    crypto::CRuntimeKeyStore m_store;
    std::vector<CKeySetId> m_ids;
    std::vector<std::string> m_texts;
};

} // namespace

void AddFigures()
{
    static const store_t small(1'000);
    static const store_t big(100'000);
    figure_t("key store, 100 look-ups among 100,000 key sets")
        .Ours([] { return big.FindIds(); })
        .Against("among 1,000", 3.0, [] { return small.FindIds(); });
    figure_t("key store, 100 look-ups by text among 100,000 key sets")
        .Ours([] { return big.FindTexts(); })
        .Against("among 1,000", 3.0, [] { return small.FindTexts(); });
}
