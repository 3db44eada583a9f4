#pragma once

// Other libraries that put records into memory and take them out again.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "bench/support/file_record.h"

struct record_peer_t
{
    // The bytes of all records, one behind the other.
    std::function<std::string()> write;

    // The sum of the sizes of all files, so that each record is read.
    std::function<std::uint64_t(const std::string& bytes)> read;
};

// The records must outlive the peer.
record_peer_t BoostSerialization(const std::vector<file_record_t>& records);
record_peer_t Cereal(const std::vector<file_record_t>& records);

// Puts each record into the one message that it writes.
record_peer_t Protobuf(const std::vector<file_record_t>& records);

// Begins with messages, so that writing them is all there is to do.
record_peer_t ProtobufObjects(const std::vector<file_record_t>& records);
