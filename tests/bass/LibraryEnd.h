#pragma once

#include "platform/bass/bass.h"

#include <gtest/gtest.h>

#include <memory>

/// Ends the audio library's threads before a test program's static objects are destroyed.
class LibraryEnd : public testing::Environment {
public:
    void TearDown() override { BASS_Free(); }
};

inline testing::Environment* const libraryEnd =
    testing::AddGlobalTestEnvironment(std::make_unique<LibraryEnd>().release()); // owned by the framework
