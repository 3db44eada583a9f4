#pragma once

// Sees how an operation locks the mutexes that lie within objects. A program that uses this has calls of its
// own in the place of the C library's, and one thread while it watches.
//
//   MutexCalls({Watched(set, 'a')}, [&] { set.GetRole(); })    "a+a-"

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <string>

struct watched_t
{
    const void* object;
    std::size_t size;
    char name;
};

template <class Object>
watched_t Watched(const Object& object, char name)
{
    return {&object, sizeof(object), name};
}

// "+" for each lock and "-" for each unlock, behind the name of the object, and what is noted between them.
std::string MutexCalls(std::initializer_list<watched_t> objects, const std::function<void()>& operation);

// What else happens meanwhile; nothing is kept while nobody watches.
void NoteAmongCalls(const std::string& event);
