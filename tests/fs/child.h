#pragma once

// Parts of a test in a process of their own, where mounts, signals and standard streams may be turned around.

#include <functional>
#include <string>

// Runs the body in a child process. What fails there fails the test here.
void InChild(const std::function<void()>& body);

// The same, with mounts that nobody else sees. Needs root.
void InPrivateMounts(const std::function<void()>& body);

// For use in a body: an empty file system over the folder, of that many bytes.
void MountEmpty(const std::string& folder, const std::string& bytes = "1048576");

// For use in a body: what is written to the descriptor from now on stands in the file.
void Redirect(int descriptor, const std::string& path);
