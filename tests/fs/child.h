#pragma once

// Parts of a test in a process of their own, where mounts, signals and standard streams may be turned around.

#include <functional>
#include <string>

// Runs the body in a child process, which ends when this one does. What fails there fails the test here.
void InChild(const std::function<void()>& body);

// The same in a root folder of its own, empty and writable, which is the working folder too. Needs what a
// private_disk_t needs.
void InPrivateRoot(const std::function<void()>& body);

// For use in a body: what is written to the descriptor from now on stands in the file.
void Redirect(int descriptor, const std::string& path);
