#pragma once

#include <cstddef>

// Where a member stands in its object, in bytes from the beginning.
template <class Object, class Member>
std::size_t PlaceIn(const Object& object, const Member& member)
{
    return static_cast<std::size_t>(reinterpret_cast<const char*>(&member) -
                                    reinterpret_cast<const char*>(&object));
}
