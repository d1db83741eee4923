#pragma once

#include "KVAppError.h"

#include <utility>
#include <variant>

// What an operation that produces a value hands back: the value, or the error
// that kept it from being made. Operations without a value use KVOptionalError.
template<typename T>
class KVResult
{
public:
    KVResult(T value) : m_state(std::in_place_index<0>, std::move(value)) {}
    KVResult(KVAppError error) : m_state(std::in_place_index<1>, std::move(error)) {}

    bool hasValue() const { return m_state.index() == 0; }
    explicit operator bool() const { return hasValue(); }

    // Only when hasValue().
    const T &value() const & { return std::get<0>(m_state); }
    T &value() & { return std::get<0>(m_state); }
    T &&value() && { return std::get<0>(std::move(m_state)); }
    // Only when !hasValue().
    const KVAppError &error() const { return std::get<1>(m_state); }

private:
    std::variant<T, KVAppError> m_state;
};
