// How a view shows the properties of its control.
#pragma once

#include "toolkit/control.h"

#include <functional>
#include <initializer_list>
#include <vector>

namespace toolkit {

/// What a view does to show its control: an entry a property, in the order in which all of them are shown at
/// first. A property may have several entries; each of them has its turn.
class ShownProperties {
public:
    /// Shows the value that the property has now.
    using Show = std::function<void()>;
    using Condition = std::function<bool()>;

    /// The property is shown so, at first and whenever its value changes. A condition is asked at first, and
    /// only then: false leaves to the layout how it looks until the value changes.
    void add(Property property, Show show, Condition atFirst = {});

    /// These are shown so when a value changes; at first the layout, or another entry, shows them.
    void addChanges(std::initializer_list<Property> properties, const Show& show);

    /// Shows everything at first.
    void showAll() const;

    /// Shows a property whose value has changed; does nothing when it has no entry.
    void show(Property property) const;

private:
    struct Entry {
        Property property;
        Show show;
        Condition atFirst;
    };

    std::vector<Entry> entries_;
};

} // namespace toolkit
