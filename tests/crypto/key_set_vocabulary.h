#pragma once

// Key sets for tests, and what stands in them.

#include <string>

#include "nelvo/crypto/key_set.h"
#include "tests/crypto/stored_parts.h"

// An id that begins with this byte, and has zeros else.
crypto::CKeySetId::ptr_t IdOf(std::uint8_t first);

// Key and data are a secret that begins with the letter, or nothing for no letter.
boost::shared_ptr<crypto::CKey> MakeKey(std::uint32_t type, const std::string& name);
boost::shared_ptr<crypto::CRestoreKeyRepairRec> MakeRecord(std::uint8_t master, const std::string& name);

// RSA, hint "hint", role 5, time 0.
crypto::CKeySet::ptr_t MakeSet(std::uint8_t id, const crypto::CKeySet::keys_t& keys = {},
                               const crypto::CKeySet::repair_records_t& records = {});

// A set with one other value.
crypto::CKeySet::ptr_t SetWithAlgorithm(std::uint8_t id, std::uint32_t algorithm);
crypto::CKeySet::ptr_t SetWithRole(std::uint8_t id, std::uint32_t role);

// That of tests/data/key_set.hex.
crypto::CKeySet::ptr_t GoldenSet();

// The stored form, in hexadecimal.
std::string Stored(const crypto::CKeySet& key_set);

// Types of the keys, and the letters with which they begin: "0:a 2:".
std::string KeysOf(const crypto::CKeySet& key_set);
