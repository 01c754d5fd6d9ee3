#pragma once

/// Stores `value` in a property's field unless it already holds it; true when it changed, so that
/// the caller emits the property's change signal only then (QML bindings re-evaluate on every signal).
template <class T, class V>
bool assignChanged(T& field, const V& value)
{
    if (field == value)
        return false;
    field = value;
    return true;
}
