#include "nelvo/crypto/processing_policy.h"

#include <exception>
#include <utility>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/to_text.h"
#include "nelvo/io/binary_value.h"

CCryptoProcessingPolicy::CCryptoProcessingPolicy(bool enabled, crypto::CKeySetId::ptr_t target,
                                                 bool extra_flag)
    : m_processingEnabled(enabled), m_targetKeySetId(std::move(target)), m_extraFlag(extra_flag)
{
}

std::uint32_t CCryptoProcessingPolicy::GetType() const
{
    if (!m_processingEnabled)
        return enNoCryptoProcessing;
    return m_targetKeySetId == nullptr ? enDecrypt : enCrypt;
}

std::string CCryptoProcessingPolicy::TypeToString(std::uint32_t type)
{
    switch (type)
    {
    case enNoCryptoProcessing: return "enNoCryptoProcessing";
    case enDecrypt: return "enDecrypt";
    case enCrypt: return "enCrypt";
    default: return util::ToText(type);
    }
}

void CCryptoProcessingPolicy::RequireKey() const
{
    if (m_targetKeySetId == nullptr)
        throw exc::runtime_exc_t("Encryption key is not specified for crypto processing policy (type:'%1').",
                                 TypeToString(GetType()));
}

std::string CCryptoProcessingPolicy::ToString() const
{
    return util::Format("Policy: '%1', target keyset ID: '%2'", TypeToString(GetType()),
                        m_targetKeySetId != nullptr ? m_targetKeySetId->ToString() : "null");
}

void CCryptoProcessingPolicy::Serialize(io::io_dev_t& stream) const
{
    const std::uint32_t type = GetType();
    io::WriteValue(stream, type);
    io::WriteValue(stream, m_extraFlag);
    if (type == enCrypt)
        m_targetKeySetId->Serialize(stream);
}

void CCryptoProcessingPolicy::DeSerialize(io::io_dev_t& stream)
try
{
    const auto type = io::ReadValue<std::uint32_t>(stream);
    const auto extra_flag = io::ReadValue<bool>(stream);
    crypto::CKeySetId::ptr_t target;
    if (type != enNoCryptoProcessing && type != enDecrypt)
        target = crypto::CKeySetId::DeSerialize(stream);
    *this = CCryptoProcessingPolicy(type != enNoCryptoProcessing, std::move(target), extra_flag);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(true, "Failed to deserialize crypto policy.", e);
}
