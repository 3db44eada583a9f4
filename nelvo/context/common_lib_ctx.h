#pragma once

// What lives as long as the process and belongs to the whole library: the permissions that each path is held
// against, the run-time key store and the crypto policy, the registry of the stream layer, and the text that
// goes to those who listen to the process's output. It is built by the first call that asks for it, a first
// look at a path for instance, and a program that never needs it never has it.

#include <cstdint>
#include <map>

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>

#include "nelvo/crypto/processing_policy.h"
#include "nelvo/crypto/runtime_key_store.h"
#include "nelvo/fs/access_permissions.h"
#include "nelvo/io/cout_multiplexor.h"
#include "nelvo/io/dev_pool.h"
#include "nelvo/io/dev_registry.h"

class CCommonLibCtx
{
public:
    CCommonLibCtx();
    CCommonLibCtx(const CCommonLibCtx&) = delete;
    CCommonLibCtx& operator=(const CCommonLibCtx&) = delete;

    // Asks the permissions about a path, one thread at a time, and throws what they throw. They must neither
    // log nor open a path: the log asks for its file's path while it is locked. A mutex that fails is a
    // boost::lock_error; one that a signal interrupts is tried again.
    void CheckAccess(const util::str_t& path);

    // The default allows everything. The permissions must not be null.
    void SetFilesAccessPermissions(boost::shared_ptr<security::IFilesAccessPermissions> permissions);
    boost::shared_ptr<security::IFilesAccessPermissions> GetFilesAccessPermissions() const;

    // The parts below live as long as the context, and have locks of their own.
    const boost::shared_ptr<crypto::CRuntimeKeyStore>& GetRuntimeKeyStore() const { return m_key_store; }
    io::dev_registry_t& GetDevRegistry() { return m_dev_registry; }
    io::CCoutMultiplexor& GetCoutMultiplexor() { return m_cout_multiplexor; }

    // The pool under the key; empty if there is none. There is one under 0.
    boost::shared_ptr<io::io_dev_pool_t> FindDevPool(std::uint32_t key) const;

    // A plain value without a lock: change it before other threads look at it.
    CCryptoProcessingPolicy& GetCryptoPolicy() { return m_crypto_policy; }

    // Empties the registry's table of pools, with the line "Destroying connection pools." in the log.
    void DestroyConnectionPools();

private:
    mutable boost::mutex m_access_mutex; // guards the permissions; taken under the log's mutex, so a leaf
    CCryptoProcessingPolicy m_crypto_policy;
    boost::shared_ptr<crypto::CRuntimeKeyStore> m_key_store;
    boost::shared_ptr<security::IFilesAccessPermissions> m_permissions;
    std::map<std::uint32_t, boost::shared_ptr<io::io_dev_pool_t>> m_dev_pools; // never changes
    io::dev_registry_t m_dev_registry;
    io::CCoutMultiplexor m_cout_multiplexor;
};

// The context of the process (process_instance.h). Throws what its constructor throws, in practice
// std::bad_alloc, and the next call tries again then; and boost::lock_error if the mutex around all of this
// cannot be locked.
boost::shared_ptr<CCommonLibCtx> GetCommonLibCtx();
