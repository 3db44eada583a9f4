#pragma once

// Other logging libraries, each set up to do what our file log does: a line of the same columns (local time,
// thread, channel, text), appended to a file under a lock, and flushed to the system at each message.

#include <functional>
#include <string>

// Logs one message.
using peer_t = std::function<void(const std::string& text)>;

// Each sets up its library for the whole process, and is called once at most.

peer_t SpdlogTo(const std::string& path);
peer_t Log4cplusTo(const std::string& path);
peer_t BoostLogTo(const std::string& path);
peer_t PocoTo(const std::string& path);
peer_t GlogTo(const std::string& path);
