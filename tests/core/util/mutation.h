#pragma once

// Texts for tests that hold two ways of doing the same together: each is a short text from an alphabet, the
// same ones in each run.

#include <cstdint>
#include <string>
#include <string_view>

class mutation_t
{
public:
    mutation_t(std::string_view alphabet, std::size_t max_length)
        : m_alphabet(alphabet), m_max_length(max_length), m_text(1, m_alphabet.front())
    {
    }

    // The last text, or after every fourth a new one, with one character put in, changed or taken out.
    const std::string& Next()
    {
        if (Random(4) == 0)
            Renew();
        const std::size_t place = Random(m_text.size() + 1);
        switch (Random(3))
        {
        case 0: m_text.insert(place, 1, Character()); break;
        case 1: m_text.replace(place, 1, 1, Character()); break;
        default: m_text.erase(place, 1); break;
        }
        if (m_text.size() > m_max_length)
            Renew();
        return m_text;
    }

    // 0 to below - 1.
    std::size_t Random(std::size_t below)
    {
        m_state = m_state * 6364136223846793005U + 1442695040888963407U;
        return (m_state >> 33U) % below;
    }

private:
    char Character() { return m_alphabet[Random(m_alphabet.size())]; }

    void Renew()
    {
        m_text.resize(Random(m_max_length + 1));
        for (char& c : m_text)
            c = Character();
    }

    std::uint64_t m_state = 20210521;
    std::string m_alphabet;
    std::size_t m_max_length;
    std::string m_text;
};
