#pragma once

// Bytes that belong to a master key set, named by its id. Nobody here looks into them. Held by a shared
// pointer.
//
// Stored form (io/binary_value.h): the size of the id, 16, in 4 bytes, the id, the size of the data in 4
// bytes, the data.

#include "nelvo/crypto/key_set_id.h"
#include "nelvo/crypto/secure_array.h"
#include "nelvo/io/io_dev.h"

namespace crypto
{

class CRestoreKeyRepairRec
{
public:
    // Shares both. An id that is null is written as the empty id. The data must not be null.
    CRestoreKeyRepairRec(CKeySetId::ptr_t master_id, secure_array_ptr_t data);

    // What was given, shared; of a record that was read, neither is null.
    const CKeySetId::ptr_t& GetMasterKeySetId() const { return m_masterKeySetId; }
    const secure_array_ptr_t& GetData() const { return m_data; }

    // Short writes of the sizes fail, those of id and data go unnoticed.
    // Kept: RepairRecord.ShortWriteOfIdAndDataIsNotNoticed
    // Failures get the marked context line "Failed to serialize keyset repair record from memory stream.",
    // which says from.
    // Kept: RepairRecord.FailureToWriteSaysFromMemoryStream
    void Serialize(io::io_dev_t& stream) const;

    // A size of the id that is not 16 is exc::runtime_exc_t with "The size of the serialized keyset id is
    // unexpected (<size>)." Missing bytes of the id and the data are 0. The data's size is not limited
    // (std::bad_alloc). Failures get the marked context line "Failed to de-serialize keyset repair record
    // from memory stream."
    // Kept: RepairRecord.MissingBytesAreReadAsZeros
    static boost::shared_ptr<CRestoreKeyRepairRec> DeSerialize(io::io_dev_t& stream);

private:
    CKeySetId::ptr_t m_masterKeySetId;
    secure_array_ptr_t m_data;
};

} // namespace crypto
