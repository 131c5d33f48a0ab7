#include "apps/krmodel/TextureTexts.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <QColor>

#include "apps/krmodel/Texts.h"

namespace krmodel {

const Wrap* FindWrap(const std::string& name)
{
    const auto found = std::find_if(std::begin(kWraps), std::end(kWraps),
                                    [&](const Wrap& wrap) { return name == wrap.name; });
    return found == std::end(kWraps) ? nullptr : found;
}

std::string AllWrapNames()
{
    std::string names;
    for (const Wrap& wrap : kWraps)
        names += std::string(names.empty() ? "" : ", ") + wrap.name;
    return names;
}

QString ColourText(const Vector4D<float>& colour)
{
    const auto byte = [](float part) { return int(std::lround(part * 255)); };
    return QColor(byte(colour.x), byte(colour.y), byte(colour.z), byte(colour.w)).name(QColor::HexArgb);
}

QString PairText(const Vector3D<double>& numbers)
{
    return NumberText(numbers.x) + QLatin1Char(' ') + NumberText(numbers.y);
}

} // namespace krmodel
