#pragma once

#include <string>

/// The path of a file in the folder that the running program is in.
std::string besideProgram(const std::string& name);
