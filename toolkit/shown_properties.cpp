#include "toolkit/shown_properties.h"

#include <utility>

namespace toolkit {

void ShownProperties::add(Property property, Show show, Condition atFirst) {
    entries_.push_back({property, std::move(show), std::move(atFirst)});
}

void ShownProperties::addChanges(std::initializer_list<Property> properties, const Show& show) {
    for (const Property property : properties)
        add(property, show, [] { return false; });
}

void ShownProperties::showAll() const {
    for (const Entry& entry : entries_)
        if (!entry.atFirst || entry.atFirst()) entry.show();
}

void ShownProperties::show(Property property) const {
    for (const Entry& entry : entries_)
        if (entry.property == property) entry.show();
}

} // namespace toolkit
