#pragma once

#include <cstddef>

#include <QByteArray>

namespace test {

/// The bytes of a literal, zeros included.
template<std::size_t Size>
QByteArray Bytes(const char (&literal)[Size])
{
    return QByteArray(literal, static_cast<int>(Size) - 1);
}

} // namespace test
