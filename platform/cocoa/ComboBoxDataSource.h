#pragma once

#include <QString>

#include <cstdint>
#include <limits>
#include <optional>

namespace cocoa {

/// Returned when an item was not found.
inline constexpr std::int64_t NotFound = std::numeric_limits<std::int64_t>::max();

/// Provides the items of a combo box. Called on the main thread.
class ComboBoxDataSource {
public:
    virtual ~ComboBoxDataSource() = default;

    virtual int numberOfItemsInComboBox() = 0;
    virtual std::optional<QString> objectValueForItemAtIndex(int index) = 0;
    /// A marked item gets a dot behind its text.
    virtual bool isMarkedItemAtIndex(int /*index*/) { return false; }
    /// The item with this text, or NotFound.
    virtual std::int64_t indexOfItemWithStringValue(const QString& string) = 0;
};

} // namespace cocoa
