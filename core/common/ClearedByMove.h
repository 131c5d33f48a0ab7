#pragma once

#include <utility>

namespace kr {

/// A value that is T() again once it has been moved from; otherwise it behaves as the value itself.
/// Keeps counts and names beside lists honest: a list that was moved from is empty, and so must be its count.
template<class T>
class ClearedByMove {
public:
    ClearedByMove() = default;
    ClearedByMove(T value) : m_value(std::move(value)) {}
    ClearedByMove(const ClearedByMove&) = default;
    ClearedByMove& operator=(const ClearedByMove&) = default;
    ClearedByMove(ClearedByMove&& other) noexcept : m_value(std::exchange(other.m_value, T())) {}
    ClearedByMove& operator=(ClearedByMove&& other) noexcept
    {
        m_value = std::move(other.m_value);
        other.m_value = T();
        return *this;
    }
    ~ClearedByMove() = default;

    operator const T&() const { return m_value; }

private:
    T m_value{};
};

} // namespace kr
