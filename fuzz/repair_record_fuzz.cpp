// Stored repair records of key sets.

#include "nelvo/crypto/repair_record.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    TryMade<crypto::CRestoreKeyRepairRec>(Array(data, size));
}
