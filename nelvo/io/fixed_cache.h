#pragma once

// A buffer of a fixed size that is filled once and then taken out as a whole.
//
//   fixed_cache_t cache(4096);
//   while (count != 0)
//   {
//       cache.Append(data, count);   // moves both on
//       if (cache.IsFull())
//           Send(cache);             // GetData, GetUsed, Reset
//   }
//
// Its memory keeps what went through it, also when it is given back, so it is not for keys.

#include <cstdint>
#include <vector>

class fixed_cache_t
{
public:
    // A size in bytes, all zero.
    explicit fixed_cache_t(std::uint64_t size);

    // A cache of size 0 is both.
    bool IsEmpty() const { return m_used == 0; }
    bool IsFull() const { return m_used >= GetSize(); }

    // The bytes that were put in. The pointer is null if the size is 0.
    const char* GetData() const { return m_buffer.empty() ? nullptr : m_buffer.data(); }
    std::uint64_t GetUsed() const { return m_used; }

    // Makes it empty. The bytes stay where they are.
    void Reset() { m_used = 0; }

    // Takes as much as fits, and moves the caller's pointer and count on to what is left. A full cache takes
    // nothing.
    void Append(const char*& data, std::uint64_t& count);

    // What fits, in bytes.
    std::uint64_t GetSize() const { return m_buffer.size(); }

    // Whether so many more bytes do not fit.
    bool WouldOverflow(std::uint64_t count) const { return count > GetSize() - m_used; }

private:
    std::vector<char> m_buffer;
    std::uint64_t m_used = 0;
};
