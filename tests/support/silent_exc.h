#pragma once

#include <exception>

// An exception whose what() is null.
class silent_exc_t : public std::exception
{
public:
    const char* what() const noexcept override { return nullptr; }
};
