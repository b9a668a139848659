#pragma once

#include <string>

/// The path of a program that belongs to the running one: in the same folder, as it is built, or in
/// ../libexec/tulplayer, as it is installed. The former when there is none.
std::string besideProgram(const std::string& name);
