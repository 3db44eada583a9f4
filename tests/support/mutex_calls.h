#pragma once

// Mutex calls that fail. A program that uses this has calls of its own in the place of the C library's.
//
//   AnswerNext("pthread_mutex_lock", {EINTR, EINVAL});

#include <deque>
#include <string>

// The calling thread's next calls of that name do nothing and return these numbers; 0 lets a call pass. Among
// them are pthread_mutex_init, _lock and _unlock, pthread_mutexattr_init and _settype.
void AnswerNext(const std::string& name, std::deque<int> answers);

// How many of these answers nobody has asked for. There are none afterwards.
std::size_t TakeUnasked();
