#pragma once

// The keys of one algorithm and role under one id, with a hint, a time and the repair records of the set: the
// unit in which keys are stored and exchanged. Held by a shared pointer. Any thread may use a set at any
// time, and holds the set's lock as long as an operation takes; the keys in it have no lock of their own
// (key.h).
//
// Stored form (io/binary_value.h), each number in 4 bytes: version 1, algorithm, hint (a string, in UTF-8),
// role, number of keys, number of repair records, low and high half of the creation time; then the keys, the
// repair records, and the id.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/thread/recursive_mutex.hpp>

#include "nelvo/crypto/key.h"
#include "nelvo/crypto/key_set_id.h"
#include "nelvo/crypto/repair_record.h"

namespace crypto
{

// 100-nanosecond units since 1970.
struct SKeySetTime
{
    std::uint32_t low;
    std::uint32_t high;
};

class CKeySet
{
public:
    using ptr_t = boost::shared_ptr<CKeySet>;
    using keys_t = std::vector<boost::shared_ptr<CKey>>;
    using repair_records_t = std::vector<boost::shared_ptr<CRestoreKeyRepairRec>>;

    // Shares keys and records, none of which may be null.
    CKeySet(CKeySetId::ptr_t id, std::uint32_t algorithm, std::wstring hint, std::uint32_t role, keys_t keys,
            repair_records_t repair_records, SKeySetTime creation_time);
    CKeySet(const CKeySet&) = delete;
    CKeySet& operator=(const CKeySet&) = delete;

    // As they were given or read; the role as it was last set. The id may be null.
    std::uint32_t GetAlgorithm() const;
    std::uint32_t GetRole() const;
    void SetRole(std::uint32_t role);
    SKeySetTime GetCreationTime() const;
    CKeySetId::ptr_t GetId() const;

    // Not a copy: holds as long as the set.
    const std::wstring& GetHint() const;

    // key_names.h.
    std::string GetAlgorithmName() const;
    std::string GetRoleName() const;

    // In UTC, as the fields of struct tm stand (gmtime(3)): the month counts from 0 and the year from 1900.
    // Noon on 2 March 2020 is "2/2/120 12:00:00". A time that gmtime cannot break down is a
    // posix::errno_exc_t with "Failed to convert time to readable format".
    // Kept: KeySet.CreationTimeTextCountsMonthsFrom0AndYearsFrom1900
    std::string GetCreationTimeText() const;

    // Copies of the lists, which share the elements. None may be null.
    keys_t GetKeys() const;
    void SetKeys(const keys_t& keys);
    repair_records_t GetRepairRecords() const;
    void SetRepairRecords(const repair_records_t& records);

    // Append; AddRepairRecord a new record, which shares both (repair_record.h).
    void AddKey(const boost::shared_ptr<CKey>& key);
    void AddRepairRecord(const CKeySetId::ptr_t& master_id, const secure_array_ptr_t& data);

    // The first key of the type; an empty pointer if there is none.
    boost::shared_ptr<CKey> FindKey(std::uint32_t type) const;

    // Whether there is at least one.
    bool HasKeys() const;
    bool HasRepairRecords() const;

    // Wipes each key, for all who share it. They stay in the list.
    void WipeKeys();

    // "ID: <id> (<role>), keys: <n>, repair records: <n> (master keys: <id> <id>)". It ends behind the role
    // if the process log hides what is sensitive; whether it does is asked by the first call in the process.
    // Kept: KeySet.MaskingIsAskedForOncePerProcess
    std::string ToString() const;

    // Whether the other set has the same algorithm, role, length of the hint and number of keys, and whether
    // each key here equals the other's first key of its type; of two different keys of one type one never
    // does.
    // Kept: KeySet.EqualityLooksAtTheLengthOfTheHintAlone
    // Kept: KeySet.EqualityComparesWithTheFirstKeyOfEachType
    // Locks this set, and the other under it: two threads that compare two sets in opposite directions can
    // wait for each other for ever.
    // Kept: KeySet.EqualityTakesTheOthersLockUnderItsOwn
    bool IsEqual(const ptr_t& other) const;

    // A new set with the same id. Clone shares keys and records; CloneDeep has copies of the keys, and no
    // records.
    // Kept: KeySet.DeepCloneLeavesTheRepairRecordsOut
    ptr_t Clone() const;
    ptr_t CloneDeep() const;

    // Without the keys that are sensitive, and so without any; shares the records.
    // Kept: KeySet.CloneWithoutSensitiveKeysHasNoKeys
    ptr_t CloneWithoutSensitiveKeys() const;

    // An id that is null is written as the empty id. Adds no context to failures.
    void Serialize(io::io_dev_t& stream) const;

    // Another version is exc::runtime_exc_t with "Unknown keyset version: '<version>'." Adds no context to
    // this and other failures.
    static ptr_t DeSerialize(io::io_dev_t& stream);

private:
    std::size_t GetKeyCount() const;
    ptr_t CloneWith(keys_t keys, repair_records_t records) const;

    mutable boost::recursive_mutex m_mutex; // guards all that follows
    std::uint32_t m_algorithm;
    CKeySetId::ptr_t m_id;
    std::wstring m_hint;
    keys_t m_keys;
    repair_records_t m_repairRecords;
    std::uint32_t m_role;
    SKeySetTime m_creationTime;
};

} // namespace crypto
