#include "apps/krmodel/Paint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include <QRgb>

namespace krmodel {

namespace {

std::array<float, 256> DecodedBytes()
{
    std::array<float, 256> parts{};
    for (size_t i = 0; i < parts.size(); ++i)
        parts[i] = DecodedPart(float(i) / 255);
    return parts;
}

const std::array<float, 256> kDecodedBytes = DecodedBytes();

/// Libraries hold colours as people choose them on a screen, and any number at all.
Colour ColourOf(const Vector3D<float>& diffuse)
{
    const auto part = [](float value) {
        return std::isfinite(value) ? DecodedPart(std::clamp(value, 0.0F, 1.0F)) : 0.0F;
    };
    return {part(diffuse.x), part(diffuse.y), part(diffuse.z)};
}

Colour ColourOf(const MeshMaterialInfo& material)
{
    if (material.hasDiffuse)
        return ColourOf(material.diffuse);
    return material.diffuseTexture.isValidSize() ? Colour(1, 1, 1) : kOwnColour;
}

/// Two neighbours in a row of texels that repeats itself, and how near the second is: 0..1.
struct Between {
    int first, second;
    float part;

    Between(float coordinate, int count)
    {
        // Texels are coloured in their middle.
        const float place = (coordinate - std::floor(coordinate)) * float(count) - 0.5F;
        const float whole = std::isfinite(place) ? std::floor(place) : 0.0F;
        part = std::isfinite(place) ? place - whole : 0.0F;
        first = (int(whole) + count) % count;
        second = (first + 1) % count;
    }
};

} // namespace

Paint::Paint() : m_colour(kOwnColour) {}

Paint::Paint(const Colour& colour) : m_colour(colour) {}

Paint::Paint(const MeshMaterialInfo& material)
    : m_colour(ColourOf(material)), m_texture(material.diffuseTexture)
{}

Colour Paint::At(float u, float v) const
{
    const Between column(u, m_texture.width), row(v, m_texture.height);
    const auto inRow = [&](int index) -> Colour {
        return Texel(column.first, index) * (1 - column.part) + Texel(column.second, index) * column.part;
    };
    return m_colour * (inRow(row.first) * (1 - row.part) + inRow(row.second) * row.part);
}

Colour Paint::Texel(int column, int row) const
{
    QRgb pixel;
    const qsizetype index = qsizetype(row) * m_texture.width + column;
    std::memcpy(&pixel, m_texture.pixels.constData() + index * qsizetype(sizeof pixel), sizeof pixel);
    const auto part = [](int byte) { return kDecodedBytes[size_t(byte)]; };
    return {part(qRed(pixel)), part(qGreen(pixel)), part(qBlue(pixel))};
}

} // namespace krmodel
