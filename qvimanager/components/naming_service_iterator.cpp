#include "qvimanager/components/naming_service_iterator.h"

namespace Utilities {

NamingServiceIterator::NamingServiceIterator() : filterKey(), filterValue(), position() {}

NamingServiceIterator::NamingServiceIterator(const List<Map<String, Anything>>& descriptors, const String& key,
                                             const Anything& value)
    : filterKey(key), filterValue(value), position(descriptors.Begin())
{
    MoveUpDown(true);
}

NamingServiceIterator::NamingServiceIterator(const NamingServiceIterator& other) = default;

NamingServiceIterator& NamingServiceIterator::operator=(const NamingServiceIterator& other) = default;

void NamingServiceIterator::operator++(int)
{
    position++;
    MoveUpDown(true);
}

void NamingServiceIterator::operator--(int)
{
    position--;
    MoveUpDown(false);
}

const Map<String, Anything>& NamingServiceIterator::Current()
{
    return position.Current();
}

const Map<String, Anything>* NamingServiceIterator::operator->()
{
    return position.operator->();
}

bool NamingServiceIterator::IsValid() const
{
    return position.IsValid();
}

Diagnostics::String NamingServiceIterator::GetValueString()
{
    return Diagnostics::String("NamingServiceIterator");
}

void NamingServiceIterator::MoveUpDown(bool up)
{
    while (position.IsValid()) {
        if (filterKey.Length() == 0) {
            return;
        }
        MapIterator<String, Anything> entry = position.Current().Find(filterKey);
        if (entry.IsValid() && (!filterValue.IsValid() || filterValue == entry.GetValue())) {
            return;
        }
        if (up) {
            position++;
        } else {
            position--;
        }
    }
}

} // namespace Utilities
