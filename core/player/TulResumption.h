#pragma once

#include <cstdint>
#include <string>

/// Where playing is to go on in another run of the program.
struct TulResumption {
    std::int32_t index = 0; ///< Of the current entry.
    std::string source;     ///< Its source, by which it is found where the list is another by now.
    bool isOpened = false;  ///< It was started, and is more than the current one.
    double position = 0.0;  ///< Seconds; 0 as well where it is not known.

    bool operator==(const TulResumption&) const = default;
};
