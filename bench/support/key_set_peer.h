#pragma once

// Another library that puts key sets into memory and takes them out again.

#include <cstddef>
#include <functional>
#include <string>

#include "nelvo/crypto/key_set.h"

struct key_set_peer_t
{
    std::function<std::string()> write;

    // Reads a new set; returns how many keys and repair records it has.
    std::function<std::size_t(const std::string& bytes)> read;
};

// Boost's binary archive of the same content, in plain objects that boost::shared_ptr holds where ours are
// held so.
key_set_peer_t BoostSerialization(const crypto::CKeySet& key_set);
